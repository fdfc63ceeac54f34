#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQCore/Models/SamplingConfig.hpp"
#include "TQCore/Models/SourceMetadata.hpp"
#include "TQCore/Shared.hpp"

namespace tq {

/// Everything that a provider needs to describe one clip. A copy shares the frames and is cheap.
struct VisionRequest {
  std::string systemPrompt;
  std::string userPrompt;
  Shared<std::vector<ExtractedFrame>> frames;  ///< chronological; without a value there are none
  SourceMetadata sourceContext;
  SamplingStrategy samplingStrategy = SamplingStrategy::adaptive;  ///< carried along, read by no provider
  std::int64_t maxTokens = 0;                                      ///< limit of the answer
  double temperature = 0;

  bool operator==(const VisionRequest&) const = default;
};

/// The frames of a request, none where there is no value.
const std::vector<ExtractedFrame>& framesOf(const Shared<std::vector<ExtractedFrame>>& frames);

/// What a model answered.
struct VisionResponse {
  std::string rawText;                       ///< as it came, unparsed
  std::string modelId;                       ///< as the answer names it, else the provider's own
  std::optional<std::int64_t> inputTokens;   ///< absent when the answer does not tell
  std::optional<std::int64_t> outputTokens;  ///< absent when the answer does not tell

  bool operator==(const VisionResponse&) const = default;
};

/// A model that looks at frames. Implementations are immutable: one value may serve several threads at once.
class VisionProvider {
 public:
  virtual ~VisionProvider() = default;

  virtual const std::string& providerId() const = 0;
  virtual const std::string& modelId() const = 0;

  /// Blocks until the model has answered. Throws `TQError`, or `Cancelled` once a stop was requested.
  virtual VisionResponse describe(const VisionRequest& request, std::stop_token stop) const = 0;
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "TQCore/Models/TranscriptInfo.hpp"

namespace tq {

/// One audio file to be turned into text.
struct TranscriptionRequest {
  std::filesystem::path audioURL;       ///< its last path component is the name a service sees
  std::string mimeType;                 ///< of the audio, such as "audio/m4a"
  std::optional<std::string> language;  ///< a hint; an empty one counts as absent
  std::optional<std::string> prompt;    ///< vocabulary hint, for the services that take one

  bool operator==(const TranscriptionRequest&) const = default;
};

/// What was heard.
struct TranscriptionResponse {
  std::string text;     ///< without white space at both ends; may be empty
  std::string modelId;  ///< the provider's
  std::optional<std::string> language;
  std::optional<std::vector<TranscriptSpeakerTurn>> speakers;

  bool operator==(const TranscriptionResponse&) const = default;
};

/// A service or a recogniser that listens. Implementations are immutable: one value may serve several threads at once.
class TranscriptionProvider {
 public:
  virtual ~TranscriptionProvider() = default;

  virtual const std::string& providerId() const = 0;
  virtual const std::string& modelId() const = 0;

  /// Blocks until the text is there. Throws `TQError` or `SystemError`, or `Cancelled` once a stop was requested.
  virtual TranscriptionResponse transcribe(const TranscriptionRequest& request, std::stop_token stop) const = 0;
};

}  // namespace tq

#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "TQPlatform/Network/WebURL.hpp"
#include "TQVision/HTTPVisionProvider.hpp"
#include "TQVision/VisionProvider.hpp"

namespace tq {

using VisionProviderMaker = std::function<std::unique_ptr<VisionProvider>(HTTPProviderConfig)>;

/// How the providers of each shape are made. A shape that is asked for must have its maker.
struct HTTPProviderMakers {
  VisionProviderMaker anthropic;
  VisionProviderMaker openAI;
};

/// The makers of the real providers. All share the session, and wait by the clock between attempts.
HTTPProviderMakers httpProviderMakers(std::shared_ptr<URLSession> session, std::shared_ptr<const Clock> clock);

/// The checks that stand between a configuration and a vision provider.
class ProviderFactory {
 public:
  explicit ProviderFactory(HTTPProviderMakers makers = {}) : makers_(std::move(makers)) {}
  ProviderFactory(std::shared_ptr<URLSession> session, std::shared_ptr<const Clock> clock)
      : ProviderFactory(httpProviderMakers(std::move(session), std::move(clock))) {}

  /// A provider of the Messages shape; without `modelId` it uses the shape's default model. Throws
  /// `TQError::apiKeyMissing` when the key is empty and the host needs one.
  std::unique_ptr<VisionProvider> makeAnthropic(std::string apiKey, std::optional<std::string> modelId,
                                                const WebURL& baseURL, double timeoutSeconds) const;

  /// The same for the Chat Completions shape.
  std::unique_ptr<VisionProvider> makeOpenAI(std::string apiKey, std::optional<std::string> modelId,
                                             const WebURL& baseURL, double timeoutSeconds) const;

  /// False for this machine and for hosts that end in ".local".
  static bool hostLikelyRequiresAPIKey(const WebURL& url);

  /// A text for the user when a key sent to that address could be read on its way; absent when all is well. It never
  /// blocks anything.
  static std::optional<std::string> insecureBaseURLWarning(const WebURL& url);

 private:
  HTTPProviderMakers makers_;
};

}  // namespace tq

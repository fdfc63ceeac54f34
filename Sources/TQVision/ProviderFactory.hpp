#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "TQPlatform/WebURL.hpp"
#include "TQVision/VisionProvider.hpp"

namespace tq {

/// What a provider that speaks HTTP is made from.
struct HTTPProviderConfig {
  std::string providerId;
  std::string modelId;
  std::string apiKey;  ///< empty for a server that asks for none
  WebURL baseURL;
  std::map<std::string, std::string> extraHeaders;  ///< added to every request
  double timeoutSeconds = 0;                        ///< of one request
};

using VisionProviderMaker = std::function<std::unique_ptr<VisionProvider>(HTTPProviderConfig)>;

/// How the providers of each shape are made; an empty function means that this program cannot speak that shape.
struct HTTPProviderMakers {
  VisionProviderMaker anthropic;
  VisionProviderMaker openAI;
};

/// The checks that stand between a configuration and a vision provider.
class ProviderFactory {
 public:
  explicit ProviderFactory(HTTPProviderMakers makers = {}) : makers_(std::move(makers)) {}

  /// A provider of the Messages shape; without `modelId` it uses the shape's default model. Throws
  /// `TQError::apiKeyMissing` when the key is empty and the host needs one, and `TQError::providerTransport` when there
  /// is no maker for the shape.
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

#include "TQVision/ProviderFactory.hpp"

#include <algorithm>
#include <array>

#include "TQCore/TQError.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "TQVision/AnthropicProvider.hpp"
#include "TQVision/OpenAIProvider.hpp"
#include "TQVision/ProviderProfile.hpp"

namespace tq {
namespace {

/// The spellings of this machine; some parsers leave an IPv6 address its brackets.
constexpr std::array<std::string_view, 4> loopbackHosts{"localhost", "127.0.0.1", "::1", "[::1]"};

/// `host` in lower case.
bool isOnThisNetwork(std::string_view host) {
  return std::find(loopbackHosts.begin(), loopbackHosts.end(), host) != loopbackHosts.end() || host.ends_with(".local");
}

std::unique_ptr<VisionProvider> makeProvider(ProviderProfile profile, const VisionProviderMaker& maker,
                                             std::string apiKey, std::optional<std::string> modelId,
                                             const WebURL& baseURL, double timeoutSeconds) {
  const std::string providerId(rawValue(profile));
  if (apiKey.empty() && ProviderFactory::hostLikelyRequiresAPIKey(baseURL)) throw TQError::apiKeyMissing(providerId);
  return maker({.providerId = providerId,
                .modelId = modelId.value_or(std::string(defaultModelId(profile))),
                .apiKey = std::move(apiKey),
                .baseURL = baseURL,
                .extraHeaders = {},
                .timeoutSeconds = timeoutSeconds});
}

}  // namespace

HTTPProviderMakers httpProviderMakers(std::shared_ptr<URLSession> session, std::shared_ptr<const Clock> clock) {
  return {.anthropic =
              [session, clock](HTTPProviderConfig config) {
                return std::make_unique<AnthropicProvider>(std::move(config), session, clock);
              },
          .openAI =
              [session, clock](HTTPProviderConfig config) {
                constexpr bool useJSONResponseFormat = true;
                return std::make_unique<OpenAIProvider>(std::move(config), useJSONResponseFormat, session, clock);
              }};
}

std::unique_ptr<VisionProvider> ProviderFactory::makeAnthropic(std::string apiKey, std::optional<std::string> modelId,
                                                               const WebURL& baseURL, double timeoutSeconds) const {
  return makeProvider(ProviderProfile::anthropic, makers_.anthropic, std::move(apiKey), std::move(modelId), baseURL,
                      timeoutSeconds);
}

std::unique_ptr<VisionProvider> ProviderFactory::makeOpenAI(std::string apiKey, std::optional<std::string> modelId,
                                                            const WebURL& baseURL, double timeoutSeconds) const {
  return makeProvider(ProviderProfile::openai, makers_.openAI, std::move(apiKey), std::move(modelId), baseURL,
                      timeoutSeconds);
}

bool ProviderFactory::hostLikelyRequiresAPIKey(const WebURL& url) {
  return !isOnThisNetwork(lowercased(url.host()));
}

std::optional<std::string> ProviderFactory::insecureBaseURLWarning(const WebURL& url) {
  if (url.scheme().empty() || lowercased(url.scheme()) == "https") return std::nullopt;
  const std::string host = lowercased(url.host());
  if (isOnThisNetwork(host)) return std::nullopt;
  return url.absoluteString() + " is not HTTPS — your API key would be sent in cleartext to " +
         (host.empty() ? "the configured host" : host) +
         " and is visible to anyone on the network path. Use https:// unless this is a trusted local/LAN server.";
}

}  // namespace tq

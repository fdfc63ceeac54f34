#include "TQPipeline/ConfiguredEngine.hpp"

#include <string>

#include "TQPersistence/SecretAccounts.hpp"
#include "TQPlatform/Network/WebURL.hpp"
#include "TQVision/ProviderFactory.hpp"
#include "TQVision/ProviderProfile.hpp"

namespace tq {

EngineSnapshot currentEngineSnapshot(const AppSettings& settings) {
  return {.providerId = settings.providerId,
          .providerDisplay = std::string(displayName(providerProfile(settings.providerId))),
          .modelId = settings.modelId,
          .promptProfile = std::string(rawValue(settings.promptProfile)),
          .samplingStrategy = std::string(rawValue(settings.sampling.strategy))};
}

bool isProviderReady(const AppSettings& settings, const SecretsStore& secrets) {
  const ProviderProfile profile = providerProfile(settings.providerId);
  if (profile == ProviderProfile::mock) return true;
  const bool isOpenAI = profile == ProviderProfile::openai;
  const auto url = WebURL::parse(isOpenAI ? settings.openaiBaseURL : settings.anthropicBaseURL);
  if (!url || !ProviderFactory::hostLikelyRequiresAPIKey(*url)) return true;
  try {
    return secrets.get(isOpenAI ? SecretAccounts::openaiAPIKey : SecretAccounts::anthropicAPIKey).has_value();
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace tq

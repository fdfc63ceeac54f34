#include "TQVision/ConfiguredEmbedder.hpp"

#include <exception>
#include <utility>

#include "TQPersistence/SecretAccounts.hpp"

namespace tq {

namespace {

std::string keyOrNone(const SecretsStore& secrets) {
  try {
    return secrets.get(SecretAccounts::embeddingAPIKey).value_or("");
  } catch (const std::exception&) {
    return {};
  }
}

}  // namespace

std::shared_ptr<const EmbeddingProvider> configuredEmbedder(const AppSettings& settings, const SecretsStore& secrets,
                                                            std::shared_ptr<URLSession> session,
                                                            std::shared_ptr<const Clock> clock) {
  const auto backend = settings.embeddingProviderId == "openai" ? EmbeddingProvider::Backend::openAICompatible
                                                                : EmbeddingProvider::Backend::ollama;
  const WebURL server = WebURL::parse(settings.embeddingBaseURL).value_or(EmbeddingProvider::defaultOllamaBaseURL());
  return std::make_shared<EmbeddingProvider>(backend, server, settings.embeddingModel, keyOrNone(secrets),
                                             EmbeddingProvider::defaultTimeoutSeconds, std::move(session),
                                             std::move(clock));
}

}  // namespace tq

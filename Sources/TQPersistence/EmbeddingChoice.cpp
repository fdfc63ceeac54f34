#include "TQPersistence/EmbeddingChoice.hpp"

namespace tq {

namespace {

/// The part of an address that tells one server from another: "localhost:11434".
std::string_view serverOf(std::string_view endpoint) {
  return endpoint.substr(endpoint.find("//") + 2);
}

}  // namespace

void chooseEmbeddingProvider(AppSettings& settings, std::string_view providerId) {
  const bool isHosted = providerId == "openai";
  const char* const left = isHosted ? DefaultEndpoints::ollama : DefaultEndpoints::openAI;
  settings.embeddingProviderId = providerId;
  if (settings.embeddingBaseURL.find(serverOf(left)) != std::string::npos)
    settings.embeddingBaseURL = isHosted ? DefaultEndpoints::openAI : DefaultEndpoints::ollama;
}

}  // namespace tq

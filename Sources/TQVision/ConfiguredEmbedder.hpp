#pragma once

#include <memory>

#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQVision/EmbeddingProvider.hpp"

namespace tq {

/// The embedding service that the settings name, with the key that is kept for it; a key that cannot be read counts as
/// none. An address that cannot be used becomes that of the local server. Any provider id but "openai" is "ollama".
std::shared_ptr<const EmbeddingProvider> configuredEmbedder(const AppSettings& settings, const SecretsStore& secrets,
                                                            std::shared_ptr<URLSession> session,
                                                            std::shared_ptr<const Clock> clock);

}  // namespace tq

#pragma once

#include <string_view>

#include "TQPersistence/Settings.hpp"

namespace tq {

/// Goes over to the embedding provider `providerId`, "ollama" or "openai". The standard address of the other one, a
/// server on this machine or the vendor's, becomes the standard address of this one; an address of the user's own
/// stays.
void chooseEmbeddingProvider(AppSettings& settings, std::string_view providerId);

}  // namespace tq

#pragma once

/// The names under which `SecretsStore` keeps the providers' keys.
namespace tq::SecretAccounts {

inline constexpr const char* anthropicAPIKey = "anthropic.api_key";
inline constexpr const char* openaiAPIKey = "openai.api_key";  ///< of the OpenAI-compatible vision provider
inline constexpr const char* transcriptionAPIKey = "transcription.api_key";
inline constexpr const char* embeddingAPIKey = "embedding.api_key";

}  // namespace tq::SecretAccounts

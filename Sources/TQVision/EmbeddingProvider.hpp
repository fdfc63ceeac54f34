#pragma once

#include <memory>
#include <stop_token>
#include <string>
#include <vector>

#include "TQCore/DefaultEndpoints.hpp"
#include "TQDescription/Semantic/TextEmbedder.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "TQPlatform/Network/WebURL.hpp"

namespace tq {

/// Asks a server for the vectors of texts, through `HTTPTransport`. Immutable: one value may serve several threads.
class EmbeddingProvider final : public TextEmbedder {
 public:
  enum class Backend {
    ollama,            ///< one text a request (https://github.com/ollama/ollama/blob/main/docs/api.md)
    openAICompatible,  ///< all texts in one request (https://platform.openai.com/docs/api-reference/embeddings)
  };

  static constexpr const char* defaultModel = "nomic-embed-text";
  static constexpr double defaultTimeoutSeconds = 60;
  static WebURL defaultOllamaBaseURL() { return WebURL::parse(DefaultEndpoints::ollama).value(); }

  /// `apiKey` may be empty. `timeoutSeconds` is of one attempt; what is not above zero and finite is no limit.
  EmbeddingProvider(Backend backend, WebURL baseURL, std::string model, std::string apiKey, double timeoutSeconds,
                    std::shared_ptr<URLSession> session, std::shared_ptr<const Clock> clock);

  /// The vectors as the server gave them, whatever their lengths; what is no number in one is 0. Ollama is asked for
  /// one text after the other, and the first failure ends the call.
  ///
  /// Throws what `HTTPTransport` throws, `JSONError` for a text that is not UTF-8 and an answer that is no JSON, and
  /// `TQError::providerDecodeFailure` for one without usable vectors.
  std::vector<EmbeddingVector> embed(const std::vector<std::string>& texts, std::stop_token stop) const override;

  /// The same for one text.
  EmbeddingVector embed(const std::string& text, std::stop_token stop) const;

 private:
  EmbeddingVector embedOneOllama(const std::string& text, std::stop_token stop) const;
  std::vector<EmbeddingVector> embedBatchOpenAI(const std::vector<std::string>& texts, std::stop_token stop) const;

  /// The answer to a POST with `body`; an object.
  JSONValue post(const WebURL& url, const JSONValue& body, std::stop_token stop) const;

  Backend backend_;
  WebURL baseURL_;
  std::string model_;
  std::string apiKey_;
  double timeoutSeconds_;
  std::shared_ptr<URLSession> session_;
  std::shared_ptr<const Clock> clock_;
};

}  // namespace tq

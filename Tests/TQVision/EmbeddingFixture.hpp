#pragma once

#include <gtest/gtest.h>

#include "ProviderFixture.hpp"
#include "TQVision/EmbeddingProvider.hpp"

namespace tq::test {

constexpr const char* oneVector = R"({"embedding":[1,2]})";
constexpr const char* batchOfOne = R"({"data":[{"index":0,"embedding":[1,2]}]})";

/// Embedding providers of both kinds on a scripted session and a clock that stands still.
class EmbeddingFixture : public testing::Test {
 protected:
  EmbeddingProvider provider(EmbeddingProvider::Backend backend) const {
    return EmbeddingProvider(backend, WebURL::parse(baseURL).value(), "the-model", apiKey, timeoutSeconds, session,
                             clock);
  }
  EmbeddingProvider ollama() const { return provider(EmbeddingProvider::Backend::ollama); }
  EmbeddingProvider openAI() const { return provider(EmbeddingProvider::Backend::openAICompatible); }

  std::vector<EmbeddingVector> embed(const EmbeddingProvider& with, const std::vector<std::string>& texts) const {
    return with.embed(texts, stop.get_token());
  }

  /// What the answer of an OpenAI-compatible server is read as.
  std::vector<EmbeddingVector> batch(const std::string& answer, std::size_t textCount) const {
    fake->answer(200, answer);
    return embed(openAI(), std::vector<std::string>(textCount, "text"));
  }

  /// What the answer of an Ollama server is read as.
  EmbeddingVector vectorIn(const std::string& answer) const {
    fake->answer(200, answer);
    return ollama().embed(std::string("text"), stop.get_token());
  }

  std::vector<std::string> requestBodies() const {
    std::vector<std::string> bodies;
    for (const FakeURLSession::Call& call : fake->calls())
      bodies.push_back(*call.request.body);
    return bodies;
  }

  std::string urlAsked(const EmbeddingProvider& of, const std::string& answer) const {
    fake->answer(200, answer);
    of.embed(std::string("text"), {});
    return fake->calls().back().request.url.absoluteString();
  }

  std::string baseURL = "http://embedder.example:11434";
  std::string apiKey = "sk-secret";
  double timeoutSeconds = 60;
  std::shared_ptr<FakeURLSession> fake = std::make_shared<FakeURLSession>();
  std::shared_ptr<URLSession> session = fake;
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::stop_source stop;
};

}  // namespace tq::test

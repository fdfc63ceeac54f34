#include "TQVision/EmbeddingProvider.hpp"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQVision/HTTPTransport.hpp"
#include "TQVision/VersionedURL.hpp"
#include "TQVision/VisionAnswer.hpp"
#include "TQVision/WithoutKey.hpp"

namespace tq {
namespace {

EmbeddingVector toFloats(const JSONValue::Array& values) {
  EmbeddingVector floats;
  floats.reserve(values.size());
  for (const JSONValue& value : values)
    floats.push_back(static_cast<float>(value.asDouble().value_or(0)));
  return floats;
}

/// The "embedding" of an object; a null pointer when it is no list.
const JSONValue::Array* embeddingOf(const JSONValue& object) {
  const JSONValue* embedding = object.find("embedding");
  return embedding ? embedding->asArray() : nullptr;
}

/// The elements in the order of the texts that they belong to, as their "index" says; one without it belongs to the
/// text at its own place.
std::vector<const JSONValue*> inOrderOfTexts(const JSONValue::Array& data) {
  std::vector<std::pair<std::int64_t, const JSONValue*>> places;
  places.reserve(data.size());
  for (const JSONValue& element : data) {
    const JSONValue* index = element.find("index");
    const auto named = index ? index->asInteger() : std::nullopt;
    places.emplace_back(named.value_or(static_cast<std::int64_t>(places.size())), &element);
  }
  std::stable_sort(places.begin(), places.end(),
                   [](const auto& one, const auto& other) { return one.first < other.first; });
  std::vector<const JSONValue*> elements;
  elements.reserve(places.size());
  for (const auto& [place, element] : places)
    elements.push_back(element);
  return elements;
}

}  // namespace

EmbeddingProvider::EmbeddingProvider(Backend backend, WebURL baseURL, std::string model, std::string apiKey,
                                     double timeoutSeconds, std::shared_ptr<URLSession> session,
                                     std::shared_ptr<const Clock> clock)
    : backend_(backend),
      baseURL_(std::move(baseURL)),
      model_(std::move(model)),
      apiKey_(std::move(apiKey)),
      timeoutSeconds_(timeoutSeconds),
      session_(std::move(session)),
      clock_(std::move(clock)) {}

std::vector<EmbeddingVector> EmbeddingProvider::embed(const std::vector<std::string>& texts,
                                                      std::stop_token stop) const {
  std::vector<EmbeddingVector> vectors;
  if (texts.empty()) return vectors;
  if (backend_ == Backend::openAICompatible) return embedBatchOpenAI(texts, std::move(stop));
  vectors.reserve(texts.size());
  for (const std::string& text : texts)
    vectors.push_back(embedOneOllama(text, stop));
  return vectors;
}

EmbeddingVector EmbeddingProvider::embed(const std::string& text, std::stop_token stop) const {
  std::vector<EmbeddingVector> vectors = embed(std::vector{text}, std::move(stop));
  if (vectors.empty()) throw TQError::providerDecodeFailure("embedding response was empty");
  return std::move(vectors.front());
}

EmbeddingVector EmbeddingProvider::embedOneOllama(const std::string& text, std::stop_token stop) const {
  const JSONValue::Object body{{"model", model_}, {"prompt", text}};
  const JSONValue answer = post(baseURL_.appendingPath("api/embeddings"), body, std::move(stop));
  const JSONValue::Array* embedding = embeddingOf(answer);
  if (!embedding) throw TQError::providerDecodeFailure("embeddings response missing 'embedding'");
  return toFloats(*embedding);
}

std::vector<EmbeddingVector> EmbeddingProvider::embedBatchOpenAI(const std::vector<std::string>& texts,
                                                                 std::stop_token stop) const {
  const JSONValue::Object body{{"model", model_}, {"input", JSONValue::Array(texts.begin(), texts.end())}};
  const JSONValue answer = post(versionedURL(baseURL_, "embeddings"), body, std::move(stop));
  const JSONValue::Array* data = VisionAnswer::objects(answer, "data");
  if (!data) throw TQError::providerDecodeFailure("embeddings response missing 'data'");
  std::vector<EmbeddingVector> vectors;
  vectors.reserve(data->size());
  for (const JSONValue* element : inOrderOfTexts(*data)) {
    const JSONValue::Array* embedding = embeddingOf(*element);
    if (!embedding) throw TQError::providerDecodeFailure("embeddings response element missing 'embedding'");
    vectors.push_back(toFloats(*embedding));
  }
  if (vectors.size() != texts.size())
    throw TQError::providerDecodeFailure("expected " + std::to_string(texts.size()) + " embeddings, got " +
                                         std::to_string(vectors.size()));
  return vectors;
}

JSONValue EmbeddingProvider::post(const WebURL& url, const JSONValue& body, std::stop_token stop) const {
  URLRequest request(url);
  request.method = "POST";
  request.timeoutInterval = timeoutSeconds_;
  request.setHeader("content-type", "application/json");
  if (!apiKey_.empty()) request.setHeader("authorization", "Bearer " + apiKey_);
  request.body = std::make_shared<const std::string>(writeJSON(body, JSONLayout::compact));

  const HTTPTransport transport(session_, HTTPTransport::providerMaxAttempts, HTTPTransport::providerBackoffBase,
                                clock_);
  const Bytes answer = transport.send(
      request, [this](int, const std::string& text) { return withoutKey(text, apiKey_); },
      [](const URLError& error) { return error.localizedDescription(); }, std::move(stop));
  JSONValue value = parseJSON(textOf(answer));
  if (!value.asObject()) throw TQError::providerDecodeFailure("embeddings response not a JSON object");
  return value;
}

}  // namespace tq

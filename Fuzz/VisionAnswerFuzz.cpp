#include "Fuzz/Property.hpp"
#include "TQCore/TQError.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "TQVision/AnthropicProvider.hpp"
#include "TQVision/OpenAIProvider.hpp"

namespace tq {
namespace {

std::optional<VisionResponse> parsed(const HTTPVisionProvider& provider, std::string_view answer) {
  try {
    return provider.parseResponse(viewOf(answer));
  } catch (const JSONError&) {
  } catch (const TQError& error) {
    fuzz::require(std::holds_alternative<TQError::ProviderDecodeFailure>(error.value()), "an answer fails as unusable");
    fuzz::require(isValidUTF8(userFacingDescription(error)), "a failure can be shown");
  }
  return std::nullopt;
}

void checkShape(const HTTPVisionProvider& provider, std::string_view answer) {
  const std::optional<VisionResponse> response = parsed(provider, answer);
  if (!response) return;
  fuzz::require(!trimmed(response->rawText).empty(), "an answer that is usable has a text");
  fuzz::require(isValidUTF8(response->rawText) && isValidUTF8(response->modelId), "its texts are UTF-8");
  fuzz::require(parsed(provider, writeJSON(parseJSON(answer), JSONLayout::pretty)) == response,
                "the layout of an answer says nothing");
}

}  // namespace

void fuzz::check(ByteView input) {
  const HTTPProviderConfig config{.providerId = "fuzz",
                                  .modelId = "the-model",
                                  .apiKey = "",
                                  .baseURL = WebURL::parse("http://127.0.0.1").value(),
                                  .extraHeaders = {},
                                  .timeoutSeconds = 1};
  checkShape(AnthropicProvider(config, nullptr, nullptr), textOf(input));
  checkShape(OpenAIProvider(config, true, nullptr, nullptr), textOf(input));
}

}  // namespace tq

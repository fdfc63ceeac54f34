#include "Fuzz/Property.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/DescriptionBuilder.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

std::optional<DescriptionResult> built(std::string_view text) {
  try {
    return DescriptionBuilder::build(text, {}, {}, std::nullopt);
  } catch (const TQError& error) {
    fuzz::require(std::holds_alternative<TQError::ProviderDecodeFailure>(error.value()) ||
                      std::holds_alternative<TQError::SchemaValidationFailed>(error.value()),
                  "an answer fails as unreadable or as incomplete");
    fuzz::require(isValidUTF8(userFacingDescription(error)), "a failure can be shown");
    return std::nullopt;
  }
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<DescriptionResult> result = built(textOf(input));
  if (!result) return;
  require(!result->summary.empty() && !result->shots.empty(), "a description has a summary and shots");

  const std::string sidecar = writeJSON(encode(*result), JSONLayout::pretty);
  const auto again = decode<DescriptionResult>(parseJSON(sidecar));
  require(again == *result, "a description is the same once written and read");
  require(hashOf(again) == hashOf(*result), "equal descriptions have equal hashes");

  const std::string document = MarkdownRenderer::render(*result);
  require(isValidUTF8(document), "the document is UTF-8");
  require(document.find(result->summary) != std::string::npos, "the document holds the summary as it stands");
}

}  // namespace tq

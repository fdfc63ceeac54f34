#include <cmath>

#include "Fuzz/Property.hpp"
#include "TQDescription/FolderIndex/IndexBuilder.hpp"
#include "TQDescription/Library/LoadedSidecar.hpp"
#include "TQDescription/Library/SourceTabFormatter.hpp"
#include "TQPlatform/JSON/JSONDocument.hpp"
#include "TQPlatform/JSON/JSONReader.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// A record, or why there is none.
struct Decoded {
  std::optional<DescriptionResult> result;
  std::string failure;

  bool operator==(const Decoded&) const = default;
};

template <class Read>
Decoded decoded(const Read& read) {
  try {
    return {decode<DescriptionResult>(read()), ""};
  } catch (const JSONError& error) {
    return {std::nullopt, error.what()};
  } catch (const DecodingError& error) {
    return {std::nullopt, error.what()};
  }
}

void checkPaths(const LoadedSidecar& sidecar) {
  fuzz::require(sidecar.posterURL() == "/library/clip.description.jpg", "the poster's name is the sidecar's");
  const std::optional<std::filesystem::path> clip = sidecar.sourceVideoURL();
  fuzz::require(!clip || clip == "/library" || clip->parent_path() == "/library",
                "a clip lies in its sidecar's folder");
}

void checkIndex(const Shared<DescriptionResult>& result) {
  const FolderIndex index = IndexBuilder::build("/library", {result, result}, Date());
  fuzz::require(isValidUTF8(IndexBuilder::renderMarkdown(index)), "the index can be shown");
  try {
    const std::string text = IndexBuilder::renderJSON(index);
    fuzz::require(decode<FolderIndex>(parseJSON(text)) == index, "an index is the same once written and read");
  } catch (const JSONError&) {
    fuzz::require(!std::isfinite(index.totalDurationSeconds), "an index fails by a sum that JSON cannot hold");
  }
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::string_view text = textOf(input);
  JSONDocument document;
  const Decoded sidecar = decoded([&] { return document.read(text); });
  require(isValidUTF8(sidecar.failure), "a failure can be shown");
  JSONValue value;
  const Decoded patient = decoded([&]() -> JSONView { return value = readJSONPatiently(text); });
  require(sidecar == patient, "a sidecar is the same record, or fails in the same words, whichever reader reads it");
  if (!sidecar.result) return;

  const std::string written = writeJSON(encode(*sidecar.result), JSONLayout::pretty);
  const Decoded again = decoded([&] { return document.read(written); });
  require(again == sidecar, "a record is the same once written and read");
  require(hashOf(*again.result) == hashOf(*sidecar.result), "equal records have equal hashes");

  const Shared<DescriptionResult> result(*sidecar.result);
  checkPaths({.sidecarURL = "/library/clip.description.json", .result = result});
  checkIndex(result);
  for (const auto& [label, shown] : SourceTabFormatter::rows(*result, "/library/clip.mov"))
    require(isValidUTF8(shown), "every row can be shown");
}

}  // namespace tq

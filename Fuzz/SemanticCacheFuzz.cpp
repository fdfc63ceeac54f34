#include <algorithm>
#include <cmath>

#include "Fuzz/Property.hpp"
#include "TQDescription/Semantic/SemanticCache.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

std::optional<SemanticEntries> parsed(std::string_view text, std::size_t processorCount = 1) {
  try {
    return SemanticCache::parse(text, processorCount);
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

std::string printed(const SemanticEntries& entries) {
  std::string text;
  SemanticCache::print(entries, [&](ByteView piece) { text += textOf(piece); });
  return text;
}

void checkVector(std::span<const float> vector) {
  fuzz::require(std::all_of(vector.begin(), vector.end(), [](float number) { return std::isfinite(number); }),
                "every number of a cache is finite");
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<SemanticEntries> entries = parsed(textOf(input));
  const std::optional<SemanticEntries> together = parsed(textOf(input), 3);
  require(together.has_value() == entries.has_value(), "several threads accept what one accepts");
  if (!entries) return;
  require(printed(*together) == printed(*entries), "several threads read what one reads");
  const JSONValue tree = parseJSON(textOf(input));
  require(tree.asArray() && tree.asArray()->size() >= entries->clips().size(), "a cache is a list in JSON");

  const std::string text = printed(*entries);
  const std::optional<SemanticEntries> again = parsed(text);
  require(again && printed(*again) == text, "a cache is the same once written and read");
  require(again->clips().size() == entries->clips().size(), "no entry is lost");
  for (std::size_t place = 0; place < entries->clips().size(); ++place) {
    const SemanticEntries::Clip& clip = entries->clips()[place];
    checkVector(entries->vectorOf(clip));
    require(entries->find(clip.filename) == &clip, "an entry is found by its filename");
    require(place == 0 || entries->clips()[place - 1].filename < clip.filename, "entries are in order");
  }
}

}  // namespace tq

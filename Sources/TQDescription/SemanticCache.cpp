#include "TQDescription/SemanticCache.hpp"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TQPlatform/JSON.hpp"
#include "TQPlatform/JSONCursor.hpp"

namespace tq {
namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;
constexpr std::size_t usualNumberLength = 12;  // of a number's text with its comma

/// Reads one entry; unknown keys are ignored.
void addEntry(JSONCursor& cursor, SemanticEntries& entries, std::vector<float>& vector) {
  std::optional<std::string> filename;
  std::optional<std::string> contentHash;
  bool hasVector = false;
  cursor.readObject([&](const std::string& key) {
    if (key == "filename") {
      filename = cursor.readString();
    } else if (key == "contentHash") {
      contentHash = cursor.readString();
    } else if (key == "vector") {
      cursor.readFloats(vector);
      hasVector = true;
    } else {
      cursor.skipValue();
    }
  });
  if (!filename || !contentHash || !hasVector) throw JSONError("an entry lacks a key");
  entries.add(std::move(*filename), std::move(*contentHash), vector);
}

std::string jsonText(const std::string& text) {
  return writeJSON(text, JSONLayout::compact);
}

}  // namespace

SemanticEntries SemanticCache::parse(std::string_view text) {
  SemanticEntries entries;
  entries.reserve(text.size() / usualNumberLength);
  std::vector<float> vector;
  JSONCursor cursor(text);
  cursor.readList([&] { addEntry(cursor, entries, vector); });
  cursor.finish();
  entries.sort();
  return entries;
}

void SemanticCache::print(const SemanticEntries& entries, const FileSink& sink) {
  std::string text = "[";
  for (const SemanticEntries::Clip& clip : entries.clips()) {
    if (&clip != entries.clips().data()) text += ',';
    text += R"({"contentHash":)" + jsonText(clip.contentHash) + R"(,"filename":)" + jsonText(clip.filename) +
            R"(,"vector":)";
    appendJSONFloats(text, entries.vectorOf(clip));
    text += '}';
    if (text.size() < pieceSize) continue;
    sink(viewOf(text));
    text.clear();
  }
  text += ']';
  sink(viewOf(text));
}

void SemanticCache::write(const std::filesystem::path& url, const SemanticEntries& entries) {
  createFolders(url.parent_path());
  streamFileAtomically(url, [&](const FileSink& sink) { print(entries, sink); });
}

}  // namespace tq

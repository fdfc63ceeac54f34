#include "TQDescription/Semantic/SemanticCache.hpp"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/JSON/JSONCursor.hpp"

namespace tq {
namespace {

constexpr std::size_t pieceSize = std::size_t{1} << 20;
constexpr std::size_t piecesInARow = 8;
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

/// All entries, one after the other.
SemanticEntries parseAlone(std::string_view text) {
  SemanticEntries entries;
  entries.reserve(text.size() / usualNumberLength);
  std::vector<float> vector;
  JSONCursor cursor(text);
  cursor.readList([&] { addEntry(cursor, entries, vector); });
  cursor.finish();
  return entries;
}

/// The list's inside, cut at the commas of what looks like the bounds of entries. Empty where that is not to be had.
std::vector<std::string_view> portionsOf(std::string_view text, std::size_t count) {
  if (count < 2 || !text.starts_with("[{") || !text.ends_with("}]")) return {};
  text = text.substr(1, text.size() - 2);
  std::vector<std::string_view> portions;
  for (std::size_t left = count; left > 1; --left) {
    const std::size_t brace = text.find("},{", text.size() / left);
    if (brace == std::string_view::npos) break;
    portions.push_back(text.substr(0, brace + 1));
    text.remove_prefix(brace + 2);
  }
  portions.push_back(text);
  return portions;
}

/// The same by several threads. Where each portion is good by itself, so is the list. Where one is not, it may have
/// been cut within a filename, or the list is broken: absent then.
std::optional<SemanticEntries> parseTogether(std::string_view text, std::size_t processorCount) {
  const std::vector<std::string_view> portions = portionsOf(text, processorCount);
  if (portions.size() < 2) return std::nullopt;
  std::vector<SemanticEntries> parts(portions.size());
  parts.front().reserve(text.size() / usualNumberLength);
  try {
    forEachWindowed(portions.size(), portions.size(), {}, [&](std::size_t index, const std::stop_token&) {
      std::vector<float> vector;
      JSONCursor cursor(portions[index]);
      cursor.readElements([&] { addEntry(cursor, parts[index], vector); });
    });
  } catch (const JSONError&) {
    return std::nullopt;
  }
  for (std::size_t index = 1; index < parts.size(); ++index)
    parts.front().append(std::exchange(parts[index], {}));
  return std::move(parts.front());
}

std::string jsonText(const std::string& text) {
  return writeJSON(text, JSONLayout::compact);
}

using Clips = std::span<const SemanticEntries::Clip>;

/// The entries of some clips, a comma before each, in the place of what `text` holds.
void printClips(const SemanticEntries& entries, Clips clips, std::string& text) {
  text.clear();
  for (const SemanticEntries::Clip& clip : clips) {
    text.append(R"(,{"contentHash":)").append(jsonText(clip.contentHash));
    text.append(R"(,"filename":)").append(jsonText(clip.filename)).append(R"(,"vector":)");
    appendJSONFloats(text, entries.vectorOf(clip));
    text += '}';
  }
}

/// Neighbours whose text will be of about `pieceSize` together.
std::vector<Clips> piecesOf(Clips clips) {
  constexpr std::size_t usualRest = 128;  // of an entry's text without its numbers
  std::vector<Clips> pieces;
  std::size_t size = 0;
  for (std::size_t first = 0, next = 0; next < clips.size();) {
    size += clips[next].length * usualNumberLength + usualRest;
    ++next;
    if (size < pieceSize && next < clips.size()) continue;
    pieces.push_back(clips.subspan(first, next - first));
    first = next;
    size = 0;
  }
  return pieces;
}

}  // namespace

SemanticEntries SemanticCache::parse(std::string_view text, std::size_t processorCount) {
  std::optional<SemanticEntries> entries = parseTogether(text, processorCount);
  if (!entries) entries = parseAlone(text);
  entries->sort();
  return std::move(*entries);
}

void SemanticCache::print(const SemanticEntries& entries, const FileSink& sink, std::size_t processorCount) {
  const std::vector<Clips> pieces = piecesOf(entries.clips());
  // One by itself needs no second text; several are worth their start when they have something to do for a while.
  std::vector<std::string> texts(processorCount > 1 ? processorCount * piecesInARow : 1);
  for (std::size_t done = 0; done < pieces.size();) {
    const std::size_t count = std::min(texts.size(), pieces.size() - done);
    forEachWindowed(count, processorCount, {}, [&](std::size_t index, const std::stop_token&) {
      printClips(entries, pieces[done + index], texts[index]);
    });
    if (done == 0) texts.front().front() = '[';  // in the place of the first comma
    for (std::size_t index = 0; index < count; ++index, ++done)
      sink(viewOf(texts[index]));
  }
  sink(viewOf(std::string_view(pieces.empty() ? "[]" : "]")));
}

void SemanticCache::write(const std::filesystem::path& url, const SemanticEntries& entries,
                          std::size_t processorCount) {
  createFolders(url.parent_path());
  streamFileAtomically(url, [&](const FileSink& sink) { print(entries, sink, processorCount); });
}

}  // namespace tq

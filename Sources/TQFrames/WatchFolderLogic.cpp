#include "TQFrames/WatchFolderLogic.hpp"

#include <algorithm>
#include <utility>

#include "TQCore/VideoExtensions.hpp"
#include "TQPlatform/FileSystem/FileState.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

std::string_view withoutBlankEnds(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// A text in lower case, character by character.
class LowerCase {
 public:
  explicit LowerCase(std::string_view text) : text_(lowercased(text)) {
    if (characterCount(text_) != text_.size()) characters_ = characters(text_);
  }
  LowerCase(const LowerCase&) = delete;
  LowerCase& operator=(const LowerCase&) = delete;

  std::size_t size() const { return characters_.empty() ? text_.size() : characters_.size(); }

  std::string_view operator[](std::size_t index) const {
    return characters_.empty() ? std::string_view(text_).substr(index, 1) : characters_[index];
  }

 private:
  const std::string text_;
  std::vector<std::string_view> characters_;  // in text_; empty where each byte is one, as in nearly all names
};

bool matches(const LowerCase& name, const LowerCase& pattern) {
  std::size_t i = 0;
  std::size_t j = 0;
  std::optional<std::size_t> star;
  std::size_t mark = 0;  // where the run of the latest star ends
  while (i < name.size()) {
    if (j < pattern.size() && (pattern[j] == "?" || pattern[j] == name[i])) {
      ++i;
      ++j;
    } else if (j < pattern.size() && pattern[j] == "*") {
      star = j++;
      mark = i;
    } else if (star) {
      j = *star + 1;
      i = ++mark;
    } else {
      return false;
    }
  }
  while (j < pattern.size() && pattern[j] == "*")
    ++j;
  return j == pattern.size();
}

}  // namespace

WatchFolderLogic::Reduction WatchFolderLogic::reduce(Snapshot previous, const std::vector<FileEvent>& current, Date now,
                                                     double debounce, const std::vector<std::string>& exclusionGlobs) {
  const Date cutoff = now - std::chrono::duration_cast<Date::duration>(Seconds(debounce));
  std::vector<const FileEvent*> ready;
  for (const FileEvent& event : current) {
    if (cutoff < event.modified) continue;
    // Nearly all files of a listing end here, so what their names tell is asked last.
    const auto known = previous.find(event);
    if (known != previous.end() && *known == event) continue;
    if (isCandidate(fs::path(event.url).filename().native(), exclusionGlobs)) ready.push_back(&event);
  }
  Reduction result{.emit = {}, .next = std::move(previous)};
  for (const FileEvent* event : ready) {
    result.emit.emplace_back(event->url);
    result.next.erase(*event);
    result.next.insert(*event);
  }
  return result;
}

bool WatchFolderLogic::isCandidate(std::string_view name, const std::vector<std::string>& exclusionGlobs) {
  return VideoExtensions::isVideo(name) && !isExcluded(name, exclusionGlobs);
}

bool WatchFolderLogic::shouldEnqueue(const fs::path& sourceURL, const std::optional<fs::path>& sidecarDirectory) {
  const fs::path directory = sidecarDirectory.value_or(sourceURL.parent_path());
  const fs::path sidecar = directory / (sourceURL.stem().native() + ".description.json");
  if (!fileExists(sidecar)) return true;
  const auto described = modificationDate(sidecar);
  const auto changed = modificationDate(sourceURL);
  return described && changed && *changed > *described;
}

bool WatchFolderLogic::isExcluded(std::string_view name, const std::vector<std::string>& globs) {
  if (globs.empty()) return false;
  const LowerCase text(name);
  return std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
    const std::string_view pattern = withoutBlankEnds(glob);
    return !pattern.empty() && matches(text, LowerCase(pattern));
  });
}

bool WatchFolderLogic::matchesGlob(std::string_view name, std::string_view pattern) {
  return matches(LowerCase(name), LowerCase(pattern));
}

std::optional<Date> WatchFolderLogic::modificationDate(const fs::path& url) {
  const auto state = fileState(url);
  return state ? state->modified : std::nullopt;
}

}  // namespace tq

#include "TQFrames/WatchFolderLogic.hpp"

#include <algorithm>
#include <system_error>

#include "TQCore/VideoExtensions.hpp"
#include "TQPlatform/Files.hpp"
#include "TQPlatform/Unicode.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

std::string_view withoutBlankEnds(std::string_view text) {
  constexpr std::string_view blanks = " \t";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string_view> charactersOf(std::string_view text) {
  std::vector<std::string_view> characters;
  while (!text.empty()) {
    characters.push_back(characterPrefix(text, 1));
    text.remove_prefix(characters.back().size());
  }
  return characters;
}

}  // namespace

WatchFolderLogic::Reduction WatchFolderLogic::reduce(const Snapshot& previous, const std::vector<FileEvent>& current,
                                                     Date now, double debounce,
                                                     const std::vector<std::string>& exclusionGlobs) {
  const Date cutoff = now - std::chrono::duration_cast<Date::duration>(Seconds(debounce));
  Reduction result{.emit = {}, .next = previous};
  for (const FileEvent& event : current) {
    if (!VideoExtensions::isVideo(event.url)) continue;
    if (isExcluded(event.url.filename().native(), exclusionGlobs)) continue;
    if (cutoff < event.modified) continue;
    const auto known = previous.find(event.url);
    const bool reported =
        known != previous.end() && known->second.modified == event.modified && known->second.size == event.size;
    if (reported) continue;
    result.emit.push_back(event.url);
    result.next.insert_or_assign(event.url, event);
  }
  return result;
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
  return std::any_of(globs.begin(), globs.end(), [&](const std::string& glob) {
    const std::string_view pattern = withoutBlankEnds(glob);
    return !pattern.empty() && matchesGlob(name, pattern);
  });
}

bool WatchFolderLogic::matchesGlob(std::string_view name, std::string_view pattern) {
  const std::string nameText = lowercased(name);
  const std::string patternText = lowercased(pattern);
  const auto characters = charactersOf(nameText);
  const auto wanted = charactersOf(patternText);
  std::size_t i = 0;
  std::size_t j = 0;
  std::optional<std::size_t> star;
  std::size_t mark = 0;  // where the run of the latest star ends
  while (i < characters.size()) {
    if (j < wanted.size() && (wanted[j] == "?" || wanted[j] == characters[i])) {
      ++i;
      ++j;
    } else if (j < wanted.size() && wanted[j] == "*") {
      star = j++;
      mark = i;
    } else if (star) {
      j = *star + 1;
      i = ++mark;
    } else {
      return false;
    }
  }
  while (j < wanted.size() && wanted[j] == "*")
    ++j;
  return j == wanted.size();
}

std::optional<Date> WatchFolderLogic::modificationDate(const fs::path& url) {
  std::error_code error;
  const auto written = fs::last_write_time(url, error);
  if (error) return std::nullopt;
  // The file system's dates reach beyond those of the calendar clock.
  if (written >= std::chrono::file_clock::from_sys(Date::max())) return Date::max();
  return std::chrono::file_clock::to_sys(written);
}

}  // namespace tq

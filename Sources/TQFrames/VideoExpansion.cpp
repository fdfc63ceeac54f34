#include "TQFrames/VideoExpansion.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "TQCore/VideoExtensions.hpp"
#include "TQPlatform/FileSystem/FolderReader.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// `url` as an absolute path. Its detours such as "a/.." are left out, unless a link among them leads elsewhere.
fs::path standardised(const fs::path& url) {
  std::error_code error;
  fs::path absolute = fs::absolute(url, error);
  fs::path direct = absolute.lexically_normal();
  return fs::equivalent(absolute, direct, error) ? direct : absolute;
}

/// True when `folder`, with every link in it resolved, is `root` or lies in it; `root` is resolved already.
bool liesWithin(const fs::path& root, const fs::path& folder) {
  std::error_code error;
  const fs::path resolved = fs::canonical(folder, error);
  if (error) return false;
  return std::ranges::mismatch(root, resolved).in1 == root.end();
}

/// Takes the clips directly in `folder`, and its sub-folders, as far as they can be read.
void walk(const fs::path& folder, std::vector<fs::path>& clips, std::vector<fs::path>& folders) {
  try {
    FolderReader reader(folder);
    while (const auto entry = reader.next()) {
      if (entry->name.starts_with('.')) continue;
      auto kind = entry->kind;
      if (!kind)
        if (const auto state = reader.look()) kind = state->kind;
      if (kind == FileKind::folder) folders.push_back(folder / entry->name);
      if (kind == FileKind::regular && VideoExtensions::isVideo(entry->name)) clips.push_back(folder / entry->name);
    }
  } catch (const SystemError&) {
    // The rest of this folder cannot be read; the others can.
  }
}

std::vector<fs::path> clipsBelow(const fs::path& folder) {
  std::error_code error;
  const fs::path root = fs::canonical(folder, error);
  std::vector<fs::path> clips;
  std::vector<fs::path> folders{root};
  while (!folders.empty()) {
    const fs::path next = std::exchange(folders.back(), {});
    folders.pop_back();
    if (liesWithin(root, next)) walk(next, clips, folders);
  }
  std::ranges::sort(clips, {}, &fs::path::native);
  return clips;
}

}  // namespace

std::vector<fs::path> expandToVideos(const std::vector<fs::path>& urls) {
  std::vector<fs::path> clips;
  std::set<std::string> known;
  const auto add = [&](const fs::path& clip) {
    if (known.insert(clip.native()).second) clips.push_back(clip);
  };
  for (const fs::path& url : urls) {
    const fs::path standard = standardised(url);
    const auto state = fileState(standard);
    if (!state) continue;
    if (state->kind == FileKind::folder) {
      for (const fs::path& clip : clipsBelow(standard))
        add(clip);
    } else if (VideoExtensions::isVideo(standard)) {
      add(standard);
    }
  }
  return clips;
}

}  // namespace tq

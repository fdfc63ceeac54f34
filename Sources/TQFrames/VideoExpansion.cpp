#include "TQFrames/VideoExpansion.hpp"

#include <algorithm>
#include <set>
#include <string>
#include <system_error>

#include "TQCore/VideoExtensions.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

bool isHidden(const fs::path& path) {
  return path.filename().native().starts_with('.');
}

/// True when `path`, with every link in it resolved, lies in `root`, which is resolved already.
bool liesBelow(const fs::path& root, const fs::path& path) {
  std::error_code error;
  const fs::path resolved = fs::canonical(path, error);
  if (error) return false;
  const auto difference = std::mismatch(root.begin(), root.end(), resolved.begin(), resolved.end());
  return difference.first == root.end();
}

std::vector<fs::path> clipsBelow(const fs::path& folder) {
  std::error_code error;
  const fs::path root = fs::canonical(folder, error);
  if (error) return {};
  std::vector<fs::path> clips;
  auto entry = fs::recursive_directory_iterator(root, fs::directory_options::skip_permission_denied, error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (isHidden(entry->path())) {
      entry.disable_recursion_pending();
      continue;
    }
    std::error_code unreadable;
    if (!VideoExtensions::isVideo(entry->path())) continue;
    if (entry->symlink_status(unreadable).type() != fs::file_type::regular) continue;
    if (liesBelow(root, entry->path())) clips.push_back(entry->path());
  }
  std::sort(clips.begin(), clips.end(),
            [](const fs::path& left, const fs::path& right) { return left.native() < right.native(); });
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
    std::error_code error;
    const fs::path standard = fs::absolute(url, error).lexically_normal();
    const fs::file_status status = fs::status(standard, error);
    if (status.type() == fs::file_type::directory) {
      for (const fs::path& clip : clipsBelow(standard))
        add(clip);
    } else if (fs::exists(status) && VideoExtensions::isVideo(standard)) {
      add(standard);
    }
  }
  return clips;
}

}  // namespace tq

#pragma once

#include <filesystem>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq {

/// A hidden folder in which another program's outputs take shape beside the place that they are meant for, named
/// ".tarquel-<UUID>.work". It goes with all that is in it; it is locked (flock) until then, so that what a dead run
/// left behind can be told from what is in use.
class ScratchFolder {
 public:
  /// Throws a `SystemError` that names `parent`, which must exist.
  explicit ScratchFolder(const std::filesystem::path& parent);
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::filesystem::path& name) const { return path_ / name; }

 private:
  bool lock(const std::filesystem::path& parent);

  std::filesystem::path path_;
  Descriptor lock_;
};

/// Removes the scratch folders of dead runs from `parent`, with their content: folders of exactly such a name that
/// belong to this user and that nobody holds. Links and all else stay, and so does what cannot be opened, locked or
/// removed. Safe beside any number of users of such folders and other clean-ups on this machine.
void removeAbandonedScratchFolders(const std::filesystem::path& parent) noexcept;

}  // namespace tq

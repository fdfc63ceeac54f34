#pragma once

#include <cstddef>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
#include <span>
#include <stop_token>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq {

/// What one wait for changes brought.
struct DirectoryChanges {
  std::set<std::filesystem::path> folders;  ///< those in which something happened, as they were named to `watch`
  bool overflowed = false;                  ///< the system lost events: any folder may have changed

  bool operator==(const DirectoryChanges&) const = default;
};

/// Tells when entries of folders come, go, change their attributes or have been written and closed, and when a folder
/// itself is moved or removed. Not what happens in sub-folders, no write before the file is closed, and no new
/// modification date alone. Some file systems, network ones above all, do not tell what others do to them. Threads may
/// watch and wait at once, but only one may wait.
class DirectoryEvents {
 public:
  /// Throws `SystemError` where the system gives no more of these.
  DirectoryEvents();

  /// Watches what `folder` leads to now, also through links; to be called again when another folder may have come to
  /// lie there, whose predecessor is then watched no more. False when it is no folder or cannot be watched.
  bool watch(const std::filesystem::path& folder);

  /// Blocks until something has happened since the last wait. What has happened by then comes as one, up to some
  /// hundred events; a longer burst takes several waits. A stop request ends the wait with `Cancelled`.
  DirectoryChanges wait(std::stop_token stop);

 private:
  using WatchNumber = int;

  void forget(const std::filesystem::path& folder);
  void take(std::span<const std::byte> events, DirectoryChanges& changes);

  Descriptor events_;
  Descriptor wakeUp_;
  std::mutex mutex_;
  std::map<std::filesystem::path, WatchNumber> watches_;  // guarded by mutex_; two paths may lead to one folder
};

}  // namespace tq

#pragma once

#include <filesystem>

namespace tq::test {

// What the system's folder events may do to a program. Each stands in for the system's own calls while it lives, in
// every program that is linked with this file; one of them at a time.

/// A system that gives no folder events: every new request for them is refused.
class NoFolderEvents {
 public:
  NoFolderEvents();
  ~NoFolderEvents();
  NoFolderEvents(const NoFolderEvents&) = delete;
  NoFolderEvents& operator=(const NoFolderEvents&) = delete;
};

/// A system on which the limit of watched folders is reached: no further one can be watched.
class NoMoreFolderWatches {
 public:
  NoMoreFolderWatches();
  ~NoMoreFolderWatches();
  NoMoreFolderWatches(const NoMoreFolderWatches&) = delete;
  NoMoreFolderWatches& operator=(const NoMoreFolderWatches&) = delete;
};

/// A system that tells only what the test says, as with a network folder that others write to. Counts for one
/// `DirectoryEvents` that is made while it lives; that one ends first.
class ScriptedFolderEvents {
 public:
  ScriptedFolderEvents();
  ~ScriptedFolderEvents();
  ScriptedFolderEvents(const ScriptedFolderEvents&) = delete;
  ScriptedFolderEvents& operator=(const ScriptedFolderEvents&) = delete;

  /// More has happened than the system could hold.
  void overflow();

  /// The file system with that watched folder was unmounted, which ends the watch.
  void unmount(const std::filesystem::path& folder);
};

}  // namespace tq::test

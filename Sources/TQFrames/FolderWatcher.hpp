#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TQFrames/WatchFolderLogic.hpp"
#include "TQPlatform/Clock.hpp"
#include "TQPlatform/DirectoryEvents.hpp"
#include "TQPlatform/Monitor.hpp"
#include "TQPlatform/Tasks.hpp"

namespace tq {

/// Reports the clips that come into folders or change there, each once it has not been written to for a while. Files
/// that are there at the start are not reported. Sub-folders, hidden files and links in a folder do not count; the
/// folder itself may be a link. A folder that is missing or cannot be listed is an empty one, until it can be.
///
/// A serial object. What the system tells of the folders makes reports prompt, but they are right without it: a timer
/// has the folders listed again every `debounce` seconds.
class FolderWatcher {
 public:
  /// Called on a thread of the watcher, one at a time, and never after `stop`. It must not throw or block long, and
  /// must neither call the watcher nor destroy it.
  using Emit = std::function<void(const std::filesystem::path& url)>;

  /// `exclusionGlobs` as `WatchFolderLogic::isExcluded` reads them; `debounce` in seconds, above 0 and at most a
  /// billion. Reported are the folders' paths as given, and the file's name.
  FolderWatcher(std::vector<std::filesystem::path> paths, std::vector<std::string> exclusionGlobs, double debounce,
                Emit emit, std::shared_ptr<const Clock> clock);

  /// Stops.
  ~FolderWatcher();
  FolderWatcher(const FolderWatcher&) = delete;
  FolderWatcher& operator=(const FolderWatcher&) = delete;

  /// Lists the folders once and begins to watch; what they hold by then is not reported. Nothing when it runs already.
  /// Throws `std::system_error` when the machine gives no more threads; it does not run then.
  void start();

  /// Ends all watching and waits for a report under way. Nothing when it does not run.
  void stop();

 private:
  using FileEvent = WatchFolderLogic::FileEvent;

  /// All that runs between `start` and `stop`.
  struct Watch {
    std::unique_ptr<DirectoryEvents> sources;  // absent where the system gives none: then there is the timer alone
    TaskScope tasks;                           // last: they use the sources
  };

  void seedSnapshot();
  void installSources();
  void runPeriodicTimer(const std::stop_token& stop);
  void followEvents(DirectoryEvents& sources, const std::stop_token& stop);
  void rescan();
  std::vector<FileEvent> currentEvents() const;

  const std::vector<std::filesystem::path> paths_;
  const std::vector<std::string> exclusionGlobs_;
  const double debounce_;
  const Emit emit_;
  const std::shared_ptr<const Clock> clock_;

  Monitor monitor_;
  WatchFolderLogic::Snapshot snapshot_;
  std::unique_ptr<Watch> running_;  // absent when stopped
};

}  // namespace tq

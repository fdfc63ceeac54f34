#pragma once

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TQFrames/RescanSchedule.hpp"
#include "TQFrames/WatchFolderLogic.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Concurrency/Monitor.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/FileSystem/DirectoryEvents.hpp"
#include "TQPlatform/FileSystem/FolderReader.hpp"

namespace tq {

/// Reports the clips that come into folders or change there, each once it has not been written to for a while. Files
/// that are there at the start are not reported, whatever their dates. Sub-folders, hidden files and links in a folder
/// do not count; the folder itself may be a link. A folder that is missing or cannot be listed is an empty one, until
/// it can be. A folder to which several of the paths lead is listed once and its files are reported under the first of
/// them.
///
/// A serial object. What the system tells of the folders makes reports prompt, but they are right without it: the
/// folders are listed again every `debounce` seconds in any case (`RescanSchedule`).
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
  /// A `stop` during the listing ends it, and the watcher does not run. Throws `std::system_error` when the machine
  /// gives no more threads; it does not run then.
  void start();

  /// Ends all watching; breaks off a listing and waits for a report under way. Nothing when it does not run.
  void stop();

 private:
  using Paths = std::vector<std::filesystem::path>;
  using URL = WatchFolderLogic::URL;
  using URLs = std::vector<URL>;
  using FileEvent = WatchFolderLogic::FileEvent;

  /// What lies in one folder, and the paths that lead to it.
  struct Listing {
    FileIdentity folder;
    URLs spellings;                 // different ones, each with a slash at its end, in the order of `paths_`
    std::vector<FileEvent> events;  // under the first spelling
  };

  /// All that runs between `start` and `stop`.
  struct Watch {
    RescanSchedule schedule;
    std::unique_ptr<DirectoryEvents> sources;  // absent where the system gives none: then there is the timer alone
    TaskScope tasks;                           // last: they use all of the above
  };

  void seedSnapshot();
  void installSources();
  void rescanWheneverDue(RescanSchedule& schedule, const std::stop_token& stop);
  void rescan();
  URLs takeUp(const Listing& listing, Date now, double debounce);
  URLs takeUp(const std::vector<FileEvent>& events, Date now, double debounce);
  std::vector<Listing> currentEvents() const;
  std::vector<FileEvent> eventsIn(FolderReader& folder, const URL& spelling) const;

  const Paths paths_;
  const std::vector<std::string> exclusionGlobs_;
  const double debounce_;
  const Emit emit_;
  const std::shared_ptr<const Clock> clock_;

  std::atomic<int> stopping_ = 0;  // calls of `stop` that wait for their turn
  Monitor monitor_;
  WatchFolderLogic::Snapshot snapshot_;
  std::unique_ptr<Watch> running_;  // absent when stopped
};

}  // namespace tq

#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TQFrames/FolderWatcher.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Concurrency/Executor.hpp"
#include "TQPlatform/Concurrency/SerialQueue.hpp"

namespace tq {

/// Keeps the one folder watcher of a program in step with what its user wants watched. Starting and stopping list
/// folders, which may take long on a network, so both happen on a thread of its own; wishes that follow each other
/// quickly replace each other.
///
/// Lives on one thread, the owner's: all operations are called there, and so are both callbacks.
class WatcherLifecycle {
 public:
  struct Wish {
    std::vector<std::filesystem::path> folders;
    std::vector<std::string> exclusionGlobs;
  };

  /// A file counts as finished when it has not been written to for so many seconds.
  static constexpr double debounce = 1.5;

  /// `owner` runs items on the owner's thread. `onFile` hears of each clip that came into a folder, `onActiveChange`
  /// that a watcher runs now, or no longer.
  WatcherLifecycle(Executor owner, std::shared_ptr<const Clock> clock,
                   std::function<void(const std::filesystem::path& clip)> onFile, std::function<void()> onActiveChange);

  /// Stops, and waits for a listing under way.
  ~WatcherLifecycle();
  WatcherLifecycle(const WatcherLifecycle&) = delete;
  WatcherLifecycle& operator=(const WatcherLifecycle&) = delete;

  /// Replaces the watcher by one for that wish, or by none. What is in the folders already is never reported.
  void watch(std::optional<Wish> wish);

  /// True from when a watcher has seen what is in its folders until it is replaced.
  bool isActive() const { return isActive_; }

 private:
  using Number = std::uint64_t;

  void replaceWatcher(const std::optional<Wish>& wish, Number number);
  void setActive(bool isActive);

  const OwnerCalls owner_;
  const std::shared_ptr<const Clock> clock_;
  const std::function<void(const std::filesystem::path&)> onFile_;
  const std::function<void()> onActiveChange_;
  bool isActive_ = false;
  std::atomic<Number> newest_ = 0;
  std::unique_ptr<FolderWatcher> watcher_;  // touched by the thread alone
  SerialQueue thread_;                      // last: its items use all of the above
};

}  // namespace tq

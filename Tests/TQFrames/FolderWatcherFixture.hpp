#pragma once

#include <condition_variable>
#include <gtest/gtest.h>
#include <mutex>
#include <vector>

#include "Support/TemporaryFolder.hpp"
#include "Support/TimerClock.hpp"
#include "TQFrames/FolderWatcher.hpp"

namespace tq::test {

/// What a watcher has reported.
class Reports {
 public:
  using Paths = std::vector<std::filesystem::path>;

  void add(const std::filesystem::path& url) {
    std::lock_guard lock(mutex_);
    urls_.push_back(url);
    changed_.notify_all();
  }

  Paths all() {
    std::lock_guard lock(mutex_);
    return urls_;
  }

  /// Blocks until `count` have come, and gives those that did.
  Paths waitFor(std::size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return urls_.size() >= count; });
    return urls_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  Paths urls_;
};

/// A watcher of one folder. The timer fires in `clock_->tick()` alone: what is reported without it was set off by an
/// event.
class FolderWatcherFixture : public testing::Test {
 protected:
  using Paths = Reports::Paths;

  FolderWatcherFixture() { std::filesystem::create_directory(folder_); }

  FolderWatcher::Emit report() {
    return [this](const std::filesystem::path& url) { reports_.add(url); };
  }

  FolderWatcher makeWatcher(Paths folders) { return FolderWatcher(std::move(folders), {}, 1.5, report(), clock_); }

  Date now() const { return clock_->now(); }

  static void setDate(const std::filesystem::path& file, Date modified) {
    std::filesystem::last_write_time(file, std::chrono::file_clock::from_sys(modified));
  }

  /// A clip that comes in at one stroke, with its date, and replaces what has its name.
  std::filesystem::path arrive(const std::filesystem::path& clip, Date modified, std::string_view content = "clip") {
    const auto staged = root_.write("staged", content);
    setDate(staged, modified);
    std::filesystem::rename(staged, clip);
    return clip;
  }
  std::filesystem::path arrive(const std::filesystem::path& clip) {
    return arrive(clip, now() - std::chrono::hours(1));
  }

  const TemporaryFolder root_;
  const std::filesystem::path folder_ = root_ / "in";
  const std::shared_ptr<TimerClock> clock_ = std::make_shared<TimerClock>();
  Reports reports_;
  FolderWatcher watcher_{{folder_}, {"draft*"}, 1.5, report(), clock_};
};

}  // namespace tq::test

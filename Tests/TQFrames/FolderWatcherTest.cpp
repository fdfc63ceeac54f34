#include <condition_variable>
#include <fstream>
#include <gtest/gtest.h>
#include <mutex>

#include "Support/Gate.hpp"
#include "Support/FolderEventFaults.hpp"
#include "Support/NoMoreThreads.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/WatchedThread.hpp"
#include "TQFrames/FolderWatcher.hpp"
#include "TQPlatform/Cancelled.hpp"
#include "TQPlatform/SystemError.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::TemporaryFolder;
using Paths = std::vector<fs::path>;

/// A clock on which a single timer sleeps until the test has it fire.
class TimerClock final : public Clock {
 public:
  Date now() const override {
    std::lock_guard lock(mutex_);
    return now_;
  }
  std::chrono::steady_clock::time_point steadyNow() const override { return {}; }

  void sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override {
    std::unique_lock lock(mutex_);
    lastSleep_ = duration;
    sleeping_ = true;
    changed_.notify_all();
    const bool fired = changed_.wait(lock, stop, [this] { return fires_; });
    sleeping_ = fires_ = false;
    if (!fired) throw Cancelled();
  }

  /// Moves the time on, has the timer fire and returns when its work is done.
  void tick(std::chrono::nanoseconds passed = 0ns) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return sleeping_; });
    now_ += passed;
    fires_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return sleeping_ && !fires_; });
  }

  std::chrono::nanoseconds lastSleep() const {
    std::lock_guard lock(mutex_);
    return lastSleep_;
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable_any changed_;
  Date now_{1'700'000'000s};
  mutable std::chrono::nanoseconds lastSleep_{};
  mutable bool sleeping_ = false;
  mutable bool fires_ = false;
};

/// What a watcher has reported.
class Reports {
 public:
  void add(const fs::path& url) {
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

/// The timer fires in `clock_->tick()` alone: what is reported without it was set off by an event.
class FolderWatcherTest : public testing::Test {
 protected:
  void SetUp() override { fs::create_directory(folder_); }

  FolderWatcher makeWatcher(Paths folders, std::vector<std::string> globs = {}) {
    return FolderWatcher(
        std::move(folders), std::move(globs), 1.5, [this](const auto& url) { reports_.add(url); }, clock_);
  }

  Date now() const { return clock_->now(); }

  static void setDate(const fs::path& file, Date modified) {
    fs::last_write_time(file, std::chrono::file_clock::from_sys(modified));
  }

  /// A clip that comes in at one stroke, with its date.
  fs::path arrive(const fs::path& clip, Date modified) {
    const auto staged = root_.write("staged", "clip");
    setDate(staged, modified);
    fs::rename(staged, clip);
    return clip;
  }
  fs::path arrive(const fs::path& clip) { return arrive(clip, now() - 1h); }

  const TemporaryFolder root_;
  const fs::path folder_ = root_ / "in";
  const std::shared_ptr<TimerClock> clock_ = std::make_shared<TimerClock>();
  Reports reports_;
  FolderWatcher watcher_ = makeWatcher({folder_}, {"draft*"});
};

TEST_F(FolderWatcherTest, FilesThatAreThereAtTheStartAreNotReported) {
  arrive(folder_ / "old.mov");
  arrive(folder_ / "just now.mov", now());
  watcher_.start();
  clock_->tick();
  clock_->tick(10s);
  EXPECT_EQ(reports_.all(), Paths{});
}

TEST_F(FolderWatcherTest, AClipOfAnOldDateIsReportedAsItComes) {
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClipIsReportedOnceWhenItsLastWriteIsLongEnoughAgo) {
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov", now());
  clock_->tick(1s);
  EXPECT_EQ(reports_.all(), Paths{});
  setDate(clip, now());
  clock_->tick(1s);
  EXPECT_EQ(reports_.all(), Paths{});
  clock_->tick(500ms);
  EXPECT_EQ(reports_.all(), Paths{clip});
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, ATouchedClipIsReportedAgain) {
  const auto clip = arrive(folder_ / "clip.mov");
  watcher_.start();
  setDate(clip, now() - 30min);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClipThatIsPutBackUnchangedIsNotReported) {
  const auto date = now() - 1h;
  const auto clip = arrive(folder_ / "clip.mov", date);
  watcher_.start();
  fs::remove(clip);
  clock_->tick();
  arrive(clip, date);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  fs::remove(clip);
  arrive(clip, date + 1s);
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
}

TEST_F(FolderWatcherTest, OnlyVisibleRegularClipsDirectlyInTheFolderCount) {
  watcher_.start();
  const auto outside = arrive(root_ / "outside.mov");
  fs::create_directories(folder_ / "sub");
  fs::create_directories(folder_ / "folder.mov");
  fs::create_symlink(outside, folder_ / "link.mov");
  fs::create_symlink(root_ / "nowhere", folder_ / "dangling.mov");
  arrive(folder_ / "sub" / "clip.mov");
  arrive(folder_ / ".hidden.mov");
  arrive(folder_ / "notes.txt");
  arrive(folder_ / "Draft 1.mov");
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AFolderThatIsNoneLeavesTheOthersAlone) {
  const fs::path second = root_ / "second";
  fs::create_directory(second);
  auto watcher = makeWatcher({root_.write("file", ""), folder_, second});
  watcher.start();
  const auto one = arrive(second / "clip.mov");
  reports_.waitFor(1);
  const auto two = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(FolderWatcherTest, AFolderThatIsMissingAtTheStartIsFoundByTheTimer) {
  fs::remove(folder_);
  watcher_.start();
  fs::create_directory(folder_);
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  const auto two = arrive(folder_ / "two.mov");  // by now its events come
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(FolderWatcherTest, AFolderThatVanishesAndReturnsKeepsWhatWasKnownOfIt) {
  const auto date = now() - 1h;
  arrive(folder_ / "known.mov", date);
  watcher_.start();
  fs::remove_all(folder_);
  clock_->tick();
  fs::create_directory(folder_);
  arrive(folder_ / "known.mov", date);
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(FolderWatcherTest, ARenamedFolderIsLeftAndTheOneInItsPlaceTaken) {
  watcher_.start();
  fs::rename(folder_, root_ / "away");
  arrive(root_ / "away" / "gone.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  fs::create_directory(folder_);
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(FolderWatcherTest, ALinkInTheFoldersPlaceIsFollowedUnderTheFoldersName) {
  const TemporaryFolder target;
  arrive(target / "one.mov");
  watcher_.start();
  fs::remove(folder_);
  fs::create_directory_symlink(target.path(), folder_);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{folder_ / "one.mov"});
  arrive(target / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{folder_ / "one.mov", folder_ / "two.mov"}));
}

TEST_F(FolderWatcherTest, WithoutFolderEventsTheTimerIsEnough) {
  arrive(folder_ / "known.mov");
  {
    const test::NoFolderEvents none;
    ASSERT_THROW(DirectoryEvents(), SystemError);
    watcher_.start();
  }
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, EventsThatTheSystemLostHideNothing) {
  test::Gate gate;
  FolderWatcher watcher(
      {folder_}, {}, 1.5,
      [&](const fs::path& url) {
        gate.pass();
        reports_.add(url);
      },
      clock_);
  const auto one = arrive(folder_ / "one.mov");
  const auto two = arrive(folder_ / "two.mov");
  watcher.start();
  const auto first = arrive(folder_ / "first.mov");
  gate.waitForArrivals(1);  // nobody takes events now
  std::size_t limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  ASSERT_GT(limit, 0u);
  for (std::size_t i = 0; i <= limit; ++i)
    fs::permissions(i % 2 ? one : two, fs::perms::owner_read);
  const auto late = arrive(folder_ / "late.mov");
  gate.open();
  EXPECT_EQ(reports_.waitFor(2), (Paths{first, late}));
}

TEST_F(FolderWatcherTest, TheTimerSleepsForTheDebounce) {
  watcher_.start();
  clock_->tick();
  EXPECT_EQ(clock_->lastSleep(), 1500ms);
}

TEST_F(FolderWatcherTest, ASecondStartChangesNothing) {
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov", now());
  watcher_.start();  // would it look at the folder anew, the clip would count as known
  clock_->tick(2s);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, WhatComesBetweenStopAndStartIsNeverReported) {
  watcher_.start();
  watcher_.stop();
  arrive(folder_ / "between.mov");
  watcher_.start();
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  const auto clip = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
}

TEST_F(FolderWatcherTest, StopIsHarmlessWhereNothingRuns) {
  watcher_.stop();
  watcher_.start();
  watcher_.stop();
  watcher_.stop();
}

TEST_F(FolderWatcherTest, StopWaitsForAReportUnderWay) {
  test::Gate gate;
  FolderWatcher watcher(
      {folder_}, {}, 1.5, [&](const fs::path&) { gate.pass(); }, clock_);
  watcher.start();
  arrive(folder_ / "clip.mov");
  gate.waitForArrivals(1);
  test::WatchedThread stopping([&] { watcher.stop(); });
  stopping.waitUntilItWaits();
  EXPECT_FALSE(stopping.hasEnded());
  gate.open();
  stopping.join();
}

TEST_F(FolderWatcherTest, WithoutThreadsItDoesNotStartAndCanLater) {
  {
    const test::NoMoreThreads none;
    EXPECT_THROW(watcher_.start(), std::system_error);
  }
  arrive(folder_ / "known.mov");
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
}

}  // namespace
}  // namespace tq

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQFrames/WatcherLifecycle.hpp"
#include "TQPlatform/Concurrency/EventLoop.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class WatcherLifecycleTest : public testing::Test {
 protected:
  void runUntil(const std::function<bool()>& reached) {
    while (!reached())
      ASSERT_TRUE(loop.runNext(std::chrono::seconds(60))) << "nothing comes any more";
  }

  void watch(const std::vector<fs::path>& folders) {
    lifecycle.watch(WatcherLifecycle::Wish{.folders = folders, .exclusionGlobs = {"draft*"}});
  }

  /// A clip that was finished long ago.
  void putClip(const std::string& name) {
    const fs::path clip = folder.write("elsewhere", "clip");
    fs::last_write_time(clip, fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::rename(clip, folder / name);
  }

  test::TemporaryFolder folder;
  EventLoop loop;
  std::vector<std::string> reported;
  std::vector<bool> activity;
  WatcherLifecycle lifecycle{loop.executor(), std::make_shared<SystemClock>(),
                             [this](const fs::path& clip) { reported.push_back(clip.filename().string()); },
                             [this] { activity.push_back(lifecycle.isActive()); }};
};

TEST_F(WatcherLifecycleTest, NothingIsWatchedAtFirst) {
  EXPECT_FALSE(lifecycle.isActive());
  lifecycle.watch({});
  EXPECT_THAT(activity, IsEmpty()) << "no watcher before, none now: nothing to tell";
}

TEST_F(WatcherLifecycleTest, ReportsOnTheOwnersThreadWhatComesIn) {
  watch({folder.path()});
  runUntil([&] { return lifecycle.isActive(); });
  putClip("draft.mov");
  putClip("a.mov");
  runUntil([&] { return !reported.empty(); });
  EXPECT_THAT(reported, ElementsAre("a.mov"));
}

TEST_F(WatcherLifecycleTest, AnotherWishReplacesTheWatcher) {
  watch({folder.path()});
  runUntil([&] { return lifecycle.isActive(); });
  watch({folder / "other"});
  EXPECT_FALSE(lifecycle.isActive());
  runUntil([&] { return lifecycle.isActive(); });
  EXPECT_THAT(activity, ElementsAre(true, false, true));
}

TEST_F(WatcherLifecycleTest, QuickWishesReplaceEachOther) {
  for (int change = 0; change < 20; ++change)
    watch({folder / std::to_string(change)});
  watch({folder.path()});
  runUntil([&] { return lifecycle.isActive(); });
  EXPECT_THAT(activity, ElementsAre(true)) << "only the last one was ever said to run";
  putClip("a.mov");
  runUntil([&] { return !reported.empty(); });
  EXPECT_THAT(reported, ElementsAre("a.mov"));
}

TEST_F(WatcherLifecycleTest, NoWishEndsTheWatching) {
  watch({folder.path()});
  runUntil([&] { return lifecycle.isActive(); });
  lifecycle.watch({});
  EXPECT_FALSE(lifecycle.isActive());
}

}  // namespace
}  // namespace tq

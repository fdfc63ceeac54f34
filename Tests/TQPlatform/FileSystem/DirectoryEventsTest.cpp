#include <fstream>
#include <gtest/gtest.h>
#include <optional>

#include "Support/FolderEventFaults.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Unprivileged.hpp"
#include "Support/WatchedThread.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/DirectoryEvents.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;

/// A watched folder beside a sentinel: what happens in the sentinel tells that all events before it have come.
class DirectoryEventsTest : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(folder_);
    ASSERT_TRUE(events_.watch(sentinel_.path()));
  }

  /// The changes since the last call. Ends when the sentinel's own has come.
  DirectoryChanges changes() {
    fs::create_directory(sentinel_ / std::to_string(++signs_));  // one event, unlike a file that is opened and closed
    DirectoryChanges all;
    while (!all.folders.contains(sentinel_.path())) {
      auto some = events_.wait({});
      all.folders.merge(some.folders);
      all.overflowed |= some.overflowed;
    }
    all.folders.erase(sentinel_.path());
    return all;
  }

  /// Makes so many events in the folder.
  void changeAttributes(std::size_t count) {
    const auto one = root_.write("folder/one.mov", "");
    const auto two = root_.write("folder/two.mov", "");
    for (std::size_t i = 0; i < count; ++i)  // in turns, since equal events in a row count once
      fs::permissions(i % 2 ? one : two, fs::perms::owner_read);
  }

  DirectoryChanges in(std::set<fs::path> folders) const { return {.folders = std::move(folders), .overflowed = false}; }

  const TemporaryFolder root_;
  const TemporaryFolder sentinel_;
  const fs::path folder_ = root_ / "folder";
  DirectoryEvents events_;
  int signs_ = 0;
};

TEST_F(DirectoryEventsTest, NamesTheFolderInWhichAnEntryCame) {
  const TemporaryFolder other;
  ASSERT_TRUE(events_.watch(folder_));
  ASSERT_TRUE(events_.watch(other.path()));
  root_.write("folder/clip.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
  other.write("clip.mov", "");
  root_.write("folder/two.mov", "");
  EXPECT_EQ(changes(), in({folder_, other.path()}));
}

TEST_F(DirectoryEventsTest, TellsOfMovesRemovalsAndChangedAttributes) {
  const auto clip = root_.write("clip.mov", "");
  ASSERT_TRUE(events_.watch(folder_));
  fs::rename(clip, folder_ / "clip.mov");
  EXPECT_EQ(changes(), in({folder_}));
  fs::permissions(folder_ / "clip.mov", fs::perms::owner_read);
  EXPECT_EQ(changes(), in({folder_}));
  fs::rename(folder_ / "clip.mov", clip);
  EXPECT_EQ(changes(), in({folder_}));
  fs::rename(clip, folder_ / "clip.mov");
  changes();
  fs::remove(folder_ / "clip.mov");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, AnOpenFileSpeaksWhenItIsClosed) {
  ASSERT_TRUE(events_.watch(folder_));
  std::ofstream file(folder_ / "clip.mov");
  changes();
  file << "some" << std::flush;
  EXPECT_EQ(changes(), in({}));
  file.close();
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, SaysNothingOfSubFolders) {
  fs::create_directory(folder_ / "sub");
  ASSERT_TRUE(events_.watch(folder_));
  root_.write("folder/sub/clip.mov", "");
  EXPECT_EQ(changes(), in({}));
}

TEST_F(DirectoryEventsTest, OnlyFoldersCanBeWatched) {
  EXPECT_FALSE(events_.watch(root_ / "missing"));
  EXPECT_FALSE(events_.watch(root_.write("file", "")));
  EXPECT_FALSE(events_.watch(""));
}

TEST_F(DirectoryEventsTest, AFolderThatVanishesIsToldAndMayReturn) {
  ASSERT_TRUE(events_.watch(folder_));
  fs::remove(folder_);
  EXPECT_EQ(changes(), in({folder_}));
  EXPECT_FALSE(events_.watch(folder_));
  fs::create_directory(folder_);
  EXPECT_EQ(changes(), in({}));
  ASSERT_TRUE(events_.watch(folder_));
  root_.write("folder/clip.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, AReturnBeforeTheRemovalWasSeenIsNotLost) {
  ASSERT_TRUE(events_.watch(folder_));
  fs::remove(folder_);
  fs::create_directory(folder_);
  ASSERT_TRUE(events_.watch(folder_));
  changes();
  root_.write("folder/clip.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, AFolderRenamedAwayIsToldAndWatchedUntilItsNameIsLookedAtAgain) {
  ASSERT_TRUE(events_.watch(folder_));
  fs::rename(folder_, root_ / "moved");
  EXPECT_EQ(changes(), in({folder_}));
  EXPECT_FALSE(events_.watch(folder_));
  root_.write("moved/clip.mov", "");
  EXPECT_EQ(changes(), in({}));
}

TEST_F(DirectoryEventsTest, ALinkInPlaceOfTheFolderIsFollowedAndTheOldFolderLeft) {
  const TemporaryFolder target;
  ASSERT_TRUE(events_.watch(folder_));
  fs::rename(folder_, root_ / "moved");
  fs::create_directory_symlink(target.path(), folder_);
  ASSERT_TRUE(events_.watch(folder_));
  changes();
  root_.write("moved/clip.mov", "");
  EXPECT_EQ(changes(), in({}));
  target.write("clip.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, TwoPathsToOneFolderAreBothNamedAndLetGoOneByOne) {
  const fs::path link = root_ / "link";
  fs::create_directory_symlink(folder_, link);
  ASSERT_TRUE(events_.watch(folder_));
  ASSERT_TRUE(events_.watch(link));
  root_.write("folder/clip.mov", "");
  EXPECT_EQ(changes(), in({folder_, link}));
  fs::remove(link);
  EXPECT_FALSE(events_.watch(link));
  root_.write("folder/two.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, LostEventsAreTold) {
  ASSERT_TRUE(events_.watch(folder_));
  std::size_t limit = 0;
  std::ifstream("/proc/sys/fs/inotify/max_queued_events") >> limit;
  ASSERT_GT(limit, 0u);
  changeAttributes(limit + 1);
  DirectoryChanges all;
  while (!all.overflowed)
    all = events_.wait({});
  EXPECT_FALSE(changes().overflowed);
  root_.write("folder/three.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
}

TEST_F(DirectoryEventsTest, AStopEndsTheWaitAndTheNextWaitIsWhole) {
  ASSERT_TRUE(events_.watch(folder_));
  std::stop_source stop;
  bool cancelled = false;
  test::WatchedThread waiting([&] {
    try {
      events_.wait(stop.get_token());
    } catch (const Cancelled&) {
      cancelled = true;
    }
  });
  waiting.waitUntilItWaits();
  EXPECT_FALSE(waiting.hasEnded());
  stop.request_stop();
  waiting.join();
  EXPECT_TRUE(cancelled);
  EXPECT_THROW(events_.wait(stop.get_token()), Cancelled);

  std::optional<DirectoryChanges> told;
  test::WatchedThread next([&] { told = events_.wait({}); });
  next.waitUntilItWaits();  // it would never sleep if the old wake-up were still there
  root_.write("folder/clip.mov", "");
  next.join();
  EXPECT_EQ(told, in({folder_}));
}

TEST(DirectoryEventsOfAScript, AnUnmountIsToldAndTheFolderMayBeWatchedAgain) {
  test::ScriptedFolderEvents system;
  DirectoryEvents events;
  const DirectoryChanges inFolder{.folders = {"/mounted"}, .overflowed = false};
  for (int i = 0; i < 2; ++i) {
    ASSERT_TRUE(events.watch("/mounted"));
    system.unmount("/mounted");
    EXPECT_EQ(events.wait({}), inFolder);
  }
}

TEST(DirectoryEventsOfAScript, LostEventsAreToldWithoutAFolder) {
  test::ScriptedFolderEvents system;
  DirectoryEvents events;
  ASSERT_TRUE(events.watch("/folder"));
  system.overflow();
  EXPECT_EQ(events.wait({}), (DirectoryChanges{.folders = {}, .overflowed = true}));
}

TEST_F(DirectoryEventsTest, NoFurtherFolderIsWatchedBeyondTheLimitAndThoseBeforeStay) {
  ASSERT_TRUE(events_.watch(folder_));
  const TemporaryFolder other;
  {
    const test::NoMoreFolderWatches limit;
    EXPECT_FALSE(events_.watch(other.path()));
  }
  root_.write("folder/clip.mov", "");
  EXPECT_EQ(changes(), in({folder_}));
  EXPECT_TRUE(events_.watch(other.path()));
}

TEST_F(DirectoryEventsTest, AFolderThatMayNotBeReadCannotBeWatchedUntilItMay) {
  const test::Unprivileged user;
  fs::permissions(folder_, fs::perms::owner_write | fs::perms::owner_exec);
  EXPECT_FALSE(events_.watch(folder_));
  fs::permissions(folder_, fs::perms::owner_all);
  EXPECT_TRUE(events_.watch(folder_));
}

TEST_F(DirectoryEventsTest, ThousandsOfEventsAtOnceAreAllTaken) {
  ASSERT_TRUE(events_.watch(folder_));
  changeAttributes(5000);
  EXPECT_EQ(changes(), in({folder_}));
  EXPECT_EQ(changes(), in({}));
}

TEST_F(DirectoryEventsTest, TheSystemsRefusalIsThrown) {
  const test::NoFolderEvents none;
  EXPECT_THROW(DirectoryEvents(), SystemError);
}

}  // namespace
}  // namespace tq

#include <fstream>
#include <sys/stat.h>

#include "FolderWatcherFixture.hpp"
#include "Support/FolderEventFaults.hpp"
#include "Support/FolderListings.hpp"
#include "Support/NoMoreThreads.hpp"
#include "Support/WatchedThread.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

/// Makes everything old that has the date of its making.
constexpr auto aCentury = 24h * 365 * 100;

/// What becomes of the files in a watched folder.
class FolderWatcherTest : public test::FolderWatcherFixture {};

TEST_F(FolderWatcherTest, FilesThatAreThereAtTheStartAreNotReported) {
  arrive(folder_ / "old.mov");
  arrive(folder_ / "just now.mov", now());
  watcher_.start();
  clock_->tick();
  clock_->tick(10s);
  EXPECT_EQ(reports_.all(), Paths{});
}

TEST_F(FolderWatcherTest, FilesThatAreThereAtTheStartAreNotReportedWhenTheClockPassesTheirDate) {
  const auto clip = arrive(folder_ / "of tomorrow.mov", now() + 24h);
  watcher_.start();
  clock_->tick(48h);
  EXPECT_EQ(reports_.all(), Paths{});
  setDate(clip, now() - 1h);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClipOfAnOldDateIsReportedAsItIsMovedIn) {
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClipThatIsWrittenInPiecesIsReportedOnceADebounceAfterTheLast) {
  watcher_.start();
  const fs::path clip = folder_ / "clip.mov";
  std::ofstream file(clip);
  for (int piece = 0; piece < 10; ++piece) {
    file << "piece" << std::flush;
    setDate(clip, now());
    clock_->tick(1s);
  }
  file.close();
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

TEST_F(FolderWatcherTest, AClipThatIsReplacedIsReportedUnlessItsDateAndSizeAreTheSame) {
  const auto date = now() - 1h;
  const auto clip = arrive(folder_ / "clip.mov", date, "take 1");
  watcher_.start();
  arrive(clip, date, "take 2");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  arrive(clip, date - 1h, "take 3");
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
  arrive(clip, date - 1h, "a longer take 4");
  EXPECT_EQ(reports_.waitFor(2), (Paths{clip, clip}));
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

TEST_F(FolderWatcherTest, AClipFromTheFutureIsReportedWhenItsDateHasPassed) {
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov", now() + 1h);
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{});
  clock_->tick(1500ms);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClipMustBeOldEnoughWhenAListingBegins) {
  const test::ScriptedFolderEvents silent;
  test::FolderListings listings(folder_);
  FolderWatcher watcher = makeWatcher({folder_});
  watcher.start();
  const auto clip = arrive(folder_ / "clip.mov", now());
  listings.beforeEach([this] { clock_->advance(1h); });
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, AClockThatIsSetBackReportsNothingAgainAndDelaysWhatItTakesForNew) {
  watcher_.start();
  const auto known = arrive(folder_ / "known.mov", now() - 2s);
  EXPECT_EQ(reports_.waitFor(1), Paths{known});
  clock_->tick(-1h);
  const auto ahead = arrive(folder_ / "ahead.mov", now() + 1h - 2s);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{known});
  const auto usual = arrive(folder_ / "usual.mov", now() - 2s);
  EXPECT_EQ(reports_.waitFor(2), (Paths{known, usual}));
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), (Paths{known, usual, ahead}));
}

TEST_F(FolderWatcherTest, OnlyVisibleRegularClipsDirectlyInTheFolderCount) {
  watcher_.start();
  const auto outside = arrive(root_ / "outside.mov");
  fs::create_directories(folder_ / "sub");
  fs::create_directories(folder_ / "folder.mov");
  fs::create_symlink(outside, folder_ / "link.mov");
  fs::create_symlink(root_ / "nowhere", folder_ / "dangling.mov");
  fs::create_symlink(folder_ / "circle.mov", folder_ / "circle.mov");
  ASSERT_EQ(::mkfifo((folder_ / "pipe.mp4").c_str(), 0600), 0);
  ASSERT_EQ(::mknod((folder_ / "socket.mp4").c_str(), S_IFSOCK | 0600, 0), 0);
  arrive(folder_ / "sub" / "clip.mov");
  arrive(folder_ / ".hidden.mov");
  arrive(folder_ / "notes.txt");
  arrive(folder_ / "Draft 1.mov");
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick(aCentury);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, WhereAListingDoesNotTellKindsTheFilesAreAsked) {
  test::FolderListings listings(folder_);
  listings.hideKinds();
  watcher_.start();
  const auto clip = arrive(folder_ / "clip.mov");
  fs::create_directories(folder_ / "folder.mov");
  fs::create_symlink(clip, folder_ / "link.mov");
  clock_->tick(aCentury);
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(FolderWatcherTest, NamesOfAnyBytesAreReportedUnchanged) {
  watcher_.start();
  Paths clips;
  for (const char* const name : {"line\nbreak.mov", "\xFF\xFE.mp4", "-rf.mkv", "\xF0\x9F\x8E\xAC.webm", "a\\b.mov"}) {
    clips.push_back(arrive(folder_ / name));
    reports_.waitFor(clips.size());
  }
  EXPECT_EQ(reports_.all(), clips);
}

TEST_F(FolderWatcherTest, OnlyFilesWithTheNameOfAClipThatIsNotExcludedAreLookedAt) {
  for (const char* const name : {"a.mov", "b.mp4", "draft.mov", "a.description.json", ".hidden.mov"})
    arrive(folder_ / name);
  fs::create_directory(folder_ / "folder.mov");
  const test::FolderListings listings(folder_);
  watcher_.start();
  EXPECT_EQ(listings.looks(), 2);
  clock_->tick();
  EXPECT_EQ(listings.looks(), 4);
}

TEST_F(FolderWatcherTest, TheTimerSleepsForTheDebounce) {
  watcher_.start();
  clock_->tick();
  EXPECT_EQ(clock_->lastSleep(), 1500ms);
}

TEST_F(FolderWatcherTest, ABurstOfEventsIsOneListing) {
  const auto clock = std::make_shared<test::TimerClock>(test::TimerClock::ShortSleeps::wait);
  const auto source = arrive(root_ / "source.mov");
  const test::FolderListings listings(folder_);
  FolderWatcher watcher({folder_}, {}, 1.5, report(), clock);
  watcher.start();
  const int before = listings.entries();
  constexpr int count = 10'000;
  for (int i = 0; i < count; ++i)
    fs::create_hard_link(source, folder_ / (std::to_string(i) + ".mov"));
  clock->settling.waitForArrivals(1);
  EXPECT_EQ(listings.entries(), before);
  clock->settling.admitOne();
  reports_.waitFor(count);
  EXPECT_EQ(listings.entries(), before + count);
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

TEST_F(FolderWatcherTest, DroppingARunningWatcherStopsIt) {
  auto watcher = std::make_unique<FolderWatcher>(Paths{folder_}, std::vector<std::string>{}, 1.5, report(), clock_);
  watcher->start();
  arrive(folder_ / "one.mov");
  reports_.waitFor(1);
  watcher.reset();
  arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.all().size(), 1u);
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

/// A folder whose listings stand still before every entry until the test goes on. No events set any off.
class SlowListing : public test::FolderWatcherFixture {
 protected:
  SlowListing() {
    for (int i = 0; i < 10; ++i)
      arrive(folder_ / (std::to_string(i) + ".mov"));
  }

  /// Has `stop` wait for a listing that stands still by now, then lets both go on.
  template <class Stop>
  void stopDuringTheListing(Stop stop) {
    gate_.waitForArrivals(1);
    test::WatchedThread stopping(stop);
    stopping.waitUntilItWaits();
    EXPECT_FALSE(stopping.hasEnded());
    gate_.open();
    stopping.join();
  }

  /// Has a running watcher list the folder, which holds a new clip.
  void beginListing() {
    arrive(folder_ / "new.mov");
    listings_.beforeEach([this] { gate_.pass(); });
    clock_->fire();
  }

  test::ScriptedFolderEvents events_;
  test::Gate gate_;
  test::FolderListings listings_{folder_};
};

TEST_F(SlowListing, AStopBreaksItOff) {
  FolderWatcher watcher = makeWatcher({folder_});
  watcher.start();
  const int before = listings_.entries();
  beginListing();
  stopDuringTheListing([&] { watcher.stop(); });
  EXPECT_EQ(listings_.entries(), before + 1);
  EXPECT_EQ(reports_.all(), Paths{});
}

TEST_F(SlowListing, AStopBreaksOffTheOneOfAStart) {
  FolderWatcher watcher = makeWatcher({folder_});
  listings_.beforeEach([this] { gate_.pass(); });
  test::WatchedThread starting([&] { watcher.start(); });
  stopDuringTheListing([&] { watcher.stop(); });
  starting.join();
  EXPECT_EQ(listings_.entries(), 1);

  arrive(folder_ / "between.mov");
  watcher.start();
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(SlowListing, DroppingTheWatcherBreaksItOff) {
  auto watcher = std::make_unique<FolderWatcher>(Paths{folder_}, std::vector<std::string>{}, 1.5, report(), clock_);
  watcher->start();
  const int before = listings_.entries();
  beginListing();
  stopDuringTheListing([&] { watcher.reset(); });
  EXPECT_EQ(listings_.entries(), before + 1);
  EXPECT_EQ(reports_.all(), Paths{});
}

}  // namespace
}  // namespace tq

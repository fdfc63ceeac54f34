#include "FolderWatcherFixture.hpp"
#include "Support/FolderEventFaults.hpp"
#include "Support/FolderListings.hpp"
#include "Support/Unprivileged.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::TemporaryFolder;

/// What becomes of the watched folders themselves. Most tests end with a clip that an event has reported without the
/// timer: the watcher hears of the folder again.
class WatchedFolders : public test::FolderWatcherFixture {};

TEST_F(WatchedFolders, OneThatIsNoFolderLeavesTheOthersAlone) {
  const fs::path second = root_ / "second";
  fs::create_directory(second);
  auto watcher = makeWatcher({root_.write("file", ""), folder_, second});
  watcher.start();
  const auto one = arrive(second / "clip.mov");
  reports_.waitFor(1);
  const auto two = arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(WatchedFolders, OneThatIsMissingAtTheStartIsFoundByTheTimer) {
  fs::remove(folder_);
  watcher_.start();
  fs::create_directory(folder_);
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(WatchedFolders, OneThatVanishesAndReturnsKeepsWhatWasKnownOfIt) {
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

TEST_F(WatchedFolders, OneThatIsRenamedIsLeftAndTheOneInItsPlaceTaken) {
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

// As with a file system that is unmounted and mounted again: meanwhile the empty folder below it shows.
TEST_F(WatchedFolders, OneThatGivesPlaceToAnEmptyOneAndReturnsKeepsWhatWasKnownOfIt) {
  arrive(folder_ / "known.mov");
  watcher_.start();
  fs::rename(folder_, root_ / "unmounted");
  fs::create_directory(folder_);
  clock_->tick();
  const auto below = arrive(folder_ / "below.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{below});
  fs::remove_all(folder_);
  arrive(root_ / "unmounted" / "one.mov");
  fs::rename(root_ / "unmounted", folder_);
  clock_->tick();
  EXPECT_EQ(reports_.all(), (Paths{below, folder_ / "one.mov"}));
  arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(3), (Paths{below, folder_ / "one.mov", folder_ / "two.mov"}));
}

TEST_F(WatchedFolders, ALinkInTheFoldersPlaceIsFollowedUnderTheFoldersName) {
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

TEST_F(WatchedFolders, ALinkThatIsTurnedToAnotherFolderLeavesTheFirst) {
  const fs::path other = root_ / "other";
  const fs::path link = root_ / "link";
  fs::create_directory(other);
  fs::create_directory_symlink(folder_, link);
  const auto date = now() - 1h;
  arrive(folder_ / "same.mov", date);
  arrive(other / "same.mov", date);
  arrive(other / "one.mov", date);
  auto watcher = makeWatcher({link});
  watcher.start();
  fs::create_directory_symlink(other, root_ / "new link");
  fs::rename(root_ / "new link", link);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{link / "one.mov"});
  arrive(folder_ / "gone.mov");
  arrive(other / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{link / "one.mov", link / "two.mov"}));
}

TEST_F(WatchedFolders, ALinkWhoseTargetIsGoneIsAnEmptyFolderUntilItIsBack) {
  const fs::path link = root_ / "link";
  fs::create_directory_symlink(folder_, link);
  arrive(folder_ / "known.mov");
  auto watcher = makeWatcher({link});
  watcher.start();
  fs::rename(folder_, root_ / "away");
  clock_->tick();
  fs::rename(root_ / "away", folder_);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  arrive(folder_ / "one.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{link / "one.mov"});
}

TEST_F(WatchedFolders, OneThatMayNotBeReadIsTakenWhenItMay) {
  const test::Unprivileged user;
  fs::permissions(folder_, fs::perms::owner_write | fs::perms::owner_exec);
  watcher_.start();
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  fs::permissions(folder_, fs::perms::owner_all);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(WatchedFolders, OneWhoseFilesMayNotBeLookedAtIsTakenWhenTheyMay) {
  const test::Unprivileged user;
  watcher_.start();
  const auto one = arrive(folder_ / "one.mov", now());
  fs::permissions(folder_, fs::perms::owner_read);
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{});
  fs::permissions(folder_, fs::perms::owner_all);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
}

TEST_F(WatchedFolders, AListingThatBreaksOffHoldsNothing) {
  test::FolderListings listings(folder_);
  watcher_.start();
  listings.setBroken(true);
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{});
  listings.setBroken(false);
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(WatchedFolders, WithoutFolderEventsTheTimerIsEnough) {
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

// As on a network: the folder can be watched, but the system does not learn what others do in it.
TEST_F(WatchedFolders, WhereNoEventsComeTheTimerIsEnough) {
  const test::ScriptedFolderEvents silent;
  auto watcher = makeWatcher({folder_});
  watcher.start();
  const auto clip = arrive(folder_ / "clip.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{clip});
}

TEST_F(WatchedFolders, BeyondTheLimitOfWatchesTheTimerIsEnoughUntilThereAreSomeAgain) {
  std::optional<test::NoMoreFolderWatches> limit(std::in_place);
  watcher_.start();
  const auto one = arrive(folder_ / "one.mov");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{one});
  limit.reset();
  clock_->tick();
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

TEST_F(WatchedFolders, EventsThatTheSystemLostHideNothing) {
  test::ScriptedFolderEvents events;
  auto watcher = makeWatcher({folder_});
  watcher.start();
  const auto clip = arrive(folder_ / "clip.mov");
  events.overflow();
  EXPECT_EQ(reports_.waitFor(1), Paths{clip});
}

TEST_F(WatchedFolders, OneThatIsListedTwiceReportsAClipOnceUnderTheFirstSpelling) {
  const fs::path link = root_ / "link";
  fs::create_directory_symlink(folder_, link);
  const test::FolderListings listings(folder_);
  auto watcher = makeWatcher({link, folder_, folder_ / "", folder_ / "." / ".." / "in", folder_});
  watcher.start();
  arrive(folder_ / "clip.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{link / "clip.mov"});
  clock_->tick(1h);
  EXPECT_EQ(reports_.all(), Paths{link / "clip.mov"});
  EXPECT_EQ(listings.entries(), 0);  // under its other spellings the folder is opened but not listed
}

TEST_F(WatchedFolders, ASpellingThatGoesAndComesReportsNothingAgain) {
  const fs::path link = root_ / "link";
  fs::create_directory_symlink(folder_, link);
  arrive(folder_ / "known.mov");
  auto watcher = makeWatcher({link, folder_});
  watcher.start();
  arrive(folder_ / "one.mov");
  EXPECT_EQ(reports_.waitFor(1), Paths{link / "one.mov"});

  fs::rename(link, root_ / "unlinked");
  clock_->tick();
  EXPECT_EQ(reports_.all(), Paths{link / "one.mov"});
  const auto two = arrive(folder_ / "two.mov");
  EXPECT_EQ(reports_.waitFor(2), (Paths{link / "one.mov", two}));

  fs::rename(root_ / "unlinked", link);
  clock_->tick();
  EXPECT_EQ(reports_.all(), (Paths{link / "one.mov", two}));
  setDate(two, now() - 30min);
  clock_->tick();
  EXPECT_EQ(reports_.all(), (Paths{link / "one.mov", two, link / "two.mov"}));
}

TEST_F(WatchedFolders, AClipOfTheSameNameInAnotherFolderIsAnother) {
  const fs::path second = root_ / "second";
  fs::create_directory(second);
  const auto date = now() - 1h;
  auto watcher = makeWatcher({folder_, second});
  watcher.start();
  const auto one = arrive(folder_ / "clip.mov", date);
  reports_.waitFor(1);
  const auto two = arrive(second / "clip.mov", date);
  EXPECT_EQ(reports_.waitFor(2), (Paths{one, two}));
}

}  // namespace
}  // namespace tq

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "TarquelApp/Desktop/FakeDesktop.hpp"
#include "TarquelApp/Desktop/LauncherEntry.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::clearedInDock;
using test::Dock;
using test::FakeService;
using test::noBus;
using test::PrivateBus;
using test::shownInDock;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::chrono::milliseconds atOnce(0);
constexpr std::chrono::hours never(1);

class LauncherEntryTest : public testing::Test {
 protected:
  PrivateBus bus;
  Dock dock{bus};
  QDBusConnection connection = bus.connect();
};

TEST_F(LauncherEntryTest, TellsTheCountAndTheProgress) {
  LauncherEntry entry(connection);
  entry.show(3, 0.25);
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(3, 0.25)));
}

TEST_F(LauncherEntryTest, NoJobsClearBadgeAndBar) {
  LauncherEntry entry(connection, atOnce);
  entry.show(1, 0.5);
  turnUntil([&] { return dock.updates.size() == 1; });
  entry.show(0, 1);
  turnUntil([&] { return dock.updates.size() == 2; });
  EXPECT_EQ(dock.updates.back(), clearedInDock());
}

TEST_F(LauncherEntryTest, SaysNothingBeforeThereIsAJob) {
  {
    LauncherEntry entry(connection);
    entry.show(0, 0);
    entry.show(-1, 1);
  }
  dock.settle(connection);
  EXPECT_THAT(dock.updates, IsEmpty());
}

TEST_F(LauncherEntryTest, WhatLooksTheSameIsNotToldAgain) {
  LauncherEntry entry(connection, atOnce);
  entry.show(2, 0.501);
  entry.show(2, 0.502);
  turnUntil([&] { return dock.updates.size() == 1; });
  entry.show(2, 0.5);
  entry.show(2, 0.51);
  turnUntil([&] { return dock.updates.size() == 2; });
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(2, 0.5), shownInDock(2, 0.51)));
}

TEST_F(LauncherEntryTest, OfQuickChangesTheFirstGoesOutAtOnceAndThenTheLast) {
  LauncherEntry entry(connection, std::chrono::milliseconds(1));
  for (int percent = 1; percent <= 100; ++percent)
    entry.show(1, percent / 100.0);
  turnUntil([&] { return dock.updates.size() == 2; });
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(1, 0.01), shownInDock(1, 1)));
}

TEST_F(LauncherEntryTest, NothingMoreGoesOutBeforeTheIntervalIsOver) {
  LauncherEntry entry(connection, never);
  for (int percent = 1; percent <= 100; ++percent) {
    entry.show(1, percent / 100.0);
    QCoreApplication::processEvents();
  }
  dock.settle(connection);
  EXPECT_THAT(dock.updates, SizeIs(1));
}

TEST_F(LauncherEntryTest, AChangeThatIsTakenBackWithinTheIntervalIsNotTold) {
  LauncherEntry entry(connection, std::chrono::milliseconds(1));
  entry.show(1, 0.1);
  entry.show(2, 0.1);
  entry.show(1, 0.1);
  bool isOver = false;
  QTimer::singleShot(2, Qt::PreciseTimer, &entry, [&] { isOver = true; });  // due after the entry's own
  turnUntil([&] { return isOver; });
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(1, 0.1)));
}

TEST_F(LauncherEntryTest, ProgressOutsideItsRangeIsBroughtIntoIt) {
  for (const double progress : {-1.0, 7.0, std::numeric_limits<double>::quiet_NaN()}) {
    LauncherEntry entry(connection);
    entry.show(1, progress);
  }
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(1, 0), clearedInDock(), shownInDock(1, 1), clearedInDock(),
                                        shownInDock(1, 0), clearedInDock()));
}

TEST_F(LauncherEntryTest, ItsEndClearsWhatIsShownEvenWithinTheInterval) {
  {
    LauncherEntry entry(connection, never);
    entry.show(4, 0.5);
  }
  dock.settle(connection);
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(4, 0.5), clearedInDock()));
}

TEST_F(LauncherEntryTest, ALauncherThatComesLaterIsTold) {
  LauncherEntry entry(connection);
  entry.show(1, 0.5);
  PrivateBus::flush(connection);  // the bus knows by now that this connection waits for the launcher
  FakeService launcher(bus, QStringLiteral("com.canonical.Unity"));
  turnUntil([&] { return dock.updates.size() == 2; });
  EXPECT_THAT(dock.updates, ElementsAre(shownInDock(1, 0.5), shownInDock(1, 0.5)));
}

TEST_F(LauncherEntryTest, ABusThatEndsIsNoHarm) {
  LauncherEntry entry(connection, atOnce);
  entry.show(1, 0.5);
  bus.stop();
  turnUntil([&] { return !connection.isConnected(); });
  entry.show(2, 0.5);
}

TEST(LauncherEntryWithoutABus, IsSilent) {
  LauncherEntry entry(noBus(), atOnce);
  entry.show(1, 0.5);
  entry.show(0, 0);
}

}  // namespace
}  // namespace tq

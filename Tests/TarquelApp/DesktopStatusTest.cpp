// What the desktop around the window is told of the queue.

#include <QTimer>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Desktop/FakeDesktop.hpp"
#include "TarquelApp/DesktopStatus.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using test::clearedInDock;
using test::expectSoon;
using test::shownInDock;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using enum JobStatus;

class DesktopStatusTest : public testing::Test, protected test::WindowHarness {
 protected:
  ~DesktopStatusTest() override { status.reset(); }

  void launchWith(int jobsAtOnce) {
    engine.settings.maxConcurrentJobs = jobsAtOnce;
    save(engine.settings);
    launch();
    status = std::make_unique<DesktopStatus>(state(), launcher, inhibitor);
    for (QTimer* pause : status->findChildren<QTimer*>()) {
      EXPECT_EQ(pause->intervalAsDuration(), 250ms);
      pause->setInterval(1ms);  // so that the tests are not that long
    }
  }

  /// What the dock shows in the end.
  void expectShown(const test::DockUpdate& update) {
    expectSoon([&] { return dock.updates.empty() ? clearedInDock() : dock.updates.back(); }, update);
  }

  void expectAwake() {
    expectSoon([&] { return !login.callsOf(QStringLiteral("Inhibit")).empty() && login.isHeld(); }, true);
  }

  test::PrivateBus session, system;
  QDBusConnection toSession = session.connect();
  test::Dock dock{session};
  test::LoginManager login{system};
  LauncherEntry launcher{toSession, 0ms};
  SuspendInhibitor inhibitor{toSession, system.connect()};
  std::unique_ptr<DesktopStatus> status;
};

TEST_F(DesktopStatusTest, WithoutAJobThereIsNothingToTell) {
  launchWith(1);
  dock.settle(toSession);
  EXPECT_THAT(dock.updates, IsEmpty());
  EXPECT_THAT(login.callsOf(QStringLiteral("Inhibit")), IsEmpty());
}

TEST_F(DesktopStatusTest, ARunningJobIsCountedAndKeepsTheMachineAwakeUntilItEnds) {
  launchWith(1);
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectShown(shownInDock(1, 0.2));
  expectAwake();
  clips.letGo("a.mov");
  turnUntilStatus("a.mov", done);
  expectShown(clearedInDock());
  login.turnUntilReleased();
}

TEST_F(DesktopStatusTest, WaitingJobsCountAsWell) {
  launchWith(1);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  drop("b.mov");
  drop("c.mov");
  expectShown(shownInDock(3, 0));
}

TEST_F(DesktopStatusTest, AJobThatHasEndedIsWholeInTheBarHoweverItEnded) {
  launchWith(1);
  drop("done.mov", done);
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  clips.hold("cancelled.mov", calling);
  drop("cancelled.mov", calling);
  state().cancel(qtText(job("cancelled.mov").id.text()));
  turnUntilStatus("cancelled.mov", cancelled);
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectShown(shownInDock(1, 0.8));
}

TEST_F(DesktopStatusTest, WhatIsClearedNoLongerCountsInTheBar) {
  launchWith(1);
  drop("done.mov", done);
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectShown(shownInDock(1, 0.6));
  click("clearButton");
  expectShown(shownInDock(1, 0.2));
}

TEST_F(DesktopStatusTest, ARetryIsWorkAgain) {
  launchWith(1);
  clips.fail("a.mov", "no");
  drop("a.mov", failed);
  expectShown(clearedInDock());
  login.turnUntilReleased();
  clips.hold("a.mov", extracting);
  state().retry(state().selectedJobID());
  expectShown(shownInDock(1, 0));
  expectAwake();
}

TEST_F(DesktopStatusTest, AQueueThatWasThereBeforeIsToldAtOnce) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  status = std::make_unique<DesktopStatus>(state(), launcher, inhibitor);
  expectShown(shownInDock(1, 0));
  expectAwake();
}

TEST_F(DesktopStatusTest, ManyChangesAreOneLook) {
  launchWith(1);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectShown(shownInDock(1, 0));
  for (QTimer* pause : status->findChildren<QTimer*>())
    pause->setInterval(1h);
  clips.setProgress("b.mov", 0.5);
  clips.hold("b.mov", extracting);
  clips.letGo("a.mov");
  turnUntilStatus("a.mov", done);
  expectShown(clearedInDock());  // a count is told at once
  drop("b.mov", extracting);
  expectSoon([&] { return job("b.mov").progress; }, testing::DoubleEq(0.2));
  dock.settle(toSession);
  EXPECT_THAT(dock.updates, Not(Contains(shownInDock(1, 0.6)))) << "progress waits for the next look";
}

}  // namespace
}  // namespace tq

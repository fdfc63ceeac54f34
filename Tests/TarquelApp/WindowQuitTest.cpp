// The quit guard, and the alert over what went wrong.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::expectSoon;
using test::turnUntil;
using enum JobStatus;

constexpr const char* stopsEarly =
    "Quitting now will stop it early; it will resume from the start next time you open tarquel.";

class WindowQuit : public testing::Test, protected test::WindowHarness {
 protected:
  void askToQuit() { press(Qt::Key_Q, Qt::ControlModifier); }

  void expectQuestion(const std::string& message) {
    expectSoon([&] { return text("alertMessage"); }, message);
    EXPECT_EQ(text("alertInformation"), stopsEarly);
    EXPECT_EQ(terminations, 0);
  }

  void launchWithRunning(int count) {
    launch();
    for (int number = 1; number <= count; ++number) {
      const std::string clip = std::to_string(number) + ".mov";
      clips.hold(clip, calling);
      drop(clip, calling);
    }
  }

  void expectAllRunning() {
    for (const JobList::Row& job : state().jobList().rows())
      EXPECT_EQ(job->status, calling);
  }
};

TEST_F(WindowQuit, WithoutAJobItEndsAtOnce) {
  launch();
  askToQuit();
  EXPECT_EQ(terminations, 1);
  EXPECT_FALSE(shows("alertMessage"));
}

TEST_F(WindowQuit, JobsThatHaveEndedDoNotCount) {
  launch();
  drop("done.mov", done);
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  askToQuit();
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowQuit, OneRunningJobIsAskedAbout) {
  launchWithRunning(1);
  askToQuit();
  expectQuestion("1 job is still processing.");
}

TEST_F(WindowQuit, TwoRunningJobsAreCountedInTheSameWords) {
  launchWithRunning(2);
  askToQuit();
  expectQuestion("2 jobs are still processing.");
}

TEST_F(WindowQuit, WaitingJobsDoNotCount) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launchWithRunning(1);
  drop("waiting.mov");
  drop("waiting too.mov");
  askToQuit();
  expectQuestion("1 job is still processing.");
}

TEST_F(WindowQuit, WithOnlyWaitingJobsItEndsAtOnce) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  test::Gate stubborn;
  engine.answer = [&](const VisionRequest&, const std::stop_token&) -> VisionResponse {
    stubborn.pass();  // whatever is cancelled meanwhile, so that its slot is not free for another
    throw std::runtime_error("too late");
  };
  launch();
  drop("a.mov", calling);
  state().cancel(qtText(job("a.mov").id.text()));
  turnUntilStatus("a.mov", cancelled);
  drop("b.mov");
  askToQuit();
  EXPECT_EQ(job("b.mov").status, queued);
  EXPECT_EQ(terminations, 1);
  EXPECT_FALSE(shows("alertMessage"));
  stubborn.open();
  quit();
}

TEST_F(WindowQuit, EveryStatusOfARunCounts) {
  engine.settings.maxConcurrentJobs = 3;
  save(engine.settings);
  launch();
  clips.hold("extracting.mov", extracting);
  clips.hold("calling.mov", calling);
  clips.hold("writing.mov", writing);
  drop("extracting.mov", extracting);
  drop("calling.mov", calling);
  drop("writing.mov", writing);
  askToQuit();
  expectQuestion("3 jobs are still processing.");
}

TEST_F(WindowQuit, TheButtonsAreCancelAndThenQuit) {
  launchWithRunning(1);
  askToQuit();
  turnUntil([&] { return shows("alertMessage"); });
  QQuickItem& cancel = labelled("Cancel");
  QQuickItem& quit = labelled("Quit");
  EXPECT_LT(cancel.mapToScene({}).x(), quit.mapToScene({}).x());
  EXPECT_TRUE(cancel.hasActiveFocus()) << "a hasty Return does no harm";
}

TEST_F(WindowQuit, CancelLeavesAllJobsRunning) {
  launchWithRunning(2);
  askToQuit();
  turnUntil([&] { return shows("alertMessage"); });
  click(labelled("Cancel"));
  expectSoon([&] { return shows("alertMessage"); }, false);
  EXPECT_EQ(terminations, 0);
  expectAllRunning();
}

TEST_F(WindowQuit, EscapeAndReturnMeanCancel) {
  launchWithRunning(1);
  for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return}) {
    askToQuit();
    turnUntil([&] { return shows("alertMessage") && labelled("Cancel").hasActiveFocus(); });
    press(key);
    expectSoon([&] { return shows("alertMessage"); }, false);
    EXPECT_EQ(terminations, 0);
    expectAllRunning();
  }
}

TEST_F(WindowQuit, QuitEndsTheProgram) {
  launchWithRunning(1);
  askToQuit();
  turnUntil([&] { return shows("alertMessage"); });
  click(labelled("Quit"));
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowQuit, ClosingTheWindowAsksAsWell) {
  launchWithRunning(1);
  window().close();
  expectQuestion("1 job is still processing.");
  EXPECT_TRUE(window().isVisible());
}

TEST_F(WindowQuit, ClosingTheWindowOfAnIdleProgramEndsIt) {
  launch();
  window().close();
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowQuit, AskedAgainItCountsAnew) {
  launchWithRunning(2);
  askToQuit();
  expectQuestion("2 jobs are still processing.");
  press(Qt::Key_Escape);
  expectSoon([&] { return shows("alertMessage"); }, false);
  clips.letGo("1.mov");
  turnUntilStatus("1.mov", done);
  askToQuit();
  expectQuestion("1 job is still processing.");
}

TEST_F(WindowQuit, BeforeTheWindowThereIsNobodyToAsk) {
  delegate.terminate();
  EXPECT_EQ(terminations, 1);
}

class WindowError : public WindowQuit {};

TEST_F(WindowError, IsTheTitleOfAnAlertThatOKClears) {
  launch();
  state().setLastError(QStringLiteral("Could not save the queue: No space left on device"));
  expectSoon([&] { return text("alertMessage"); }, "Could not save the queue: No space left on device");
  EXPECT_FALSE(shows("alertInformation"));
  EXPECT_FALSE(shows("acceptButton")) << "there is one button";
  click(labelled("OK"));
  EXPECT_EQ(state().lastError(), QString());
  expectSoon([&] { return shows("alertMessage"); }, false);
}

TEST_F(WindowError, EscapeIsOK) {
  launch();
  state().setLastError(QStringLiteral("It broke."));
  turnUntil([&] { return shows("alertMessage"); });
  press(Qt::Key_Escape);
  expectSoon([&] { return shows("alertMessage"); }, false);
  EXPECT_EQ(state().lastError(), QString());
}

TEST_F(WindowError, ANewOneTakesThePlaceOfTheOld) {
  launch();
  state().setLastError(QStringLiteral("One."));
  expectSoon([&] { return text("alertMessage"); }, "One.");
  state().setLastError(QStringLiteral("Two."));
  expectSoon([&] { return text("alertMessage"); }, "Two.");
  click(labelled("OK"));
  expectSoon([&] { return shows("alertMessage"); }, false);
  state().setLastError(QStringLiteral("Two."));
  expectSoon([&] { return text("alertMessage"); }, "Two.");
}

TEST_F(WindowError, WithoutATextItSaysThatSomethingWentWrong) {
  launch();
  for (QObject* alert : window().findChildren<QObject*>())
    if (alert->property("rejectText") == QStringLiteral("OK"))
      QMetaObject::invokeMethod(alert, "ask", Q_ARG(QString, QString()), Q_ARG(QString, QString()));
  expectSoon([&] { return text("alertMessage"); }, "Something went wrong");
}

TEST_F(WindowError, GoesWhenTheErrorIsGone) {
  launch();
  state().setLastError(QStringLiteral("It broke."));
  turnUntil([&] { return shows("alertMessage"); });
  state().setLastError({});
  expectSoon([&] { return shows("alertMessage"); }, false);
}

TEST_F(WindowError, AQueueThatCannotBeSavedIsTold) {
  launch();
  fs::create_directories(paths.queueURL() / "in the way");
  drop("a.mov", done);
  expectSoon([&] { return text("alertMessage"); }, testing::StartsWith("Could not save the queue: "));
  EXPECT_EQ(job("a.mov").status, done) << "it goes on in memory";
}

TEST_F(WindowError, TextIsNotTakenForMarkup) {
  launch();
  state().setLastError(QStringLiteral("<b>a.mov</b> & <img src='file:///x'>"));
  expectSoon([&] { return text("alertMessage"); }, "<b>a.mov</b> & <img src='file:///x'>");
  EXPECT_EQ(item("alertMessage").property("textFormat").toInt(), Qt::PlainText);
}

}  // namespace
}  // namespace tq

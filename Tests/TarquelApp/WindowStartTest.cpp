// How the program starts: the first run, files from other programs, and the queue of the last time.

#include <QAbstractItemModelTester>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQPlatform/JSON/JSON.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::expectSoon;
using test::turnUntil;
using testing::ElementsAre;
using testing::SizeIs;
using enum JobStatus;

class WindowStart : public testing::Test, protected test::WindowHarness {
 protected:
  std::vector<std::pair<std::string, std::string>> rows() {
    std::vector<std::pair<std::string, std::string>> shown;
    for (const QQuickItem* found : items("queueRow"))
      shown.emplace_back(found->property("fileName").toString().toStdString(),
                         found->property("statusLabel").toString().toStdString());
    return shown;
  }

  /// The queue's file as it is: names of clips and raw statuses.
  std::vector<std::pair<std::string, std::string>> rowsOnDisk() const {
    std::vector<std::pair<std::string, std::string>> kept;
    const JSONValue queue = parseJSON(test::contentOf(paths.queueURL()));
    for (const JSONValue& entry : *queue.asArray())
      kept.emplace_back(fs::path(*entry.find("sourcePath")->asString()).filename(), *entry.find("status")->asString());
    return kept;
  }

  std::string title() { return window().title().toStdString(); }
};

TEST_F(WindowStart, TheWindowHasATitleAndASmallestSize) {
  launch();
  EXPECT_EQ(title(), "tarquel");
  EXPECT_EQ(window().minimumSize(), QSize(980, 600));
  EXPECT_GE(window().width(), 980);
  EXPECT_GE(window().height(), 600);
}

TEST_F(WindowStart, TheTitleCountsWhatHasNotEnded) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  expectSoon([&] { return title(); }, "(1) tarquel");
  drop("b.mov");
  expectSoon([&] { return title(); }, "(2) tarquel");
  clips.letGo("a.mov");
  turnUntilStatus("b.mov", done);
  expectSoon([&] { return title(); }, "tarquel");
}

TEST_F(WindowStart, FilesThatComeBeforeTheWindowAreLost) {
  const QUrl early = clip("early.mov");
  delegate.openURLs({early});
  launch();
  drop("late.mov", done);
  EXPECT_THAT(rows(), SizeIs(testing::Le(1U)));
  EXPECT_EQ(state().jobList().size(), 1U);
}

TEST_F(WindowStart, FilesOfAnotherProgramAreTakenIn) {
  launch();
  clip("folder/b.mov");
  delegate.openURLs(
      {clip("a.mov"), qtFileURL(engine.folder / "folder"), QUrl(QStringLiteral("https://localhost/c.mov"))});
  turnUntilCount(2);
  turnUntilStatus("a.mov", done);
  turnUntilStatus("b.mov", done);
}

TEST_F(WindowStart, FilesThatComeAfterTheWindowHasGoneAreLost) {
  launch();
  quit();
  delegate.openURLs({clip("late.mov")});
  EXPECT_FALSE(delegate.activeJobCount);
}

TEST_F(WindowStart, AFirstRunWithoutAModelIsWelcomed) {
  save({});
  launch();
  EXPECT_TRUE(shows("useMockButton"));
  EXPECT_EQ(text("useMockButton"), "Use the built-in mock");
  EXPECT_FALSE(shows("sidebar"));
  EXPECT_FALSE(shows("modePicker"));
}

TEST_F(WindowStart, TheMockLeadsToTheQueueAndIsRemembered) {
  save({});
  launch();
  click("useMockButton");
  expectSoon([&] { return shows("dropZone") && shows("modePicker"); }, true);
  EXPECT_FALSE(shows("useMockButton"));
  EXPECT_EQ(SettingsStore(paths).load().providerId, "mock");
  drop("a.mov", done);
  EXPECT_EQ(job("a.mov").result->engine.provider, "mock");
  launch();
  EXPECT_FALSE(shows("useMockButton"));
}

TEST_F(WindowStart, AReadyModelNeedsNoWelcome) {
  launch();
  EXPECT_FALSE(shows("useMockButton"));
  EXPECT_TRUE(shows("dropZone"));
}

TEST_F(WindowStart, ARestartShowsTheFailureAndRunsWhatWasInterrupted) {
  const auto stored = [&](const std::string& name, JobStatus status) {
    return std::make_shared<const Job>(Job{.id = UUID::random(),
                                           .sourceURL = engine.folder.write(name, "clip"),
                                           .status = status,
                                           .error = status == failed ? std::optional("It broke.") : std::nullopt});
  };
  QueueStore{paths.queueURL()}.save(
      std::vector{stored("done.mov", done), stored("failed.mov", failed), stored("writing.mov", writing)});
  launch();
  expectSoon([&] { return rows(); },
             ElementsAre(testing::Pair("writing.mov", "Done"), testing::Pair("failed.mov", "Failed")));
  EXPECT_EQ(state().selectedJobID(), qtText(job("failed.mov").id.text())) << "the first of the queue";
  expectSoon([&] { return text("failureText"); }, "It broke.");
  EXPECT_FALSE(shows("framesStrip"));
  EXPECT_FALSE(shows("rawResponseTitle"));
  EXPECT_EQ(job("failed.mov").status, failed) << "it waits for its user";
}

TEST_F(WindowStart, WhatACrashInterruptedRunsAgain) {
  launch();
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  drop("done.mov", done);
  clips.hold("writing.mov", writing);
  drop("writing.mov", writing);
  expectSoon([&] { return rowsOnDisk(); },
             ElementsAre(testing::Pair("failed.mov", "failed"), testing::Pair("writing.mov", "writing")));
  const std::string queue = test::contentOf(paths.queueURL());
  quit();
  // As it was when the machine went down.
  engine.folder.write(fs::relative(paths.queueURL(), engine.folder.path()).native(), queue);
  launch();
  turnUntilCount(2);
  turnUntilStatus("writing.mov", done);
  EXPECT_EQ(job("failed.mov").status, failed);
}

TEST_F(WindowStart, ARestartDuringWritingMakesASecondSidecarWhereNamesAreCounted) {
  engine.settings.output.conflictPolicy = ConflictPolicy::suffix;
  save(engine.settings);
  launch();
  drop("a.mov", done);
  quit();
  const Job interrupted{.id = UUID::random(), .sourceURL = engine.folder / "a.mov", .status = writing};
  QueueStore{paths.queueURL()}.save(std::vector{std::make_shared<const Job>(interrupted)});
  launch();
  turnUntilCount(1);
  turnUntilStatus("a.mov", done);
  EXPECT_TRUE(fs::exists(engine.folder / "a.description.md"));
  EXPECT_TRUE(fs::exists(engine.folder / "a.description (2).md"));
}

TEST_F(WindowStart, FinishedWorkLeavesTheQueueWithARestart) {
  launch();
  drop("a.mov", done);
  launch();
  EXPECT_TRUE(shows("dropZone"));
  EXPECT_TRUE(state().jobList().empty());
  EXPECT_TRUE(fs::exists(engine.folder / "a.description.md"));
}

TEST_F(WindowStart, TheModelKeepsItsPromisesAllTheWay) {
  launch();
  const QAbstractItemModelTester tester(state().jobs(), QAbstractItemModelTester::FailureReportingMode::Fatal);
  clips.fail("b.mov", "no");
  letGo({clip("a.mov"), clip("b.mov"), clip("c.mov")});
  turnUntil([&] { return state().jobList().size() == 3 && state().activeJobCount() == 0; });
  state().retryAll();
  state().removeCompleted();
  turnUntil([&] { return state().activeJobCount() == 0; });
  EXPECT_EQ(state().jobList().size(), 1U);
}

}  // namespace
}  // namespace tq

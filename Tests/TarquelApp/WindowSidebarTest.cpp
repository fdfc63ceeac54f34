// The sidebar: the queue in its sections, and what a row tells of its job.

#include <QFontInfo>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class WindowSidebar : public testing::Test, protected test::WindowHarness {
 protected:
  /// Titles and names of clips as they stand below each other.
  std::vector<std::string> lines() {
    std::vector<QQuickItem*> found = items("rowName");
    const auto titles = items("sectionTitle");
    found.insert(found.end(), titles.begin(), titles.end());
    std::ranges::sort(found, {}, [](const QQuickItem* item) { return item->mapToScene({}).y(); });
    std::vector<std::string> texts;
    for (const QQuickItem* item : found)
      texts.push_back((item->objectName() == QLatin1String("sectionTitle") ? "# " : "") + textIn(*item));
    return texts;
  }

  static std::string textIn(const QQuickItem& item, const char* property = "text") {
    return item.property(property).toString().toStdString();
  }

  /// A text of one part of the row that shows a clip; "nothing" when the row does not show that part.
  std::string partOf(const std::string& clip, const char* part, const char* property = "text") {
    const QQuickItem& whole = row(clip);
    for (const QQuickItem* found : items(part))
      if (whole.isAncestorOf(found)) return textIn(*found, property);
    return "nothing";
  }

  /// Comes from elsewhere: a pointer that rests tells nothing new.
  void pointAt(const QQuickItem& item) {
    QTest::mouseMove(&window(), QPoint(1, 1));
    QTest::mouseMove(&window(), item.mapToScene({item.width() / 2, item.height() / 2}).toPoint());
  }

  /// What a part of a row says of itself under the pointer.
  std::string helpOf(const std::string& clip, const char* part) {
    pointAt(inside(row(clip), part));
    return textIn(row(clip), "help");
  }

  void allowAtOnce(int jobs) {
    engine.settings.maxConcurrentJobs = jobs;
    save(engine.settings);
  }
};

TEST_F(WindowSidebar, AnEmptyQueueHasNoSectionsAndTheDropZoneBesideIt) {
  launch();
  EXPECT_THAT(lines(), IsEmpty());
  EXPECT_TRUE(shows("dropZone"));
  EXPECT_FALSE(shows("jobDetail"));
}

TEST_F(WindowSidebar, JobsStandInTheirSectionsInOrderOfEntry) {
  allowAtOnce(4);
  launch();
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  drop("done.mov", done);
  clips.hold("calling.mov", calling);
  drop("calling.mov", calling);
  clips.hold("extracting.mov", extracting);
  drop("extracting.mov", extracting);
  clips.hold("cancelled.mov", extracting);
  drop("cancelled.mov", extracting);
  state().cancel(qtText(job("cancelled.mov").id.text()));
  turnUntilStatus("cancelled.mov", cancelled);
  clips.hold("another.mov", calling);
  drop("another.mov", calling);
  clips.hold("writing.mov", writing);
  drop("writing.mov", writing);
  drop("waiting.mov");
  drop("waiting too.mov");
  expectSoon([&] { return lines(); }, ElementsAre("# Running", "calling.mov", "extracting.mov", "another.mov",
                                                  "writing.mov", "# Queued", "waiting.mov", "waiting too.mov", "# Done",
                                                  "done.mov", "# Failed", "failed.mov", "cancelled.mov"));
}

TEST_F(WindowSidebar, ASectionComesAndGoesWithItsJobs) {
  allowAtOnce(1);
  launch();
  clips.hold("a.mov", calling);
  clips.hold("b.mov", calling);
  drop("a.mov", calling);
  drop("b.mov");
  expectSoon([&] { return lines(); }, ElementsAre("# Running", "a.mov", "# Queued", "b.mov"));
  clips.letGo("a.mov");
  expectSoon([&] { return lines(); }, ElementsAre("# Running", "b.mov", "# Done", "a.mov"));
  clips.fail("b.mov", "no");
  clips.letGo("b.mov");
  expectSoon([&] { return lines(); }, ElementsAre("# Done", "a.mov", "# Failed", "b.mov"));
  click("clearButton");
  expectSoon([&] { return lines(); }, ElementsAre("# Failed", "b.mov"));
}

TEST_F(WindowSidebar, EveryStatusHasAnIconAndALabelOfItsOwn) {
  allowAtOnce(3);
  launch();
  clips.hold("extracting.mov", extracting);
  clips.hold("calling.mov", calling);
  clips.hold("writing.mov", writing);
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  drop("done.mov", done);
  drop("calling.mov", calling);
  drop("extracting.mov", extracting);
  clips.hold("cancelled.mov", calling);
  drop("cancelled.mov", calling);
  state().cancel(qtText(job("cancelled.mov").id.text()));
  turnUntilStatus("cancelled.mov", cancelled);
  drop("writing.mov", writing);
  drop("queued.mov");
  struct Look {
    const char *clip, *icon, *label;
  };
  const std::vector<Look> looks{
      {"queued.mov", "clock", "Queued"},
      {"extracting.mov", "film", "Extracting frames"},
      {"calling.mov", "bolt", "Calling vision model"},
      {"writing.mov", "save", "Writing sidecar"},
      {"done.mov", "done", "Done"},
      {"failed.mov", "failed", "Failed"},
      {"cancelled.mov", "cancelled", "Cancelled"},
  };
  for (const Look& look : looks) {
    expectSoon([&] { return partOf(look.clip, "rowStatus", "label"); }, look.label);
    EXPECT_EQ(partOf(look.clip, "rowStatus", "name"), look.icon);
  }
}

TEST_F(WindowSidebar, ANameStandsOnOneLineCutInTheMiddle) {
  launch();
  drop(std::string(200, 'x') + ".mov", done);
  turnUntil([&] { return shows("rowName"); });
  const QQuickItem& name = item("rowName");
  EXPECT_EQ(name.property("elide").toInt(), Qt::ElideMiddle);
  EXPECT_EQ(name.property("lineCount").toInt(), 1);
  EXPECT_TRUE(name.property("truncated").toBool());
}

TEST_F(WindowSidebar, ATextThatIsCutSaysTheWholeOfItselfUnderThePointer) {
  launch();
  const std::string longName = std::string(200, 'x') + ".mov";
  const std::string longError(200, 'e');
  clips.fail(longName, longError);
  drop(longName, failed);
  drop("a.mov", done);
  expectSoon([&] { return partOf(longName, "rowSecondLine"); }, longError);
  expectSoon([&] { return helpOf(longName, "rowName"); }, longName);
  expectSoon([&] { return helpOf(longName, "rowSecondLine"); }, longError);
  expectSoon([&] { return helpOf("a.mov", "rowName"); }, "");  // all of it is seen
  EXPECT_EQ(textIn(row(longName), "help"), "") << "the pointer has gone";
}

TEST_F(WindowSidebar, WhatAPartSaysIsShownAboveItAndGoesWithThePointer) {
  launch();
  drop("a.mov", done);
  expectSoon([&] { return helpOf("a.mov", "rowStatus"); }, "Done");
  const auto shown = [&]() -> const QObject* {
    for (const QObject* help : row("a.mov").findChildren<QObject*>(QStringLiteral("rowHelp")))
      if (help->property("opened").toBool()) return help;
    return nullptr;
  };
  turnUntil([&] { return shown() != nullptr; });
  EXPECT_EQ(shown()->property("text").toString(), QStringLiteral("Done"));
  EXPECT_EQ(shown()->property("parent").value<QQuickItem*>(), &inside(row("a.mov"), "rowStatus"));
  pointAt(item("queueList"));
  turnUntil([&] { return shown() == nullptr; });
}

TEST_F(WindowSidebar, TheStatusUnderThePointerSaysWhatItIsNow) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  expectSoon([&] { return helpOf("a.mov", "rowStatus"); }, "Calling vision model");
  clips.letGo("a.mov");
  expectSoon([&] { return textIn(row("a.mov"), "help"); }, "Done");
}

TEST_F(WindowSidebar, RowsAreMadeWhileTheyAreBroughtIn) {
  launch();
  std::size_t made = 0;
  QObject::connect(state().jobs(), &JobListModel::countChanged, &window(), [&] { made = items("rowName").size(); });
  drop("a.mov");
  EXPECT_EQ(made, 1U) << "and not for the next picture, with whatever else has come by then";
}

TEST_F(WindowSidebar, APillNamesTheModel) {
  launch();
  drop("a.mov", done);
  expectSoon([&] { return partOf("a.mov", "rowModel"); }, "configured-model");
  expectSoon([&] { return helpOf("a.mov", "rowModel"); }, "configured-model");
  EXPECT_EQ(QFontInfo(inside(row("a.mov"), "rowModel").property("font").value<QFont>()).pixelSize(), 10);
}

TEST_F(WindowSidebar, AJobWithAnEmptyModelHasNoPill) {
  engine.settings.modelId = "";
  save(engine.settings);
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  turnUntil([&] { return shows("rowName"); });
  ASSERT_EQ(job("a.mov").engineSnapshot.value().modelId, "");
  EXPECT_EQ(partOf("a.mov", "rowModel"), "nothing");
}

TEST_F(WindowSidebar, AJobAtWorkShowsItsProgressAndNothingElse) {
  launch();
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectSoon([&] { return inside(row("a.mov"), "rowProgress").property("value").toDouble(); }, testing::DoubleEq(0.2));
  EXPECT_EQ(inside(row("a.mov"), "rowProgress").property("to").toDouble(), 1);
  EXPECT_EQ(inside(row("a.mov"), "rowProgress").property("from").toDouble(), 0);
  EXPECT_EQ(partOf("a.mov", "rowSecondLine"), "nothing");
}

TEST_F(WindowSidebar, AllThreeStatusesOfARunShowABar) {
  allowAtOnce(3);
  launch();
  for (const auto& [clip, status] :
       {std::pair("calling.mov", calling), {"extracting.mov", extracting}, {"writing.mov", writing}}) {
    clips.hold(clip, status);
    drop(clip, status);
    expectSoon([&] { return inside(row(clip), "rowProgress").property("visible").toBool(); }, true);
  }
}

TEST_F(WindowSidebar, AWaitingJobHasNoSecondLine) {
  allowAtOnce(1);
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  drop("b.mov");
  expectSoon([&] { return partOf("b.mov", "rowName"); }, "b.mov");
  EXPECT_EQ(partOf("b.mov", "rowProgress"), "nothing");
  EXPECT_EQ(partOf("b.mov", "rowSecondLine"), "nothing");
}

TEST_F(WindowSidebar, AFailedJobShowsItsErrorInRed) {
  launch();
  clips.fail("a.mov", "The model is ill.");
  drop("a.mov", failed);
  expectSoon([&] { return partOf("a.mov", "rowSecondLine"); }, "The model is ill.");
  const auto colour = inside(row("a.mov"), "rowSecondLine").property("color").value<QColor>();
  EXPECT_TRUE(colour.red() > 150 && colour.green() < 100 && colour.blue() < 100) << textOf(colour.name());
  EXPECT_EQ(partOf("a.mov", "rowProgress"), "nothing");
}

TEST_F(WindowSidebar, ACancelledJobShowsThatInRed) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  state().cancel(qtText(job("a.mov").id.text()));
  expectSoon([&] { return partOf("a.mov", "rowSecondLine"); }, "Cancelled");
  EXPECT_GT(inside(row("a.mov"), "rowSecondLine").property("color").value<QColor>().red(), 150);
}

TEST_F(WindowSidebar, ADoneJobShowsItsOneLineSummary) {
  launch();
  clips.answer("a.mov", R"({"schema_version": "1.0", "summary": "Long.", "shots": [{"shot_type": "wide"}],
                            "global": {"themes": ["harbour"], "overall_summary_one_line": "A quiet harbour."}})");
  drop("a.mov", done);
  expectSoon([&] { return partOf("a.mov", "rowSecondLine"); }, "A quiet harbour.");
  drop("b.mov", done);
  expectSoon([&] { return partOf("b.mov", "rowName"); }, "b.mov");
  EXPECT_EQ(partOf("b.mov", "rowSecondLine"), "nothing") << "its answer has none";
}

TEST_F(WindowSidebar, ARefusedClipIsDoneWithARedBadge) {
  launch();
  clips.answer("a.mov", R"({"schema_version": "1.0", "summary": "No.", "shots": [{"shot_type": "wide"}],
                            "global": {"themes": ["harbour"]}, "flagged": true, "review_flag": true})");
  drop("a.mov", done);
  expectSoon([&] { return lines(); }, ElementsAre("# Done", "a.mov"));
  EXPECT_EQ(partOf("a.mov", "rowBadge", "name"), "failed");
  expectSoon([&] { return helpOf("a.mov", "rowBadge"); }, "Model refused");
  EXPECT_GT(inside(row("a.mov"), "rowBadge").property("color").value<QColor>().red(), 150);
}

TEST_F(WindowSidebar, AClipForReviewHasAnOrangeBadgeThatTellsWhy) {
  launch();
  const auto answer = [](const std::string& reason) {
    return R"({"schema_version": "1.0", "summary": "Dark.", "shots": [{"shot_type": "wide"}],
               "global": {"themes": ["night"]}, "review_flag": true)" +
           reason + "}";
  };
  clips.answer("a.mov", answer(R"(, "review_reason": "lens cap")"));
  clips.answer("b.mov", answer(R"(, "review_reason": "")"));
  clips.answer("c.mov", answer(""));
  for (const char* clip : {"a.mov", "b.mov", "c.mov"})
    drop(clip, done);
  expectSoon([&] { return partOf("c.mov", "rowBadge", "name"); }, "review");
  expectSoon([&] { return helpOf("a.mov", "rowBadge"); }, "Needs review — lens cap");
  expectSoon([&] { return helpOf("b.mov", "rowBadge"); }, "Needs review");
  expectSoon([&] { return helpOf("c.mov", "rowBadge"); }, "Needs review");
  const auto colour = inside(row("a.mov"), "rowBadge").property("color").value<QColor>();
  EXPECT_TRUE(colour.red() > 150 && colour.green() > 60 && colour.blue() < 100) << textOf(colour.name());
}

TEST_F(WindowSidebar, AClipWithoutFlagsHasNoBadge) {
  launch();
  drop("a.mov", done);
  expectSoon([&] { return partOf("a.mov", "rowStatus", "label"); }, "Done");
  EXPECT_EQ(partOf("a.mov", "rowBadge", "name"), "nothing");
}

}  // namespace
}  // namespace tq

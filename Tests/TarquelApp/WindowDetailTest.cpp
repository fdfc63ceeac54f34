// The pane of the selected job.

#include <QTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>

#include "TQCore/RecordJSON.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::expectSoon;
using test::turnUntil;
using testing::Contains;
using testing::ElementsAre;
using testing::Pair;
using testing::StartsWith;
using enum JobStatus;

class WindowDetail : public testing::Test, protected test::WindowHarness {
 protected:
  /// The texts of the source tab, as label and value.
  std::vector<std::pair<std::string, std::string>> sourceRows() {
    const auto labels = texts("sourceLabel");
    const auto values = texts("sourceValue");
    if (labels.size() != values.size()) throw std::runtime_error("labels without values");
    std::vector<std::pair<std::string, std::string>> rows;
    for (std::size_t row = 0; row < labels.size(); ++row)
      rows.emplace_back(labels[row], values[row]);
    return rows;
  }

  /// A bar or an indicator of that name: absent, or what it says.
  std::string progress(const char* objectName) {
    if (!shows(objectName)) return "absent";
    const QQuickItem& bar = item(objectName);
    return bar.property("indeterminate").toBool() ? "indeterminate" : bar.property("value").toString().toStdString();
  }

  void showTab(const std::string& tab) { click(labelled(tab)); }

  /// Time stands still until the test moves it on.
  void stopTheClock() { engine.stages.clock = engine.clock; }

  void cancel(const std::string& clip) {
    state().cancel(qtText(job(clip).id.text()));
    turnUntilStatus(clip, cancelled);
  }
};

TEST_F(WindowDetail, TheHeaderNamesTheClipAndItsStatus) {
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectSoon([&] { return text("detailName"); }, "a.mov");
  EXPECT_EQ(item("detailName").property("lineCount").toInt(), 1);
  const auto status = [&] { return text("detailStatus", "label"); };
  expectSoon(status, "Extracting frames");
  clips.hold("a.mov", calling);
  expectSoon(status, "Calling vision model");
  clips.letGo("a.mov");
  expectSoon(status, "Done");
}

TEST_F(WindowDetail, TheStatusHasTheColourAndTheIconThatItHasInTheSidebar) {
  launch();
  clips.fail("a.mov", "no");
  drop("a.mov", failed);
  expectSoon([&] { return text("detailStatus", "label"); }, "Failed");
  expectSoon([&] { return text("rowStatus", "name"); }, "failed");
  EXPECT_EQ(text("detailStatusIcon", "name"), "failed");
  EXPECT_EQ(text("detailStatus", "tint"), text("rowStatus", "color"));
}

TEST_F(WindowDetail, TheSubtitleTellsTheEngineThatTheJobWasMadeWith) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  const EngineSnapshot engineOfJob = job("a.mov").engineSnapshot.value();
  expectSoon([&] { return text("engineSubtitle"); },
             engineOfJob.providerDisplay + " · configured-model · standard · adaptive");
  EXPECT_TRUE(item("engineSubtitle").property("selectByMouse").toBool());
}

TEST_F(WindowDetail, AJobWithoutAnEngineHasNoSubtitle) {
  const Job old{.id = UUID::random(), .sourceURL = engine.folder / "a.mov", .status = failed, .error = "It broke."};
  QueueStore{paths.queueURL()}.save(std::vector{std::make_shared<const Job>(old)});
  launch();
  expectSoon([&] { return text("detailName"); }, "a.mov");
  EXPECT_FALSE(shows("engineSubtitle"));
}

TEST_F(WindowDetail, TheHeaderShowsProgressOnlyWhileTheJobWorks) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectSoon([&] { return progress("detailProgress"); }, "0.2");
  EXPECT_EQ(item("detailProgress").property("to").toDouble(), 1);

  clips.hold("b.mov", calling);
  drop("b.mov");
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectSoon([&] { return progress("detailProgress"); }, "absent");
  clips.letGo("a.mov");
  turnUntilStatus("b.mov", calling);
  expectSoon([&] { return progress("detailProgress"); }, "indeterminate");
  clips.letGo("b.mov");
  turnUntilStatus("b.mov", done);
  expectSoon([&] { return progress("detailProgress"); }, "absent");

  clips.hold("c.mov", writing);
  drop("c.mov", writing);
  state().setSelectedJobID(qtText(job("c.mov").id.text()));
  expectSoon([&] { return progress("detailProgress"); }, "0.85");
}

TEST_F(WindowDetail, AnErrorStandsInTheHeaderInRed) {
  launch();
  clips.fail("a.mov", "The model is ill.");
  drop("a.mov", failed);
  expectSoon([&] { return text("detailError"); }, "The model is ill.");
  EXPECT_GT(item("detailError").property("color").value<QColor>().red(), 150);
  drop("b.mov", done);
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectSoon([&] { return shows("detailError"); }, false);
}

TEST_F(WindowDetail, ACancelledJobSaysSoAsAFailureDoes) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  cancel("a.mov");
  expectSoon([&] { return text("detailError"); }, "Cancelled");
  EXPECT_GT(item("detailError").property("color").value<QColor>().red(), 150);
  EXPECT_EQ(text("failureText"), "Cancelled");
  EXPECT_FALSE(shows("rawResponseTitle"));
}

TEST_F(WindowDetail, AResultIsShownAsMarkdownFirst) {
  launch();
  drop("a.mov", done);
  expectSoon([&] { return text("resultText"); }, MarkdownRenderer::render(*job("a.mov").result));
  EXPECT_EQ(text("resultText"), test::contentOf(engine.folder / "a.description.md"));
  EXPECT_TRUE(labelled("Markdown").property("isCurrent").toBool());
  EXPECT_EQ(item("resultText").property("font").value<QFont>().family(), QStringLiteral("monospace"));
}

TEST_F(WindowDetail, TheJSONTabShowsTheSidecar) {
  launch();
  drop("a.mov", done);
  showTab("JSON");
  expectSoon([&] { return text("resultText"); }, test::contentOf(engine.folder / "a.description.json"));
  EXPECT_EQ(item("resultText").property("font").value<QFont>().family(), QStringLiteral("monospace"));
}

TEST_F(WindowDetail, AResultWithoutAJSONFormSaysSo) {
  engine.stages.extractFrames = [plain = engine.stages.extractFrames](auto&&... arguments) {
    Extraction extraction = plain(arguments...);
    extraction.meta.frameRate = std::numeric_limits<double>::quiet_NaN();
    return extraction;
  };
  engine.stages.writeDescription = [](auto&&...) { return std::vector<fs::path>(); };
  launch();
  drop("a.mov", done);
  showTab("JSON");
  expectSoon([&] { return text("resultText"); }, "<could not render JSON>");
}

TEST_F(WindowDetail, TheSourceTabShowsLabelsAndValues) {
  engine.gps = GPS{.latitude = 38.5, .longitude = -9.25, .altitudeMeters = 12, .placeName = {}};
  launch();
  clips.answer("a.mov", R"({"schema_version": "1.0", "summary": "Dark.", "shots": [{"shot_type": "wide"}],
                            "global": {"themes": ["night"]}, "review_flag": true, "review_reason": "lens cap"})");
  drop("a.mov", done);
  showTab("Source");
  expectSoon([&] { return sourceRows(); },
             ElementsAre(Pair("File", (engine.folder / "a.mov").string()), Pair("Provider", "scripted"),
                         Pair("Model", "answering-model"), Pair("Frames analyzed", "2"), Pair("Sampling", "adaptive"),
                         Pair("Duration", "12.50s"), Pair("Resolution", "640x360"), Pair("Codec", "avc1"),
                         Pair("GPS", "38.500000, -9.250000 (alt 12 m)"), Pair("Status", "Needs review — lens cap")));
  EXPECT_FALSE(shows("resultText"));
}

TEST_F(WindowDetail, TheTabStaysWhenAnotherJobIsSelected) {
  launch();
  drop("a.mov", done);
  drop("b.mov", done);
  showTab("Source");
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectSoon([&] { return sourceRows(); }, Contains(Pair("File", (engine.folder / "b.mov").string())));
}

TEST_F(WindowDetail, AJobWithoutAResultHasThePickerToo) {
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectSoon([&] { return text("waitingLabel"); }, "Extracting frames…");
  for (const char* tab : {"JSON", "Source", "Markdown"}) {
    showTab(tab);
    EXPECT_TRUE(labelled(tab).property("isCurrent").toBool());
    EXPECT_EQ(text("waitingLabel"), "Extracting frames…") << "it changes nothing";
    EXPECT_FALSE(shows("resultText"));
    EXPECT_FALSE(shows("sourceTable"));
  }
}

TEST_F(WindowDetail, AnAnswerThatCannotBeReadIsShownAsItCame) {
  launch();
  clips.answer("a.mov", "I'm sorry, I can't help with that. \xf0\x9f\x98\x80 " + std::string(300, 'x'));
  drop("a.mov", failed);
  const std::string error = job("a.mov").error.value();
  expectSoon([&] { return text("failureText"); }, error);
  EXPECT_EQ(text("detailError"), error);
  EXPECT_EQ(text("failureIcon", "name"), "warning");
  EXPECT_TRUE(item("failureText").property("selectByMouse").toBool());
  EXPECT_EQ(text("rawResponseTitle"), "Raw model response");
  EXPECT_EQ(text("rawResponseNote"),
            "This is what the model actually returned. If it looks truncated, increase max_tokens. If it looks like a "
            "refusal, the model declined to describe this content.");
  EXPECT_EQ(text("rawResponseText"), *job("a.mov").rawResponse);
  EXPECT_EQ(item("rawResponseText").property("font").value<QFont>().family(), QStringLiteral("monospace"));
}

TEST_F(WindowDetail, AFailureBeforeTheAnswerHasNoRawResponse) {
  launch();
  clips.fail("a.mov", "The model is ill.");
  drop("a.mov", failed);
  expectSoon([&] { return text("failureText"); }, "The model is ill.");
  EXPECT_FALSE(shows("rawResponseTitle"));
  EXPECT_FALSE(shows("rawResponseNote"));
  EXPECT_FALSE(shows("rawResponseText"));
}

TEST_F(WindowDetail, AFailureWithoutAMessageIsUnknown) {
  const Job old{.id = UUID::random(), .sourceURL = engine.folder / "a.mov", .status = failed};
  QueueStore{paths.queueURL()}.save(std::vector{std::make_shared<const Job>(old)});
  launch();
  expectSoon([&] { return text("failureText"); }, "Unknown error");
  EXPECT_FALSE(shows("detailError"));
}

TEST_F(WindowDetail, AnExtractionSaysSoWithABar) {
  launch();
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  expectSoon([&] { return text("waitingLabel"); }, "Extracting frames…");
  expectSoon([&] { return progress("waitingProgress"); }, "0.2");
  EXPECT_FALSE(shows("elapsed"));
}

TEST_F(WindowDetail, AWaitingJobSaysSoWithABar) {
  engine.settings.maxConcurrentJobs = 1;
  save(engine.settings);
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  drop("b.mov");
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectSoon([&] { return text("waitingLabel"); }, "Waiting in queue…");
  EXPECT_EQ(progress("waitingProgress"), "0");
  EXPECT_FALSE(shows("waitingSpinner"));
  EXPECT_FALSE(shows("elapsed"));
}

TEST_F(WindowDetail, TheTabsHaveALabelThatIsNotShown) {
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  EXPECT_EQ(text("viewPicker", "label"), "View");
  EXPECT_EQ(item("viewPicker").property("choices").toStringList(),
            QStringList({QStringLiteral("Markdown"), QStringLiteral("JSON"), QStringLiteral("Source")}));
}

TEST_F(WindowDetail, ShowInFinderStandsBesideTheName) {
  launch();
  clips.hold("a b.mov", extracting);
  drop("a b.mov", extracting);
  EXPECT_EQ(text("showInFinderButton"), "Show in Finder");
  click("showInFinderButton");
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "a b.mov"));
}

TEST_F(WindowDetail, TheSourceTabCountsTheFacesWhereSomebodyLookedForThem) {
  engine.stages.writeDescription = [](auto&&...) { return std::vector<fs::path>(); };
  engine.stages.detectFaces = [](auto&&...) { return std::vector<FaceBox>(2); };
  engine.settings.faceDetectionEnabled = true;
  save(engine.settings);
  launch();
  drop("a.mov", done);
  showTab("Source");
  expectSoon([&] { return sourceRows(); }, Contains(Pair("Faces detected", testing::Not("0"))));
}

TEST_F(WindowDetail, WritingSaysSoWithABar) {
  launch();
  clips.hold("a.mov", writing);
  drop("a.mov", writing);
  expectSoon([&] { return text("waitingLabel"); }, "Writing sidecar files…");
  expectSoon([&] { return progress("waitingProgress"); }, "0.85");
  EXPECT_FALSE(shows("waitingSpinner"));
  EXPECT_FALSE(shows("elapsed"));
}

TEST_F(WindowDetail, TheModelIsWaitedForWithASpinnerAndTheTimeSinceTheJobWasMade) {
  stopTheClock();
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  engine.clock->advance(65s);
  clips.hold("a.mov", calling);
  turnUntilStatus("a.mov", calling);
  expectSoon([&] { return text("waitingLabel"); }, "Asking the vision model…");
  EXPECT_EQ(text("elapsed"), "(1:05 elapsed)") << "the time before the call counts";
  EXPECT_TRUE(item("waitingSpinner").property("running").toBool());
  EXPECT_FALSE(shows("waitingProgress"));
}

TEST_F(WindowDetail, TheElapsedTimeIsRefreshedRegularly) {
  stopTheClock();
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  expectSoon([&] { return text("elapsed"); }, "(0:00 elapsed)");
  const auto timers = main().detail().findChildren<QTimer*>();
  ASSERT_EQ(timers.size(), 1);
  EXPECT_EQ(timers.front()->intervalAsDuration(), 1s);
  timers.front()->setInterval(1ms);  // so that the test is not a second long
  engine.clock->advance(59s);
  expectSoon([&] { return text("elapsed"); }, "(0:59 elapsed)");
  engine.clock->advance(61min);
  expectSoon([&] { return text("elapsed"); }, "(61:59 elapsed)");
  clips.letGo("a.mov");
  turnUntilStatus("a.mov", done);
  EXPECT_FALSE(timers.front()->isActive());
}

TEST_F(WindowDetail, TheElapsedTimeIsNeverBelowZero) {
  stopTheClock();
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  engine.clock->advance(-1h);
  drop("b.mov", done);
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  state().setSelectedJobID(qtText(job("a.mov").id.text()));
  expectSoon([&] { return text("elapsed"); }, "(0:00 elapsed)");
}

TEST_F(WindowDetail, AFailureOfAnEarlierStartShowsItsMessageAndNothingThatIsGone) {
  launch();
  clips.answer("a.mov", "no JSON");
  drop("a.mov", failed);
  expectSoon([&] { return shows("framesStrip") && shows("rawResponseText"); }, true);
  const std::string error = job("a.mov").error.value();
  launch();
  expectSoon([&] { return text("detailError"); }, error);
  EXPECT_EQ(text("failureText"), error);
  EXPECT_FALSE(shows("rawResponseTitle"));
  EXPECT_FALSE(shows("framesStrip"));
  expectSoon([&] { return text("rowSecondLine"); }, error);
}

TEST_F(WindowDetail, ASelectionThatNamesNothingAnyMoreShowsTheDropZone) {
  launch();
  drop("a.mov", done);
  expectSoon([&] { return shows("jobDetail"); }, true);
  click("clearButton");
  expectSoon([&] { return shows("dropZone"); }, true);
  EXPECT_FALSE(shows("jobDetail"));
  EXPECT_NE(state().selectedJobID(), QString());
}

TEST_F(WindowDetail, ARetryShowsTheRunAndForgetsTheError) {
  launch();
  clips.fail("a.mov", "The model is ill.");
  drop("a.mov", failed);
  expectSoon([&] { return text("detailError"); }, "The model is ill.");
  clips.hold("a.mov", extracting);
  state().retry(state().selectedJobID());
  turnUntilStatus("a.mov", extracting);
  expectSoon([&] { return text("waitingLabel"); }, "Extracting frames…");
  EXPECT_FALSE(shows("detailError"));
  EXPECT_FALSE(shows("failurePanel"));
}

}  // namespace
}  // namespace tq

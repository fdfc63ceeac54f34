#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>
#include <thread>

#include "Support/PipelineHarness.hpp"
#include "TQCore/TQError.hpp"
#include "Tools/Describe/Runner.hpp"

namespace tq::describe {
namespace {

namespace fs = std::filesystem;
using test::Gate;
using test::namesIn;
using test::PipelineHarness;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class RunnerTest : public testing::Test {
 protected:
  std::unique_ptr<Runner> makeRunner() {
    return std::make_unique<Runner>(harness.settings, harness.secrets, harness.stages, out, std::nullopt,
                                    [this] { return isOutputAbandoned; });
  }

  ExitStatus describe(const std::vector<fs::path>& clips) { return makeRunner()->describe({.clips = clips}); }

  fs::path clip(const std::string& name) { return harness.folder.write(name, "clip"); }

  std::string pathOf(const std::string& name) const { return (harness.folder / name).string(); }

  PipelineHarness harness;
  std::ostringstream out;
  bool isOutputAbandoned = false;
};

TEST_F(RunnerTest, PrintsEveryPathThatWasWritten) {
  EXPECT_EQ(describe({clip("a.mp4")}), allDone);
  EXPECT_EQ(out.str(),
            "started    a.mp4\n"
            "done       a.mp4\n"
            "  wrote    " +
                pathOf("a.description.md") +
                "\n"
                "  wrote    " +
                pathOf("a.description.json") +
                "\n"
                "  wrote    " +
                pathOf("a.description.jpg") +
                "\n"
                "1 of 1 clip described\n");
  EXPECT_THAT(namesIn(harness.folder.path()),
              ElementsAre("a.description.jpg", "a.description.json", "a.description.md", "a.mp4"));
}

TEST_F(RunnerTest, KeepsThePathsOfClipsThatRunTogetherApart) {
  harness.settings.maxConcurrentJobs = 4;
  EXPECT_EQ(describe({clip("a.mp4"), clip("b.mp4"), clip("c.mp4"), clip("d.mp4")}), allDone);
  for (const std::string name : {"a", "b", "c", "d"})
    EXPECT_THAT(out.str(), HasSubstr("done       " + name + ".mp4\n  wrote    " + pathOf(name + ".description.md") +
                                     "\n  wrote    " + pathOf(name + ".description.json") + "\n  wrote    " +
                                     pathOf(name + ".description.jpg") + "\n"));
}

TEST_F(RunnerTest, ASecondRunLeavesOutputsAloneAndIsASuccess) {
  const fs::path file = clip("a.mp4");
  describe({file});
  out.str("");
  EXPECT_EQ(describe({file}), allDone);
  EXPECT_THAT(out.str(), HasSubstr("done       a.mp4: its outputs exist and were left alone\n"));
}

TEST_F(RunnerTest, OneFailureAmongSeveralClipsIsNoSuccess) {
  harness.settings.maxConcurrentJobs = 1;
  harness.stages.extractFrames = [frames = harness.stages.extractFrames](const fs::path& file, const auto&... rest) {
    if (file.filename() == "b.mp4") throw TQError::noFramesExtracted();
    return frames(file, rest...);
  };
  EXPECT_EQ(describe({clip("a.mp4"), clip("b.mp4"), clip("c.mp4")}), notAllDone);
  EXPECT_THAT(out.str(), HasSubstr("failed     b.mp4: No frames could be extracted from the video\n"));
  EXPECT_THAT(out.str(), HasSubstr("done       c.mp4\n"));
  EXPECT_THAT(out.str(), HasSubstr("2 of 3 clips described, 1 failed\n"));
}

TEST_F(RunnerTest, StartsClipsInTheOrderGiven) {
  harness.settings.maxConcurrentJobs = 1;
  EXPECT_EQ(describe({clip("c.mp4"), clip("a.mp4"), clip("b.mp4")}), allDone);
  const std::string text = out.str();
  EXPECT_LT(text.find("started    c.mp4"), text.find("started    a.mp4"));
  EXPECT_LT(text.find("started    a.mp4"), text.find("started    b.mp4"));
}

TEST_F(RunnerTest, AnInterruptCancelsWhatRunsAndWhatWaits) {
  harness.settings.maxConcurrentJobs = 1;
  Gate gate;
  harness.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    return {};
  };
  const auto runner = makeRunner();
  const std::vector<fs::path> clips{clip("a.mp4"), clip("b.mp4"), clip("c.mp4")};
  ExitStatus status = allDone;
  {
    std::jthread running([&] { status = runner->describe({.clips = clips}); });
    gate.waitForArrivals(1);
    runner->interrupt();
    runner->interrupt();
  }
  EXPECT_EQ(status, interrupted);
  EXPECT_EQ(out.str(),
            "started    a.mp4\n"
            "Cancelling. Ctrl-C again leaves at once.\n"
            "cancelled  a.mp4\n"
            "0 of 3 clips described, 3 cancelled\n");
  EXPECT_EQ(gate.arrivals(), 1) << "nothing was started any more";
  EXPECT_THAT(namesIn(harness.folder.path()), ElementsAre("a.mp4", "b.mp4", "c.mp4"));
}

TEST_F(RunnerTest, ARunThatNobodyFollowsAnyMoreIsCancelled) {
  harness.settings.maxConcurrentJobs = 1;
  Gate gate;
  harness.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    return {};
  };
  out.setstate(std::ios::badbit);
  isOutputAbandoned = true;
  EXPECT_EQ(describe({clip("a.mp4"), clip("b.mp4")}), abandoned);
  EXPECT_THAT(namesIn(harness.folder.path()), ElementsAre("a.mp4", "b.mp4"));
}

TEST_F(RunnerTest, ARunGoesOnWhenItsWordsCannotBeWritten) {
  out.setstate(std::ios::badbit);
  EXPECT_EQ(describe({clip("a.mp4")}), allDone);
  EXPECT_TRUE(fs::exists(harness.folder / "a.description.md"));
}

TEST_F(RunnerTest, AnInterruptLeavesFinishedClipsFinished) {
  harness.settings.maxConcurrentJobs = 1;
  Gate gate;
  harness.answer = [&](const VisionRequest& request, const std::stop_token& stop) {
    if (request.sourceContext.filename == "b.mp4") gate.pass(stop);
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "model", .inputTokens = {}, .outputTokens = {}};
  };
  const auto runner = makeRunner();
  const std::vector<fs::path> clips{clip("a.mp4"), clip("b.mp4")};
  ExitStatus status = allDone;
  {
    std::jthread running([&] { status = runner->describe({.clips = clips}); });
    gate.waitForArrivals(1);
    runner->interrupt();
  }
  EXPECT_EQ(status, interrupted);
  EXPECT_THAT(out.str(), HasSubstr("1 of 2 clips described, 1 cancelled\n"));
  EXPECT_TRUE(fs::exists(harness.folder / "a.description.md"));
  EXPECT_FALSE(fs::exists(harness.folder / "b.description.md"));
}

TEST_F(RunnerTest, SaysHowManyClipsAreLeftAlone) {
  EXPECT_EQ(makeRunner()->describe({.clips = {clip("a.mp4")}, .upToDate = 2}), allDone);
  EXPECT_THAT(out.str(), StartsWith("2 clips are up to date and left alone; --again describes them too.\nstarted "));
}

class WatchingRunner : public RunnerTest {
 protected:
  WatchingRunner() {
    harness.stages.clock = std::make_shared<SystemClock>();  // the files that come in are of today
    harness.answer = [this](const VisionRequest& request, const std::stop_token& stop) {
      if (request.sourceContext.filename == "slow.mp4") gate.pass(stop);
      return VisionResponse{.rawText = test::goodAnswer(), .modelId = "model", .inputTokens = {}, .outputTokens = {}};
    };
    harness.stages.writePoster = [this](const auto&...) -> std::optional<fs::path> {
      written.admitOne();  // the last step of a clip's run
      return std::nullopt;
    };
  }

  /// Runs until the test interrupts it.
  void start(const Worklist& work) {
    runner = makeRunner();
    running = std::jthread([this, work] {
      status = runner->watch({harness.folder.path()}, [this, work] {
        watching.open();
        return work;
      });
    });
    watching.pass();
  }

  void finish() {
    runner->interrupt();
    running.join();
  }

  /// A clip that was finished long ago comes into the folder.
  void putClip(const std::string& name) {
    const fs::path file = clip("elsewhere");
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    fs::rename(file, harness.folder / name);
  }

  Gate gate, watching, written;
  ExitStatus status = wrongUsage;
  std::unique_ptr<Runner> runner;
  std::jthread running;
};

TEST_F(WatchingRunner, DescribesWhatIsThereAndWhatComesIn) {
  start({.clips = {clip("old.mp4")}});
  written.pass();
  putClip("new.mp4");
  written.pass();
  finish();
  EXPECT_EQ(status, allDone) << "an end that is wished for, with nothing left to do";
  EXPECT_THAT(out.str(), HasSubstr("Watching 1 folder; Ctrl-C ends.\n"));
  EXPECT_THAT(out.str(), HasSubstr("started    new.mp4\n"));
  EXPECT_THAT(out.str(), HasSubstr("2 of 2 clips described\n"));
}

TEST_F(WatchingRunner, AnInterruptCancelsWhatIsUnderWay) {
  start({});
  putClip("slow.mp4");
  gate.waitForArrivals(1);
  finish();
  EXPECT_EQ(status, interrupted);
  EXPECT_THAT(out.str(), HasSubstr("0 of 1 clip described, 1 cancelled\n"));
}

TEST_F(WatchingRunner, AnInterruptOfAnIdleOneEndsItWithoutAWord) {
  start({});
  finish();
  EXPECT_EQ(status, allDone);
  EXPECT_THAT(out.str(), Not(HasSubstr("Cancelling")));
}

TEST_F(RunnerTest, APosterThatCannotBeWrittenIsNotListed) {
  harness.settings.output.conflictPolicy = ConflictPolicy::overwrite;
  fs::create_directory(harness.folder / "a.description.jpg");
  EXPECT_EQ(describe({clip("a.mp4")}), allDone);
  EXPECT_THAT(out.str(), Not(HasSubstr(".jpg")));
}

}  // namespace
}  // namespace tq::describe

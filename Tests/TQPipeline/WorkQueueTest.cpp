#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/Gate.hpp"
#include "Support/WorkQueueHarness.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPipeline/WorkQueue.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::Gate;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum JobStatus;

class WorkQueueTest : public testing::Test {
 protected:
  /// From now on the model answers only when the gate lets it.
  void holdTheModel() {
    harness.engine.answer = [this](const VisionRequest&, const std::stop_token& stop) {
      gate.pass(stop);
      return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
    };
  }

  void failTheModel() {
    harness.engine.answer = [](const VisionRequest&, const std::stop_token&) -> VisionResponse {
      throw std::runtime_error("the model is ill");
    };
  }

  /// Hundreds of sidecars would take longer than all else.
  void writeNothing() {
    harness.engine.stages.writeDescription = [](const auto&...) { return std::vector<fs::path>{}; };
    harness.engine.stages.writePoster = nullptr;
  }

  void enqueue(const std::vector<fs::path>& clips) {
    const std::size_t before = harness.queue().jobs().size();
    harness.queue().enqueue(clips);
    harness.runUntilSize(before + clips.size());
  }

  fs::path sidecarOf(const fs::path& clip) const { return clip.parent_path() / (stemOf(clip) + ".description.json"); }

  Gate gate;
  test::WorkQueueHarness harness;
};

TEST_F(WorkQueueTest, OfManyClipsTheFirstComeInSmallPortions) {
  holdTheModel();
  harness.start();
  std::vector<fs::path> clips;
  for (int number = 0; number < 1000; ++number)
    clips.push_back(harness.engine.folder / (std::to_string(number) + ".mov"));
  harness.queue().enqueueClips(clips);
  harness.runUntilSize(clips.size());
  EXPECT_THAT(harness.view.arrivals, ElementsAre(4, 8, 16, 32, 64, 128, 256, 256, 236));
}

TEST_F(WorkQueueTest, ADroppedClipBecomesASidecar) {
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  enqueue({clip});
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), ElementsAre(done));
  EXPECT_TRUE(fs::exists(sidecarOf(clip)));
}

TEST_F(WorkQueueTest, ANewJobIsWaitingWithTheConfiguredEngine) {
  holdTheModel();
  harness.engine.settings.maxConcurrentJobs = 1;
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov")});
  const Job& job = harness.job(1);
  EXPECT_EQ(job.status, queued);
  EXPECT_EQ(job.progress, 0);
  EXPECT_EQ(job.error, std::nullopt);
  EXPECT_FALSE(job.result || job.rawResponse || job.frames);
  ASSERT_TRUE(job.engineSnapshot);
  EXPECT_EQ(job.engineSnapshot->modelId, "configured-model");
  EXPECT_EQ(job.createdAt, harness.engine.clock->now());
  EXPECT_EQ(job.outputOverride, std::nullopt);
  gate.open();
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, AnUnusableDropGivesNoJobAndNoMessage) {
  harness.start();
  harness.queue().enqueue({harness.engine.folder / "missing.mov", harness.clip("notes.txt")});
  harness.queue().enqueue({});
  enqueue({harness.clip("a.mov")});  // behind the others, so they have been dealt with
  EXPECT_THAT(harness.names(), ElementsAre("a.mov"));
  EXPECT_THAT(harness.view.problems, IsEmpty());
}

TEST_F(WorkQueueTest, AFolderComesInSortedAndAClipInsideItOnce) {
  harness.start();
  const fs::path upper = harness.clip("folder/B.MOV");
  harness.clip("folder/a.mov");
  harness.clip("folder/.hidden.mov");
  harness.queue().enqueue({harness.engine.folder / "folder", upper});
  harness.runUntilSize(2);
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("B.MOV", "a.mov"));
}

TEST_F(WorkQueueTest, ALinkInAFolderIsSkippedAndTheSameLinkAloneIsTaken) {
  harness.start();
  fs::create_directory(harness.engine.folder / "folder");
  const fs::path link = harness.engine.folder / "folder/link.mov";
  fs::create_symlink(harness.clip("outside.mov"), link);
  harness.queue().enqueue({harness.engine.folder / "folder"});
  enqueue({link});
  EXPECT_THAT(harness.names(), ElementsAre("link.mov"));
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, AClipDroppedTwiceIsTwoJobs) {
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  enqueue({clip});
  enqueue({clip});
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("a.mov", "a.mov"));
}

TEST_F(WorkQueueTest, TheFirstJobIsSelectedWhenNothingIs) {
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov")});
  EXPECT_EQ(harness.queue().selectedJobID(), harness.job(0).id);
  harness.queue().select(harness.job(1).id);
  enqueue({harness.clip("c.mov")});
  EXPECT_EQ(harness.queue().selectedJobID(), harness.job(1).id);
  EXPECT_EQ(harness.view.selectionChanges, 2);
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, TheViewSeesEveryChangeOfStatusAndAgreesInTheEnd) {
  harness.start();
  enqueue({harness.clip("a.mov")});
  harness.runUntilIdle();
  EXPECT_THAT(harness.view.statuses, ElementsAre(extracting, calling, writing, done));
  EXPECT_EQ(harness.view.shown.front(), harness.job(0));
}

TEST_F(WorkQueueTest, ManyJobsComeInAndEndInSlices) {
  harness.engine.settings.maxConcurrentJobs = 8;
  writeNothing();
  harness.start();
  constexpr std::size_t count = 600;
  fs::create_directory(harness.engine.folder / "many");
  for (std::size_t number = 0; number < count; ++number)
    harness.clip("many/" + std::to_string(number) + ".mov");
  harness.queue().enqueue({harness.engine.folder / "many"});
  harness.runUntilSize(count);
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), AllOf(SizeIs(count), Each(done)));
  EXPECT_EQ(harness.view.shown.size(), count);
}

TEST_F(WorkQueueTest, TheCountOfActiveJobsIsToldWhenItChanges) {
  holdTheModel();
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov")});
  EXPECT_EQ(harness.queue().jobs().activeCount(), 2U);
  EXPECT_EQ(harness.view.activeCountChanges, 1);
  gate.open();
  harness.runUntilIdle();
  EXPECT_GT(harness.view.activeCountChanges, 1);
}

// Cancel and retry

TEST_F(WorkQueueTest, ACancelledJobSaysSoAndCanRunAgainInItsPlace) {
  holdTheModel();
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov")});
  const UUID id = harness.job(0).id;
  harness.queue().cancel(id);
  harness.runUntil([&] { return harness.job(0).status == cancelled; });
  EXPECT_EQ(harness.job(0).error, "Cancelled");
  gate.open();
  harness.queue().retry(id);
  EXPECT_EQ(harness.job(0).status, queued);
  EXPECT_EQ(harness.job(0).error, std::nullopt);
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("a.mov", "b.mov"));
  EXPECT_THAT(harness.statuses(), ElementsAre(done, done));
}

TEST_F(WorkQueueTest, ARetryKeepsWhatTheLastRunLeftUntilTheNewOneReplacesIt) {
  failTheModel();
  harness.start();
  enqueue({harness.clip("a.mov")});
  harness.runUntilIdle();
  const Job failedJob = harness.job(0);
  ASSERT_EQ(failedJob.status, failed);
  ASSERT_TRUE(failedJob.frames);
  harness.queue().retry(failedJob.id);
  Job expected = failedJob;
  expected.status = queued;
  expected.error = {};
  expected.progress = 0;
  EXPECT_EQ(harness.job(0), expected);
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, ARetryKeepsTheSelection) {
  failTheModel();
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov")});
  harness.queue().select(harness.job(1).id);
  harness.runUntilIdle();
  harness.queue().retry(harness.job(1).id);
  EXPECT_EQ(harness.queue().selectedJobID(), harness.job(1).id);
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, UnknownIdsAreNeitherRetriedNorCancelled) {
  harness.start();
  harness.queue().retry(UUID::random());
  harness.queue().cancel(UUID::random());
  enqueue({harness.clip("a.mov")});
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), ElementsAre(done));
}

TEST_F(WorkQueueTest, AllAreCancelledAndAllRunAgain) {
  holdTheModel();
  writeNothing();
  harness.start();
  std::vector<fs::path> clips;
  for (int number = 0; number < 300; ++number)
    clips.push_back(harness.clip(std::to_string(number) + ".mov"));
  enqueue(clips);
  harness.queue().cancelAll();
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), AllOf(SizeIs(300), Each(cancelled)));
  gate.open();
  harness.queue().retryAll();
  harness.runUntil([&] { return std::ranges::count(harness.statuses(), done) == 300; });
}

TEST_F(WorkQueueTest, RetryAllLeavesFinishedWorkAlone) {
  harness.start();
  enqueue({harness.clip("a.mov")});
  harness.runUntilIdle();
  failTheModel();
  enqueue({harness.clip("b.mov")});
  harness.runUntilIdle();
  harness.view.statuses.clear();
  harness.queue().retryAll();
  harness.runUntil([&] { return !harness.view.statuses.empty(); });
  harness.runUntilIdle();
  EXPECT_THAT(harness.view.statuses, ElementsAre(queued, extracting, calling, failed));
}

TEST_F(WorkQueueTest, RemovingCompletedKeepsTheOthersAndTheSelection) {
  harness.start();
  enqueue({harness.clip("a.mov")});
  harness.runUntilIdle();
  failTheModel();
  enqueue({harness.clip("b.mov")});
  harness.runUntilIdle();
  const auto selected = harness.queue().selectedJobID();
  harness.queue().removeCompleted();
  EXPECT_THAT(harness.names(), ElementsAre("b.mov"));
  EXPECT_EQ(harness.queue().selectedJobID(), selected) << "and now it names no job";
}

// Settings

TEST_F(WorkQueueTest, NewSettingsReachTheEngineAndTheNextJobs) {
  harness.start();
  AppSettings settings = harness.engine.settings;
  settings.modelId = "another-model";
  harness.queue().updateSettings(settings);
  enqueue({harness.clip("a.mov")});
  EXPECT_EQ(harness.job(0).engineSnapshot->modelId, "another-model");
  harness.runUntilIdle();
  EXPECT_EQ(harness.job(0).engineSnapshot->modelId, "another-model");
}

// Rating again

TEST_F(WorkQueueTest, ARerateReplacesTheOldDescriptionWhateverThePolicy) {
  harness.engine.settings.output.conflictPolicy = ConflictPolicy::suffix;
  harness.engine.settings.output.format = OutputFormat::json;
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  enqueue({clip});
  harness.runUntilIdle();
  const std::string before = test::contentOf(sidecarOf(clip));
  harness.engine.clock->advance(std::chrono::hours(1));
  harness.queue().enqueueRerate({{.sidecarURL = sidecarOf(clip), .sourceURL = clip, .reason = "refused"}});
  harness.runUntilSize(2);
  harness.runUntilIdle();
  EXPECT_NE(test::contentOf(sidecarOf(clip)), before);
  EXPECT_FALSE(fs::exists(harness.engine.folder / "a.description (2).json"));
  ASSERT_TRUE(harness.job(1).outputOverride);
  EXPECT_EQ(harness.job(1).outputOverride->conflictPolicy, ConflictPolicy::overwrite);
  EXPECT_EQ(harness.job(1).outputOverride->format, OutputFormat::json);
}

TEST_F(WorkQueueTest, ARerateTakesItsCandidatesAsTheyAre) {
  harness.start();
  harness.queue().enqueueRerate({});
  harness.queue().enqueueRerate({{.sidecarURL = {}, .sourceURL = harness.engine.folder / "gone.xyz", .reason = {}}});
  harness.runUntilSize(1);
  EXPECT_THAT(harness.names(), ElementsAre("gone.xyz"));
  harness.runUntilIdle();
}

// Watched files

TEST_F(WorkQueueTest, AWatchedFileIsTakenIn) {
  harness.start();
  harness.queue().handleWatchedFile(harness.clip("a.mov"));
  harness.runUntilSize(1);
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), ElementsAre(done));
}

TEST_F(WorkQueueTest, AWatchedFileThatIsDescribedIsLeftAlone) {
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  harness.clip("a.description.json");
  fs::last_write_time(clip, fs::last_write_time(sidecarOf(clip)));
  harness.queue().handleWatchedFile(clip);
  harness.queue().handleWatchedFile(harness.clip("b.mov"));
  harness.runUntilSize(1);
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("b.mov"));
}

TEST_F(WorkQueueTest, SidecarsOfWatchedFilesAreLookedForWhereTheyAreWritten) {
  harness.engine.settings.output.sidecarDirectory = harness.engine.folder / "out";
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  fs::last_write_time(harness.clip("out/a.description.json"), fs::last_write_time(clip) + std::chrono::seconds(1));
  harness.queue().handleWatchedFile(clip);
  harness.queue().handleWatchedFile(harness.clip("b.mov"));
  harness.runUntilSize(1);
  EXPECT_THAT(harness.names(), ElementsAre("b.mov"));
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, AWatchedFileThatIsWorkedOnIsNotTakenTwice) {
  holdTheModel();
  harness.engine.settings.maxConcurrentJobs = 1;
  harness.start();
  const fs::path running = harness.clip("a.mov");
  const fs::path waiting = harness.clip("b.mov");
  enqueue({running, waiting});
  for (const fs::path& clip : {running, waiting, running, waiting})
    harness.queue().handleWatchedFile(clip);
  harness.queue().handleWatchedFile(harness.clip("c.mov"));
  harness.runUntilSize(3);
  EXPECT_THAT(harness.names(), ElementsAre("a.mov", "b.mov", "c.mov"));
  gate.open();
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, TwoReportsOfAFileInQuickSuccessionAreOneJob) {
  holdTheModel();
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  harness.queue().handleWatchedFile(clip);
  harness.queue().handleWatchedFile(clip);
  harness.queue().handleWatchedFile(harness.clip("b.mov"));
  harness.runUntilSize(2);
  EXPECT_THAT(harness.names(), ElementsAre("a.mov", "b.mov"));
  gate.open();
  harness.runUntilIdle();
}

TEST_F(WorkQueueTest, AFailedJobDoesNotKeepAWatchedFileOut) {
  failTheModel();
  harness.start();
  const fs::path clip = harness.clip("a.mov");
  enqueue({clip});
  harness.runUntilIdle();
  harness.queue().handleWatchedFile(clip);
  harness.runUntilSize(2);
  harness.runUntilIdle();
}

// The frames of finished jobs

TEST_F(WorkQueueTest, FramesOfTheJobsThatFinishedLongestAgoAreLetGo) {
  harness.engine.settings.maxConcurrentJobs = 1;
  harness.engine.frameCount = 1;  // of 6 bytes
  harness.frameBudget = 12;
  harness.start();
  enqueue({harness.clip("a.mov"), harness.clip("b.mov"), harness.clip("c.mov"), harness.clip("d.mov")});
  harness.runUntilIdle();
  std::vector<bool> kept;
  for (std::size_t row = 0; row < 4; ++row)
    kept.push_back(harness.job(row).frames.has_value());
  EXPECT_THAT(kept, ElementsAre(true, false, false, true)) << "the first one is selected";
  EXPECT_TRUE(harness.job(1).result) << "the rest of a finished job stays";
  harness.queue().select(harness.job(3).id);
  enqueue({harness.clip("e.mov")});
  harness.runUntilIdle();
  EXPECT_FALSE(harness.job(0).frames);
  EXPECT_TRUE(harness.job(3).frames);
}

}  // namespace
}  // namespace tq

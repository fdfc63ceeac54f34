// What of a work queue is there again after its program has ended, in whatever way.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/Gate.hpp"
#include "Support/WorkQueueHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::Gate;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using enum JobStatus;

const std::string leftoverName = ".tarquel-12-0123456789abcdef.tmp";

class WorkQueueRestart : public testing::Test {
 protected:
  Job stored(const std::string& clip, JobStatus status) {
    Job job;
    job.id = UUID::random();
    job.sourceURL = harness.clip(clip);
    job.status = status;
    job.createdAt = harness.engine.clock->now();
    if (status == failed) job.error = "It went wrong.";
    return job;
  }

  void save(const std::vector<Job>& jobs) {
    std::vector<JobList::Row> rows;
    for (const Job& job : jobs)
      rows.push_back(std::make_shared<const Job>(job));
    harness.store->save(rows);
  }

  void restoreAll(std::size_t count) {
    harness.start().restore();
    harness.runUntilSize(count);
  }

  test::WorkQueueHarness harness;
};

TEST_F(WorkQueueRestart, FailedWorkWaitsForItsUserAndInterruptedWorkRunsAgain) {
  const Job failedJob = stored("failed.mov", failed);
  const Job interrupted = stored("interrupted.mov", writing);
  save({stored("done.mov", done), failedJob, interrupted});
  restoreAll(2);
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("failed.mov", "interrupted.mov"));
  EXPECT_THAT(harness.statuses(), ElementsAre(failed, done));
  EXPECT_EQ(harness.job(0).error, "It went wrong.");
  EXPECT_EQ(harness.job(1).id, interrupted.id);
  EXPECT_EQ(harness.job(1).createdAt, interrupted.createdAt);
}

TEST_F(WorkQueueRestart, TheFirstRestoredJobIsSelected) {
  const Job first = stored("a.mov", failed);
  save({first, stored("b.mov", failed)});
  restoreAll(2);
  EXPECT_EQ(harness.queue().selectedJobID(), first.id);
}

TEST_F(WorkQueueRestart, NoFileIsAnEmptyQueueWithoutAWord) {
  harness.start().restore();
  harness.runPosted();
  EXPECT_TRUE(harness.queue().jobs().empty());
  EXPECT_THAT(harness.view.problems, IsEmpty());
}

TEST_F(WorkQueueRestart, WhatIsTakenInWhileTheQueueIsReadComesBehindIt) {
  save({stored("old.mov", failed)});
  harness.start().restore();
  harness.queue().enqueue({harness.clip("new.mov")});
  harness.runUntilSize(2);
  harness.runUntilIdle();
  EXPECT_THAT(harness.names(), ElementsAre("old.mov", "new.mov"));
}

TEST_F(WorkQueueRestart, AProgramThatEndsBeforeItHasReadTheQueueDoesNotLoseIt) {
  std::vector<Job> jobs;
  for (int number = 0; number < 600; ++number)
    jobs.push_back(stored(std::to_string(number) + ".mov", queued));
  save(jobs);
  harness.start().restore();
  harness.runUntilSize(1);  // the first slice is in, and its jobs change the queue
  harness.runUntil([&] { return !harness.view.statuses.empty(); });
  harness.quit();
  EXPECT_THAT(harness.stored(), SizeIs(600));
}

TEST_F(WorkQueueRestart, OverrideAndEngineOfAJobAreThereAgain) {
  Job job = stored("a.mov", queued);
  job.outputOverride = OutputConfig{.format = OutputFormat::json,
                                    .conflictPolicy = ConflictPolicy::overwrite,
                                    .sidecarDirectory = harness.engine.folder / "out"};
  save({job});
  restoreAll(1);
  harness.runUntilIdle();
  EXPECT_EQ(harness.job(0).outputOverride, job.outputOverride);
  EXPECT_TRUE(fs::exists(harness.engine.folder / "out/a.description.json"));
}

TEST_F(WorkQueueRestart, ADescriptionThatWasCompleteIsDoneAgainBesideTheOldOne) {
  harness.engine.settings.output.conflictPolicy = ConflictPolicy::suffix;
  const Job interrupted = stored("a.mov", writing);
  harness.clip("a.description.json");
  save({interrupted});
  restoreAll(1);
  harness.runUntilIdle();
  EXPECT_TRUE(fs::exists(harness.engine.folder / "a.description (2).json"));
}

TEST_F(WorkQueueRestart, WhatAKilledRunLeftHalfWrittenIsRemoved) {
  const fs::path leftover = harness.clip("clips/" + leftoverName);
  const fs::path privateLeftover = harness.clip("private/" + leftoverName);
  const fs::path elsewhere = harness.clip("elsewhere/" + leftoverName);
  save({stored("clips/a.mov", failed)});
  harness.start().restore();
  harness.runUntil([&] { return harness.queue().isIdle(); });
  EXPECT_FALSE(fs::exists(leftover));
  EXPECT_FALSE(fs::exists(privateLeftover));
  EXPECT_TRUE(fs::exists(elsewhere)) << "no job was at work there";
}

TEST_F(WorkQueueRestart, TheFileFollowsTheQueue) {
  harness.start();
  harness.queue().enqueue({harness.clip("a.mov")});
  harness.runUntilSize(1);
  harness.runUntilIdle();
  harness.queue().finish();
  EXPECT_THAT(harness.stored(), IsEmpty());
  EXPECT_TRUE(fs::exists(harness.store->url));
}

TEST_F(WorkQueueRestart, ARunningJobIsInTheFileAsOneThatWaits) {
  Gate gate;
  harness.engine.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    gate.pass(stop);
    throw std::runtime_error("never answers");
  };
  harness.start();
  harness.queue().enqueue({harness.clip("a.mov")});
  harness.runUntil([&] { return harness.queue().jobs().size() == 1 && harness.job(0).status == calling; });
  harness.quit();
  ASSERT_THAT(harness.stored(), SizeIs(1));
  EXPECT_EQ(harness.stored().front().status, queued);
  EXPECT_THAT(test::contentOf(harness.store->url), HasSubstr("\"calling\""));
}

TEST_F(WorkQueueRestart, ProgressAloneIsNotWritten) {
  Gate gate;
  std::function<void(double)> report;
  harness.engine.stages.extractFrames = [&](const fs::path&, const SamplingConfig&, const ExtractionProgress& progress,
                                            const std::stop_token& stop) -> Extraction {
    report = progress;
    gate.pass(stop);
    throw std::runtime_error("no frames");
  };
  harness.start();
  harness.queue().enqueue({harness.clip("a.mov")});
  harness.runUntil([&] { return harness.queue().jobs().size() == 1 && harness.job(0).status == extracting; });
  gate.waitForArrivals(1);
  harness.queue().finish();
  fs::remove(harness.store->url);
  report(0.5);
  harness.runUntil([&] { return harness.job(0).progress > 0; });
  harness.queue().finish();
  EXPECT_FALSE(fs::exists(harness.store->url));
  gate.open();
  harness.runUntilIdle();
}

TEST_F(WorkQueueRestart, AQueueThatCannotBeSavedGoesOnInMemory) {
  fs::create_directories(harness.store->url / "in the way");
  harness.start();
  harness.queue().enqueue({harness.clip("a.mov")});
  harness.runUntilSize(1);
  harness.runUntilIdle();
  EXPECT_THAT(harness.statuses(), ElementsAre(done));
  harness.queue().finish();
  ASSERT_FALSE(harness.view.problems.empty());
  EXPECT_THAT(harness.view.problems.front(), StartsWith("Could not save the queue: "));
  EXPECT_THAT(harness.view.problems.front(), HasSubstr("Is a directory"));
}

TEST_F(WorkQueueRestart, AQueueWithoutAStoreLeavesNoFile) {
  const fs::path file = harness.store->url;
  harness.store = {};
  harness.start().restore();
  harness.queue().enqueue({harness.clip("a.mov")});
  harness.runUntilSize(1);
  harness.runUntilIdle();
  harness.quit();
  EXPECT_FALSE(fs::exists(file));
}

}  // namespace
}  // namespace tq

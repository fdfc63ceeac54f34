#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/WatchedThread.hpp"
#include "TQCore/TQError.hpp"
#include "TQPipeline/HeldClips.hpp"

namespace tq {
namespace {

using test::Gate;
using test::PipelineHarness;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class JobCancelling : public test::HeldClips {};

TEST_F(JobCancelling, CancellingAWaitingJobGivesOneUpdateAndItNeverStarts) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(3);
  orchestrator.add(jobs);
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[1].id);
  const auto updates = harness.log.of(jobs[1].id);
  ASSERT_EQ(updates.size(), 1u);
  EXPECT_EQ(updates[0].status, cancelled);
  EXPECT_EQ(updates[0].error, "Cancelled");
  gate.open();
  harness.log.waitFor(jobs[2].id, done);
  EXPECT_THAT(started(), ElementsAre("1.mov", "3.mov"));
  EXPECT_EQ(harness.log.of(jobs[1].id).size(), 1u);
}

TEST_F(JobCancelling, CancellingAnUnknownIdReportsNothing) {
  auto& orchestrator = harness.start();
  orchestrator.cancel(UUID::random());
  EXPECT_THAT(harness.log.all(), IsEmpty());
}

TEST_F(JobCancelling, CancellingADoneJobChangesNothing) {
  gate.open();
  const Job job = harness.makeJob("1.mov");
  harness.runToEnd(job, done);
  const auto before = harness.log.all().size();
  harness.orchestrator().cancel(job.id);
  EXPECT_EQ(harness.log.all().size(), before);
  // Nor is the id noted: a retry of it still reports.
  harness.orchestrator().add({job});
  harness.orchestrator().report(0.2, job.id);
  harness.log.waitFor(job.id, done);
}

TEST_F(JobCancelling, CancellingAgainChangesNothing) {
  auto& orchestrator = harness.start();
  const Job job = harness.makeJob("1.mov");
  orchestrator.add({job});
  gate.waitForArrivals(1);
  orchestrator.cancel(job.id);
  orchestrator.cancel(job.id);
  EXPECT_THAT(harness.log.of(job.id), testing::SizeIs(2)) << "extracting, cancelled";
}

TEST_F(JobCancelling, AnIdCancelledBeforeItsJobWasAddedSilencesThatRun) {
  harness.stages.extractFrames = [this](const std::filesystem::path&, const SamplingConfig&,
                                        const ExtractionProgress& progress, const std::stop_token&) -> Extraction {
    progress(0.5);
    gate.pass();
    throw TQError::noFramesExtracted();
  };
  auto& orchestrator = harness.start();
  const Job job = harness.makeJob("1.mov"), next = harness.makeJob("2.mov");
  harness.settings.maxConcurrentJobs = 1;
  orchestrator.updateSettings(harness.settings);
  orchestrator.cancel(job.id);
  orchestrator.add({job, next});
  gate.open();
  EXPECT_EQ(harness.log.waitFor(next.id, failed).error, "No frames could be extracted from the video");
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting));
}

TEST_F(JobCancelling, AJobCancelledWhileWaitingAndRetriedDropsItsReportsAndItsFailure) {
  harness.settings.maxConcurrentJobs = 1;
  bool fails = false;
  harness.stages.extractFrames = [&](const std::filesystem::path&, const SamplingConfig&,
                                     const ExtractionProgress& progress, const std::stop_token& stop) {
    gate.pass(stop);
    progress(0.5);
    if (fails) throw TQError::noFramesExtracted();
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(3);
  orchestrator.add({jobs[0], jobs[1]});
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[1].id);
  gate.admitOne();
  harness.log.waitFor(jobs[0].id, done);

  fails = true;
  orchestrator.add({jobs[1], jobs[2]});
  gate.admitOne();
  gate.admitOne();
  harness.log.waitFor(jobs[2].id, failed);
  const auto updates = harness.log.of(jobs[1].id);
  EXPECT_THAT(harness.log.statusesOf(jobs[1].id), ElementsAre(cancelled, extracting));
  EXPECT_EQ(updates.back().progress, 0.0);
  EXPECT_EQ(updates.back().error, std::nullopt);

  // The end of that run has taken the id out again: the next one reports and fails as usual.
  orchestrator.add({jobs[1]});
  gate.admitOne();
  EXPECT_EQ(harness.log.waitFor(jobs[1].id, failed).progress, 0.2);
}

TEST_F(JobCancelling, AJobCancelledWhileWaitingAndRetriedCanStillFinish) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  orchestrator.add(jobs);
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[1].id);
  orchestrator.add({jobs[1]});
  gate.open();
  harness.log.waitFor(jobs[1].id, done);
}

TEST_F(JobCancelling, ACancelledRunShowsAtOnceAndKeepsItsSlotUntilItHasEnded) {
  harness.settings.maxConcurrentJobs = 1;
  Gate unwinding;
  harness.stages.extractFrames = [&](const std::filesystem::path& clip, const SamplingConfig&,
                                     const ExtractionProgress&, const std::stop_token& stop) {
    if (clip.filename() == "1.mov") {
      try {
        gate.pass(stop);
      } catch (const Cancelled&) {
        unwinding.pass();
        throw;
      }
    }
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  orchestrator.add(jobs);
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[0].id);
  EXPECT_EQ(harness.log.of(jobs[0].id).back().status, cancelled);
  unwinding.waitForArrivals(1);
  EXPECT_THAT(harness.log.of(jobs[1].id), IsEmpty());
  unwinding.open();
  harness.log.waitFor(jobs[1].id, done);
  EXPECT_THAT(harness.log.statusesOf(jobs[0].id), ElementsAre(extracting, cancelled));
}

TEST_F(JobCancelling, TheEndOfACancelledRunLeavesTheSlotOfItsRetryAlone) {
  harness.settings.maxConcurrentJobs = 2;
  Gate unwinding, second, secondStopped, others;
  std::atomic<int> runs = 0;
  harness.stages.extractFrames = [&](const std::filesystem::path& clip, const SamplingConfig&,
                                     const ExtractionProgress&, const std::stop_token& stop) {
    if (clip.filename() == "1.mov") {
      if (++runs == 1) {
        try {
          gate.pass(stop);
        } catch (const Cancelled&) {
          unwinding.pass();
          throw;
        }
      }
      const std::stop_callback note(stop, [&] { secondStopped.open(); });
      second.pass(stop);
    } else {
      others.pass();
    }
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(4);
  orchestrator.add({jobs[0]});
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[0].id);
  unwinding.waitForArrivals(1);
  orchestrator.add({jobs[0]});
  second.waitForArrivals(1);
  orchestrator.add({jobs[1], jobs[2], jobs[3]});
  others.waitForArrivals(1);
  unwinding.open();
  // The first run has ended once its silence is over: reports on the id pass again, since the end cleared the id.
  while (harness.log.of(jobs[0].id).back().progress != 0.3)
    orchestrator.report(0.3, jobs[0].id);
  // Both slots are still taken, by the retry and by the second clip: no third clip was started.
  EXPECT_EQ(others.arrivals(), 1);
  // Nor is the retry forgotten: a cancel still reaches it.
  orchestrator.cancel(jobs[0].id);
  secondStopped.pass();
  others.open();
  for (std::size_t index = 1; index < jobs.size(); ++index)
    harness.log.waitFor(jobs[index].id, done);
  EXPECT_EQ(harness.log.of(jobs[0].id).back().status, cancelled);
}

TEST_F(JobCancelling, ACancelledRunThatFailsAfterItsRetryHasEndedLeavesTheRetryDone) {
  harness.settings.maxConcurrentJobs = 2;
  std::atomic<int> runs = 0;
  Gate unwinding;
  harness.stages.extractFrames = [&](const std::filesystem::path& clip, const SamplingConfig&,
                                     const ExtractionProgress&, const std::stop_token& stop) {
    if (clip.filename() == "1.mov" && ++runs == 1) {
      unwinding.pass();
      throw TQError::frameExtractionFailed("the tool was stopped");
    }
    if (clip.filename() == "2.mov") gate.pass(stop);
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(3);
  orchestrator.add({jobs[0]});
  unwinding.waitForArrivals(1);
  orchestrator.cancel(jobs[0].id);
  orchestrator.add({jobs[0]});
  harness.log.waitFor(jobs[0].id, done);

  // The third clip shows when the first run has ended: nothing else starts it after the limit was raised.
  harness.settings.maxConcurrentJobs = 1;
  orchestrator.updateSettings(harness.settings);
  orchestrator.add({jobs[1], jobs[2]});
  harness.settings.maxConcurrentJobs = 2;
  orchestrator.updateSettings(harness.settings);
  unwinding.open();
  harness.log.waitFor(jobs[2].id, done);
  EXPECT_EQ(harness.log.of(jobs[0].id).back().status, done);
}

TEST_F(JobCancelling, AReportAfterTheCancelIsDropped) {
  auto& orchestrator = harness.start();
  const Job job = harness.makeJob("1.mov");
  orchestrator.add({job});
  gate.waitForArrivals(1);
  orchestrator.report(0.1, job.id);
  EXPECT_EQ(harness.log.of(job.id).back().progress, 0.1);
  orchestrator.cancel(job.id);
  const auto before = harness.log.all().size();
  orchestrator.report(0.3, job.id);
  EXPECT_EQ(harness.log.all().size(), before);
  EXPECT_EQ(harness.log.of(job.id).back().progress, 0.1);
}

TEST_F(JobCancelling, AReportAfterTheCancelledRunHasEndedIsDropped) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  orchestrator.add(jobs);
  gate.waitForArrivals(1);
  orchestrator.cancel(jobs[0].id);
  gate.waitForArrivals(2);  // the only slot has been freed by the end of the cancelled run
  orchestrator.report(0.3, jobs[0].id);
  EXPECT_EQ(harness.log.of(jobs[0].id).back().status, cancelled);
  EXPECT_EQ(harness.log.of(jobs[0].id).back().progress, 0);
}

TEST_F(JobCancelling, AReportMayFallAndLeavesTheStatusAlone) {
  auto& orchestrator = harness.start();
  const Job job = harness.makeJob("1.mov");
  orchestrator.add({job});
  gate.waitForArrivals(1);
  orchestrator.report(0.3, job.id);
  orchestrator.report(0.1, job.id);
  EXPECT_EQ(harness.log.of(job.id).back().progress, 0.1);
  EXPECT_EQ(harness.log.of(job.id).back().status, extracting);
}

TEST_F(JobCancelling, AReportOnAnUnknownIdIsDropped) {
  harness.start().report(0.5, UUID::random());
  EXPECT_THAT(harness.log.all(), IsEmpty());
}

TEST_F(JobCancelling, ACancelThatOvertakesTheFirstStepWins) {
  gate.open();
  auto& orchestrator = harness.start();
  for (const Job& job : makeJobs(100)) {
    orchestrator.add({job});
    orchestrator.cancel(job.id);
    const auto last = harness.log.of(job.id).back();
    EXPECT_TRUE(last.status == cancelled || last.status == done) << rawValue(last.status);
    if (last.status == cancelled) {
      orchestrator.add({});
      EXPECT_EQ(harness.log.of(job.id).back().status, cancelled);
    }
  }
  harness.discard();
  for (const Job& job : harness.log.all()) {
    const auto last = harness.log.of(job.id).back().status;
    EXPECT_TRUE(last == cancelled || last == done) << rawValue(last);
  }
}

TEST_F(JobCancelling, ADiscardedOrchestratorStopsItsRunsAndReportsNothingMore) {
  harness.settings.maxConcurrentJobs = 1;
  harness.start().add(makeJobs(3));
  gate.waitForArrivals(1);
  const auto before = harness.log.all().size();
  harness.discard();
  EXPECT_EQ(harness.log.all().size(), before);
  EXPECT_EQ(gate.arrivals(), 1);
}

TEST_F(JobCancelling, ARunThatOutlivesTheDiscardReportsNothingAndStartsNothing) {
  harness.settings.maxConcurrentJobs = 1;
  harness.stages.extractFrames = [&](const std::filesystem::path& clip, const SamplingConfig&,
                                     const ExtractionProgress& progress, const std::stop_token&) {
    EXPECT_EQ(clip.filename(), "1.mov");
    gate.pass();
    progress(0.5);
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  auto& orchestrator = harness.start();
  orchestrator.add(makeJobs(20));
  gate.waitForArrivals(1);
  harness.settings.maxConcurrentJobs = 20;
  orchestrator.updateSettings(harness.settings);
  test::WatchedThread discarder([&] { harness.discard(); });
  discarder.waitUntilItWaits();
  EXPECT_FALSE(discarder.hasEnded());
  gate.open();
  discarder.join();
  EXPECT_THAT(harness.log.all(), testing::SizeIs(1)) << "the first clip's start";
}

}  // namespace
}  // namespace tq

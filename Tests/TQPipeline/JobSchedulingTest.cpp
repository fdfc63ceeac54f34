#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/NoMoreThreads.hpp"
#include "TQPipeline/HeldClips.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class JobScheduling : public test::HeldClips {};

TEST_F(JobScheduling, ALimitOfZeroRunsJobsOneAtATime) {
  harness.settings.maxConcurrentJobs = 0;
  const auto jobs = makeJobs(2);
  harness.start().add(jobs);
  gate.waitForArrivals(1);
  EXPECT_THAT(started(), ElementsAre("1.mov"));
  gate.admitOne();
  gate.waitForArrivals(2);
  EXPECT_THAT(started(), ElementsAre("1.mov", "2.mov"));
  gate.open();
  harness.log.waitFor(jobs[1].id, done);
}

TEST_F(JobScheduling, ANegativeLimitRunsJobsToo) {
  harness.settings.maxConcurrentJobs = -3;
  gate.open();
  harness.runToEnd(harness.makeJob("1.mov"), done);
}

TEST_F(JobScheduling, EachEndStartsExactlyOneMoreInTheOrderOfAdding) {
  harness.settings.maxConcurrentJobs = 2;
  const auto jobs = makeJobs(5);
  harness.start().add(jobs);
  gate.waitForArrivals(2);
  EXPECT_THAT(started(), testing::UnorderedElementsAre("1.mov", "2.mov"));
  for (int arrivals = 3; arrivals <= 5; ++arrivals) {
    gate.admitOne();
    gate.waitForArrivals(arrivals);
    EXPECT_EQ(started().size(), static_cast<std::size_t>(arrivals));
    EXPECT_EQ(started().back(), std::to_string(arrivals) + ".mov");
  }
  gate.open();
  for (const Job& job : jobs)
    harness.log.waitFor(job.id, done);
}

TEST_F(JobScheduling, ARaisedLimitStartsNothingByItselfButTheNextAddFillsTheSlots) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  orchestrator.add(makeJobs(3));
  gate.waitForArrivals(1);
  harness.settings.maxConcurrentJobs = 3;
  orchestrator.updateSettings(harness.settings);
  EXPECT_EQ(gate.arrivals(), 1);
  orchestrator.add({});
  gate.waitForArrivals(3);
}

TEST_F(JobScheduling, ARaisedLimitIsFilledAtTheEndOfAJob) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  orchestrator.add(makeJobs(4));
  gate.waitForArrivals(1);
  harness.settings.maxConcurrentJobs = 3;
  orchestrator.updateSettings(harness.settings);
  gate.admitOne();
  gate.waitForArrivals(4);
}

TEST_F(JobScheduling, ALoweredLimitStopsNoRunningJob) {
  harness.settings.maxConcurrentJobs = 2;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(4);
  orchestrator.add(jobs);
  gate.waitForArrivals(2);
  harness.settings.maxConcurrentJobs = 1;
  orchestrator.updateSettings(harness.settings);
  gate.admitOne();
  gate.admitOne();
  gate.waitForArrivals(3);
  harness.log.waitFor(jobs[0].id, done);
  harness.log.waitFor(jobs[1].id, done);
  EXPECT_EQ(gate.arrivals(), 3);
}

TEST_F(JobScheduling, AddReportsNothingByItself) {
  harness.settings.maxConcurrentJobs = 1;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  orchestrator.add(jobs);
  gate.waitForArrivals(1);
  EXPECT_THAT(harness.log.of(jobs[1].id), IsEmpty());
}

TEST_F(JobScheduling, AJobThatHasEndedIsKeptWithoutItsLargeParts) {
  gate.open();
  const Job end = harness.runToEnd(harness.makeJob("1.mov"), done);
  EXPECT_TRUE(end.frames && end.rawResponse && end.result);
  harness.orchestrator().report(0.5, end.id);
  const Job kept = harness.log.of(end.id).back();
  EXPECT_EQ(kept.status, done);
  EXPECT_EQ(kept.progress, 0.5);
  EXPECT_FALSE(kept.frames || kept.rawResponse || kept.result);
}

TEST_F(JobScheduling, WithoutMoreThreadsAJobWaitsForTheEndOfAnother) {
  harness.settings.maxConcurrentJobs = 2;
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  orchestrator.add({jobs[0]});
  gate.waitForArrivals(1);
  {
    const test::NoMoreThreads shortage;
    orchestrator.add({jobs[1]});
  }
  EXPECT_THAT(harness.log.of(jobs[1].id), IsEmpty());
  gate.open();
  harness.log.waitFor(jobs[1].id, done);
}

TEST_F(JobScheduling, WithoutAnyThreadAJobFails) {
  gate.open();
  auto& orchestrator = harness.start();
  const auto jobs = makeJobs(2);
  {
    const test::NoMoreThreads shortage;
    orchestrator.add(jobs);
  }
  for (const Job& job : jobs)
    EXPECT_EQ(harness.log.waitFor(job.id, failed).error, "Resource temporarily unavailable");
  orchestrator.add({jobs[0]});
  harness.log.waitFor(jobs[0].id, done);
}

TEST_F(JobScheduling, TwoHundredClipsStartInTheOrderOfAdding) {
  harness.settings.maxConcurrentJobs = 8;
  const auto jobs = makeJobs(200);
  gate.open();
  harness.start().add(jobs);
  for (const Job& job : jobs)
    harness.log.waitFor(job.id, done);
  std::vector<UUID> order;
  for (const Job& job : harness.log.all())
    if (job.status == extracting) order.push_back(job.id);
  ASSERT_EQ(order.size(), jobs.size());
  // A clip gets a slot when at most seven that were added before it are still at work; all others have started long
  // ago.
  for (std::size_t index = 0; index < jobs.size(); ++index) {
    const auto own = std::find(order.begin(), order.end(), jobs[index].id);
    const auto startedLate =
        std::count_if(jobs.begin(), jobs.begin() + static_cast<std::ptrdiff_t>(index),
                      [&](const Job& job) { return std::find(own, order.end(), job.id) != order.end(); });
    EXPECT_LE(startedLate, 7) << "clip " << index;
  }
}

}  // namespace
}  // namespace tq

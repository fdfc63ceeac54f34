#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>

#include "TQPipeline/JobUpdates.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using enum JobStatus;

constexpr std::size_t all = 1'000'000;

Job job(const UUID& id, JobStatus status, double progress = 0) {
  Job job;
  job.id = id;
  job.status = status;
  job.progress = progress;
  return job;
}

std::vector<JobStatus> statusesOf(const std::vector<Job>& jobs) {
  std::vector<JobStatus> statuses;
  for (const Job& job : jobs)
    statuses.push_back(job.status);
  return statuses;
}

class JobUpdatesTest : public testing::Test {
 protected:
  const UUID first = UUID::random();
  const UUID second = UUID::random();
  JobUpdates updates;
};

TEST_F(JobUpdatesTest, ABurstOfProgressIsOneUpdate) {
  updates.put(job(first, extracting));
  for (int step = 1; step <= 1000; ++step)
    updates.put(job(first, extracting, step / 1000.0));
  const auto taken = updates.take(all);
  ASSERT_THAT(taken, SizeIs(1));
  EXPECT_EQ(taken.front().progress, 1.0);
}

TEST_F(JobUpdatesTest, EveryChangeOfStatusIsKeptInItsOrder) {
  for (const JobStatus status : {extracting, calling, writing, failed, extracting, calling, writing, done})
    updates.put(job(first, status));
  EXPECT_THAT(statusesOf(updates.take(all)),
              ElementsAre(extracting, calling, writing, failed, extracting, calling, writing, done));
}

TEST_F(JobUpdatesTest, ProgressJoinsTheNewestStatusOnly) {
  updates.put(job(first, extracting, 0.1));
  updates.put(job(first, calling, 0.45));
  updates.put(job(first, calling, 0.5));
  const auto taken = updates.take(all);
  ASSERT_THAT(taken, SizeIs(2));
  EXPECT_EQ(taken[0].progress, 0.1);
  EXPECT_EQ(taken[1].progress, 0.5);
}

TEST_F(JobUpdatesTest, JobsDoNotMix) {
  updates.put(job(first, extracting, 0.1));
  updates.put(job(second, extracting, 0.2));
  updates.put(job(first, extracting, 0.3));
  const auto taken = updates.take(all);
  ASSERT_THAT(taken, SizeIs(2));
  EXPECT_EQ(taken[0].id, first);
  EXPECT_EQ(taken[0].progress, 0.3);
  EXPECT_EQ(taken[1].progress, 0.2);
}

TEST_F(JobUpdatesTest, AnUpdateAfterATakeIsANewOne) {
  updates.put(job(first, extracting, 0.1));
  updates.take(all);
  updates.put(job(first, extracting, 0.2));
  EXPECT_THAT(updates.take(all), SizeIs(1));
}

TEST_F(JobUpdatesTest, OnlyTheFirstUnreadUpdateWakesTheReader) {
  EXPECT_TRUE(updates.put(job(first, extracting)));
  EXPECT_FALSE(updates.put(job(first, calling)));
  EXPECT_FALSE(updates.put(job(second, extracting)));
  updates.take(2);
  EXPECT_FALSE(updates.put(job(second, calling))) << "one is still unread";
  updates.take(all);
  EXPECT_TRUE(updates.put(job(second, done)));
}

TEST_F(JobUpdatesTest, ASliceLeavesTheRestInOrder) {
  for (const JobStatus status : {extracting, calling, writing})
    updates.put(job(first, status));
  EXPECT_THAT(statusesOf(updates.take(2)), ElementsAre(extracting, calling));
  EXPECT_FALSE(updates.empty());
  updates.put(job(first, writing, 0.9));
  const auto rest = updates.take(all);
  ASSERT_THAT(rest, SizeIs(1));
  EXPECT_EQ(rest.front().progress, 0.9);
  EXPECT_TRUE(updates.empty());
  EXPECT_THAT(updates.take(all), IsEmpty());
}

TEST_F(JobUpdatesTest, WhatSeveralThreadsPutArrivesInTheOrderOfEach) {
  constexpr int rounds = 500;
  const std::vector<UUID> ids{UUID::random(), UUID::random(), UUID::random()};
  std::unordered_map<UUID, std::vector<Job>> seen;
  const auto read = [&] {
    for (Job& update : updates.take(7))
      seen[update.id].push_back(std::move(update));
  };
  {
    std::vector<std::jthread> writers;
    for (const UUID& id : ids)
      writers.emplace_back([&, id] {
        for (int round = 0; round < rounds; ++round)
          updates.put(job(id, round % 2 == 0 ? extracting : calling, round));
      });
    for (int turn = 0; turn < rounds; ++turn)
      read();
  }
  while (!updates.empty())
    read();
  for (const UUID& id : ids) {
    ASSERT_THAT(seen[id], SizeIs(rounds)) << "every one of them changes the status";
    for (int round = 0; round < rounds; ++round)
      EXPECT_EQ(seen[id][static_cast<std::size_t>(round)].progress, round);
  }
}

}  // namespace
}  // namespace tq

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/JobRows.hpp"
#include "Support/WorkQueueHarness.hpp"
#include "TQPipeline/JobList.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using enum JobStatus;

class JobListTest : public testing::Test {
 protected:
  JobListTest() { view.list = &list; }

  void append(const std::vector<Job>& jobs) { list.append(test::rowsOf(jobs)); }

  std::vector<UUID> ids() const {
    std::vector<UUID> ids;
    for (const JobList::Row& row : list.rows())
      ids.push_back(row->id);
    return ids;
  }

  void expectThatTheViewAgrees() const {
    ASSERT_EQ(view.shown.size(), list.size());
    for (std::size_t row = 0; row < list.size(); ++row)
      EXPECT_EQ(view.shown[row], list[row]);
  }

  test::QueueView view;
  JobList list{view};
};

TEST_F(JobListTest, FindsAJobByItsId) {
  const Job first = test::jobOf(queued);
  const Job second = test::jobOf(queued);
  append({first, second});
  EXPECT_EQ(list.rowOf(second.id), 1U);
  EXPECT_EQ(list.rowOf(UUID::random()), std::nullopt);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, OfTwoJobsWithOneIdTheFirstIsFound) {
  const Job first = test::jobOf(done);
  append({test::jobOf(done), first, first});
  EXPECT_EQ(list.rowOf(first.id), 1U);
}

TEST_F(JobListTest, ReplacesOneRow) {
  const Job first = test::jobOf(queued);
  append({first, test::jobOf(queued)});
  Job later = first;
  later.progress = 0.5;
  list.replace(0, later);
  EXPECT_EQ(list[0], later);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, WhoeverHoldsARowKeepsItAsItWas) {
  append({test::jobOf(queued)});
  const JobList::Row before = list.rows().front();
  Job later = *before;
  later.status = done;
  list.replace(0, later);
  EXPECT_EQ(before->status, queued);
}

TEST_F(JobListTest, RemovesTheJobsOfOneStatusAndKeepsTheOrderOfTheOthers) {
  const std::vector<Job> jobs{test::jobOf(done),   test::jobOf(failed),    test::jobOf(done), test::jobOf(done),
                              test::jobOf(queued), test::jobOf(cancelled), test::jobOf(done)};
  append(jobs);
  std::vector<UUID> removed;
  for (const JobList::Row& job : list.removeAll(done))
    removed.push_back(job->id);
  EXPECT_THAT(removed, ElementsAre(jobs[0].id, jobs[2].id, jobs[3].id, jobs[6].id));
  EXPECT_THAT(ids(), ElementsAre(jobs[1].id, jobs[4].id, jobs[5].id));
  EXPECT_EQ(list.rowOf(jobs[5].id), 2U);
  EXPECT_EQ(list.rowOf(jobs[0].id), std::nullopt);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, RemovesAllThereAre) {
  append({test::jobOf(done), test::jobOf(done)});
  list.removeAll(done);
  EXPECT_TRUE(list.empty());
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, RemovesNothingWhereNothingFits) {
  append({test::jobOf(queued)});
  list.removeAll(done);
  EXPECT_EQ(list.size(), 1U);
}

TEST_F(JobListTest, AppendsAfterARemoval) {
  append({test::jobOf(done), test::jobOf(queued)});
  list.removeAll(done);
  const Job late = test::jobOf(queued);
  append({late});
  EXPECT_EQ(list.rowOf(late.id), 1U);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, CountsTheJobsThatHaveNotEnded) {
  append({test::jobOf(queued), test::jobOf(calling), test::jobOf(done), test::jobOf(failed), test::jobOf(cancelled)});
  EXPECT_EQ(list.activeCount(), 2U);
  Job ended = list[1];
  ended.status = failed;
  list.replace(1, ended);
  EXPECT_EQ(list.activeCount(), 1U);
  list.removeAll(queued);
  EXPECT_EQ(list.activeCount(), 0U);
}

TEST_F(JobListTest, KnowsTheClipsThatAreWorkedOn) {
  append(
      {test::jobOf(queued, "/clips/a.mov"), test::jobOf(calling, "/clips/a.mov"), test::jobOf(done, "/clips/b.mov")});
  EXPECT_TRUE(list.isActive("/clips/a.mov"));
  EXPECT_FALSE(list.isActive("/clips/b.mov"));
  for (const std::size_t row : {0U, 1U}) {
    EXPECT_TRUE(list.isActive("/clips/a.mov"));
    Job ended = list[row];
    ended.status = cancelled;
    list.replace(row, ended);
  }
  EXPECT_FALSE(list.isActive("/clips/a.mov"));
}

}  // namespace
}  // namespace tq

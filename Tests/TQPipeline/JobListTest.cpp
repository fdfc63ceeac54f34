#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/WorkQueueHarness.hpp"
#include "TQPipeline/JobList.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using enum JobStatus;

class JobListTest : public testing::Test {
 protected:
  JobListTest() { view.list = &list; }

  Job job(JobStatus status, const std::string& clip = "/clips/a.mov") {
    Job job;
    job.id = UUID::random();
    job.status = status;
    job.sourceURL = clip;
    return job;
  }

  void append(const std::vector<Job>& jobs) {
    std::vector<JobList::Row> rows;
    for (const Job& job : jobs)
      rows.push_back(std::make_shared<const Job>(job));
    list.append(std::move(rows));
  }

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
  const Job first = job(queued);
  const Job second = job(queued);
  append({first, second});
  EXPECT_EQ(list.rowOf(second.id), 1U);
  EXPECT_EQ(list.rowOf(UUID::random()), std::nullopt);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, OfTwoJobsWithOneIdTheFirstIsFound) {
  const Job first = job(done);
  append({job(done), first, first});
  EXPECT_EQ(list.rowOf(first.id), 1U);
}

TEST_F(JobListTest, ReplacesOneRow) {
  const Job first = job(queued);
  append({first, job(queued)});
  Job later = first;
  later.progress = 0.5;
  list.replace(0, later);
  EXPECT_EQ(list[0], later);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, WhoeverHoldsARowKeepsItAsItWas) {
  append({job(queued)});
  const JobList::Row before = list.rows().front();
  Job later = *before;
  later.status = done;
  list.replace(0, later);
  EXPECT_EQ(before->status, queued);
}

TEST_F(JobListTest, RemovesTheJobsOfOneStatusAndKeepsTheOrderOfTheOthers) {
  const std::vector<Job> jobs{job(done), job(failed), job(done), job(done), job(queued), job(cancelled), job(done)};
  append(jobs);
  list.removeAll(done);
  EXPECT_THAT(ids(), ElementsAre(jobs[1].id, jobs[4].id, jobs[5].id));
  EXPECT_EQ(list.rowOf(jobs[5].id), 2U);
  EXPECT_EQ(list.rowOf(jobs[0].id), std::nullopt);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, RemovesAllThereAre) {
  append({job(done), job(done)});
  list.removeAll(done);
  EXPECT_TRUE(list.empty());
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, RemovesNothingWhereNothingFits) {
  append({job(queued)});
  list.removeAll(done);
  EXPECT_EQ(list.size(), 1U);
}

TEST_F(JobListTest, AppendsAfterARemoval) {
  append({job(done), job(queued)});
  list.removeAll(done);
  const Job late = job(queued);
  append({late});
  EXPECT_EQ(list.rowOf(late.id), 1U);
  expectThatTheViewAgrees();
}

TEST_F(JobListTest, CountsTheJobsThatHaveNotEnded) {
  append({job(queued), job(calling), job(done), job(failed), job(cancelled)});
  EXPECT_EQ(list.activeCount(), 2U);
  Job ended = list[1];
  ended.status = failed;
  list.replace(1, ended);
  EXPECT_EQ(list.activeCount(), 1U);
  list.removeAll(queued);
  EXPECT_EQ(list.activeCount(), 0U);
}

TEST_F(JobListTest, KnowsTheClipsThatAreWorkedOn) {
  append({job(queued, "/clips/a.mov"), job(calling, "/clips/a.mov"), job(done, "/clips/b.mov")});
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

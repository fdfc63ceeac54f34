#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQPipeline/FrameBudget.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class FrameBudgetTest : public testing::Test {
 protected:
  /// A job whose frames have so many bytes in all, in two frames.
  static Job job(const UUID& id, JobStatus status, std::size_t bytes) {
    Job job;
    job.id = id;
    job.status = status;
    std::vector<ExtractedFrame> frames(2);
    frames[0].jpegData.resize(bytes / 2);
    frames[1].jpegData.resize(bytes - bytes / 2);
    job.frames = std::move(frames);
    return job;
  }

  const UUID first = UUID::random();
  const UUID second = UUID::random();
  const UUID third = UUID::random();
  FrameBudget budget{100};
};

TEST_F(FrameBudgetTest, WithinTheBudgetAllStay) {
  budget.note(job(first, done, 60));
  budget.note(job(second, failed, 40));
  EXPECT_EQ(budget.bytes(), 100U);
  EXPECT_THAT(budget.takeExcess({}), IsEmpty());
}

TEST_F(FrameBudgetTest, TheJobThatFinishedLongestAgoGoesFirst) {
  budget.note(job(first, done, 60));
  budget.note(job(second, done, 30));
  budget.note(job(third, cancelled, 20));
  EXPECT_THAT(budget.takeExcess({}), ElementsAre(first));
  EXPECT_EQ(budget.bytes(), 50U);
  EXPECT_THAT(budget.takeExcess({}), IsEmpty());
}

TEST_F(FrameBudgetTest, AsManyGoAsIsNeeded) {
  budget.note(job(first, done, 40));
  budget.note(job(second, done, 40));
  budget.note(job(third, done, 90));
  EXPECT_THAT(budget.takeExcess({}), ElementsAre(first, second));
}

TEST_F(FrameBudgetTest, TheSelectedJobKeepsItsFrames) {
  budget.note(job(first, done, 60));
  budget.note(job(second, done, 60));
  EXPECT_THAT(budget.takeExcess(first), ElementsAre(second));
  budget.note(job(third, done, 60));
  EXPECT_THAT(budget.takeExcess(second), ElementsAre(first)) << "its turn comes when another is selected";
}

TEST_F(FrameBudgetTest, TheSelectedJobMayExceedTheBudgetAlone) {
  budget.note(job(first, done, 300));
  EXPECT_THAT(budget.takeExcess(first), IsEmpty());
  EXPECT_THAT(budget.takeExcess({}), ElementsAre(first));
}

TEST_F(FrameBudgetTest, JobsThatRunAreNotCounted) {
  budget.note(job(first, calling, 300));
  EXPECT_EQ(budget.bytes(), 0U);
  EXPECT_THAT(budget.takeExcess({}), IsEmpty());
}

TEST_F(FrameBudgetTest, ARetriedJobIsNotCountedUntilItFinishesAgain) {
  budget.note(job(first, failed, 60));
  budget.note(job(first, queued, 60));
  EXPECT_EQ(budget.bytes(), 0U);
  budget.note(job(second, done, 50));
  budget.note(job(first, done, 60));
  EXPECT_THAT(budget.takeExcess({}), ElementsAre(second)) << "the retried one finished later";
}

TEST_F(FrameBudgetTest, AForgottenJobIsNotCounted) {
  budget.note(job(first, done, 60));
  budget.forget(first);
  budget.forget(second);
  EXPECT_EQ(budget.bytes(), 0U);
}

TEST_F(FrameBudgetTest, AFinishedJobWithoutFramesNeedsNothing) {
  Job bare;
  bare.id = first;
  bare.status = failed;
  budget.note(bare);
  FrameBudget none(0);
  none.note(bare);
  EXPECT_THAT(none.takeExcess({}), IsEmpty());
}

TEST_F(FrameBudgetTest, ABudgetOfNothingKeepsNothing) {
  FrameBudget none(0);
  none.note(job(first, done, 1));
  EXPECT_THAT(none.takeExcess({}), ElementsAre(first));
}

}  // namespace
}  // namespace tq

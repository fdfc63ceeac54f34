#include <gtest/gtest.h>

#include "TQPipeline/WaitingList.hpp"

namespace tq {
namespace {

Job job(const UUID& id, double mark = 0) {
  Job job;
  job.id = id;
  job.progress = mark;
  return job;
}

class WaitingListTest : public testing::Test {
 protected:
  /// The marks of the jobs that wait, in order; empties the list.
  std::vector<double> marks() {
    std::vector<double> marks;
    for (; !list.empty(); list.removeFront())
      marks.push_back(list.front().progress);
    return marks;
  }

  const UUID first = UUID::random();
  const UUID second = UUID::random();
  WaitingList list;
};

TEST_F(WaitingListTest, FirstComeFirstServed) {
  list.append(job(first, 1));
  list.append(job(second, 2));
  list.append(job(UUID::random(), 3));
  EXPECT_EQ(list.size(), 3U);
  EXPECT_EQ(marks(), (std::vector<double>{1, 2, 3}));
}

TEST_F(WaitingListTest, RemovingTakesEveryJobOfThatId) {
  list.append(job(first, 1));
  list.append(job(second, 2));
  list.append(job(first, 3));
  list.remove(first);
  EXPECT_EQ(marks(), std::vector<double>{2});
}

TEST_F(WaitingListTest, RemovingAnUnknownIdChangesNothing) {
  list.append(job(first, 1));
  list.remove(second);
  EXPECT_EQ(list.size(), 1U);
}

TEST_F(WaitingListTest, TheFrontOfTwoWithOneIdIsTheEarlierOne) {
  list.append(job(first, 1));
  list.append(job(first, 2));
  list.removeFront();
  EXPECT_EQ(list.front().progress, 2);
  list.remove(first);
  EXPECT_TRUE(list.empty());
}

TEST_F(WaitingListTest, ARemovedJobMayComeAgainAtTheEnd) {
  list.append(job(first, 1));
  list.append(job(second, 2));
  list.remove(first);
  list.append(job(first, 3));
  EXPECT_EQ(marks(), (std::vector<double>{2, 3}));
}

}  // namespace
}  // namespace tq

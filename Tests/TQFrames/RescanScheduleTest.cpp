#include <gtest/gtest.h>

#include "Support/ManualClock.hpp"
#include "TQFrames/RescanSchedule.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using Durations = std::vector<std::chrono::nanoseconds>;

class RescanScheduleTest : public testing::Test {
 protected:
  void list(std::chrono::nanoseconds duration) {
    schedule_.waitUntilDue({});
    clock_->advance(duration);
    schedule_.noteEnd();
  }

  /// How long the schedule waits now.
  std::chrono::nanoseconds wait() {
    const auto before = clock_->steadyNow();
    schedule_.waitUntilDue({});
    return clock_->steadyNow() - before;
  }

  const std::shared_ptr<test::ManualClock> clock_ = std::make_shared<test::ManualClock>();
  RescanSchedule schedule_{1500ms, clock_};
};

TEST_F(RescanScheduleTest, TheFirstListingIsDueAfterOnePeriod) {
  EXPECT_EQ(wait(), 1500ms);
}

TEST_F(RescanScheduleTest, AListingIsPartOfThePeriod) {
  list(300ms);
  EXPECT_EQ(wait(), 1200ms);
}

TEST_F(RescanScheduleTest, AListingThatTakesMostOfThePeriodIsFollowedByARestAsLong) {
  list(1s);
  EXPECT_EQ(wait(), 1s);
}

TEST_F(RescanScheduleTest, NoRestIsLongerThanThePeriod) {
  list(60s);
  EXPECT_EQ(wait(), 1500ms);
  schedule_.noteEnd();
  list(60s);
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 1500ms);
}

TEST_F(RescanScheduleTest, AnEventIsFollowedByAListingAMomentLater) {
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 100ms);
}

TEST_F(RescanScheduleTest, ManyEventsAreOneListing) {
  for (int i = 0; i < 1000; ++i)
    schedule_.noteEvent();
  list(0ms);
  EXPECT_EQ(wait(), 1500ms);
}

TEST_F(RescanScheduleTest, AnEventDuringAListingIsForTheNextOne) {
  schedule_.waitUntilDue({});
  schedule_.noteEvent();
  schedule_.noteEnd();
  EXPECT_EQ(wait(), 100ms);
}

TEST_F(RescanScheduleTest, AnEventNeverMakesAListingLater) {
  list(0ms);
  clock_->advance(1450ms);
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 50ms);
  schedule_.noteEnd();
  clock_->advance(10s);
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 0ms);
}

TEST_F(RescanScheduleTest, AfterALongListingEventsWaitForSeveralTimesItsDuration) {
  list(200ms);
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 800ms);
}

TEST_F(RescanScheduleTest, TheRestAfterALongListingCountsFromItsEnd) {
  list(200ms);
  clock_->advance(750ms);
  schedule_.noteEvent();
  EXPECT_EQ(wait(), 100ms);
}

TEST_F(RescanScheduleTest, WhereEventsNeverEndListingsTakeAFifthOfTheTime) {
  const auto start = clock_->steadyNow();
  for (int i = 0; i < 100; ++i) {
    schedule_.noteEvent();
    list(250ms);
  }
  EXPECT_GE(clock_->steadyNow() - start, 99 * 5 * 250ms);
}

TEST_F(RescanScheduleTest, AStopEndsTheWaitWithOrWithoutAnEvent) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_THROW(schedule_.waitUntilDue(stop.get_token()), Cancelled);
  schedule_.noteEvent();
  EXPECT_THROW(schedule_.waitUntilDue(stop.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq

#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <stdexcept>

#include "TQFrames/SamplingTimes.hpp"

namespace tq::test {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;

constexpr auto huge = std::numeric_limits<std::int64_t>::max();
constexpr auto least = std::numeric_limits<std::int64_t>::min();

Image mustNotDecode(double, std::stop_token) {
  throw std::logic_error("a picture was decoded");
}

std::vector<double> fixedInterval(double duration, double interval, std::int64_t maxFrames) {
  return sampleTimes(duration,
                     {.strategy = SamplingStrategy::fixedInterval, .intervalSeconds = interval, .maxFrames = maxFrames},
                     mustNotDecode, {});
}

std::vector<double> evenDistribution(double duration, std::int64_t count, std::int64_t maxFrames = 100) {
  return sampleTimes(duration,
                     {.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = count, .maxFrames = maxFrames},
                     mustNotDecode, {});
}

TEST(SampleTimes, WithoutADurationTheOneTimeIsZeroUnderEveryStrategy) {
  constexpr double infinite = std::numeric_limits<double>::infinity();
  for (const auto strategy :
       {SamplingStrategy::fixedInterval, SamplingStrategy::evenDistribution, SamplingStrategy::adaptive})
    for (const double duration : {0.0, -1.0, std::nan(""), infinite})
      EXPECT_THAT(sampleTimes(duration, {.strategy = strategy}, mustNotDecode, {}), ElementsAre(0.0));
}

TEST(SampleTimes, FixedIntervalStartsHalfAStepIn) {
  EXPECT_THAT(fixedInterval(20, 5, 12), ElementsAre(2.5, 7.5, 12.5, 17.5));
  EXPECT_THAT(fixedInterval(17.5, 5, 12), ElementsAre(2.5, 7.5, 12.5)) << "the end itself is no time";
}

TEST(SampleTimes, FixedIntervalStopsAtTheBudget) {
  EXPECT_THAT(fixedInterval(100, 5, 3), ElementsAre(2.5, 7.5, 12.5));
}

TEST(SampleTimes, IntervalsBelowHalfASecondCountAsHalfASecond) {
  for (const double interval : {0.1, 0.0, -4.0, std::nan("")})
    EXPECT_THAT(fixedInterval(1.5, interval, 12), ElementsAre(0.25, 0.75, 1.25)) << interval;
  EXPECT_THAT(fixedInterval(0.2, 0.1, 12), ElementsAre(0.1)) << "the middle, since the first step lies beyond the end";
}

TEST(SampleTimes, AnIntervalBeyondTheClipGivesItsMiddle) {
  EXPECT_THAT(fixedInterval(10, 30, 12), ElementsAre(5.0));
  EXPECT_THAT(fixedInterval(10, std::numeric_limits<double>::infinity(), 12), ElementsAre(5.0));
}

TEST(SampleTimes, ABudgetBelowOneGivesTheMiddle) {
  for (const auto maxFrames : {std::int64_t{0}, std::int64_t{-5}, least}) {
    EXPECT_THAT(fixedInterval(10, 1, maxFrames), ElementsAre(5.0));
    EXPECT_THAT(evenDistribution(10, 8, maxFrames), ElementsAre(5.0));
  }
}

TEST(SampleTimes, EvenDistributionLeavesBothEndsOut) {
  EXPECT_THAT(evenDistribution(40, 3), ElementsAre(10.0, 20.0, 30.0));
}

TEST(SampleTimes, EvenDistributionTakesTheSmallerOfCountAndBudget) {
  EXPECT_THAT(evenDistribution(30, 8, 2), ElementsAre(DoubleNear(10, 1e-9), DoubleNear(20, 1e-9)));
}

TEST(SampleTimes, EvenDistributionOfOneOrNoneIsTheMiddle) {
  for (const auto count : {std::int64_t{1}, std::int64_t{0}, least})
    EXPECT_THAT(evenDistribution(40, count), ElementsAre(20.0));
}

TEST(SampleTimes, HugeWishesOnClipsThatLieStayBounded) {
  EXPECT_EQ(fixedInterval(1e12, 0.1, 1'000'000'000'000).size(), mostSamplingTimes);
  EXPECT_EQ(fixedInterval(1e300, 0.1, huge).size(), mostSamplingTimes);
  const auto even = evenDistribution(1e12, huge, huge);
  EXPECT_EQ(even.size(), mostSamplingTimes);
  EXPECT_LT(even.back(), 1e12);
}

TEST(SampleTimes, AdaptiveDecodesNothingWhenTheGridFitsTheBudget) {
  for (const auto maxFrames : {std::int64_t{30}, std::int64_t{31}, huge}) {
    const auto times = sampleTimes(30, {.maxFrames = maxFrames}, mustNotDecode, {});
    ASSERT_EQ(times.size(), 30u);
    EXPECT_DOUBLE_EQ(times.front(), 0.5);
    EXPECT_DOUBLE_EQ(times[1], 1.5);
    EXPECT_DOUBLE_EQ(times.back(), 29.5);
  }
}

}  // namespace
}  // namespace tq::test

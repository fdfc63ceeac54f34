#include <gmock/gmock.h>
#include <limits>
#include <numeric>

#include "TQFrames/EvenlySpacedSubset.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<int> upTo(int count) {
  std::vector<int> items(static_cast<std::size_t>(count));
  std::iota(items.begin(), items.end(), 0);
  return items;
}

TEST(EvenlySpacedSubset, KeepsBothEnds) {
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 2), ElementsAre(0, 9));
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 4), ElementsAre(0, 3, 6, 9));
}

TEST(EvenlySpacedSubset, PositionsAreCutTowardsZero) {
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 3), ElementsAre(0, 4, 9));
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 5), ElementsAre(0, 2, 4, 6, 9));
}

TEST(EvenlySpacedSubset, OneIsTheFirst) {
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 1), ElementsAre(0));
}

TEST(EvenlySpacedSubset, BelowOneIsNothing) {
  EXPECT_THAT(evenlySpacedSubset(upTo(10), 0), IsEmpty());
  EXPECT_THAT(evenlySpacedSubset(upTo(10), std::numeric_limits<std::int64_t>::min()), IsEmpty());
}

TEST(EvenlySpacedSubset, EnoughForAllLeavesTheListAlone) {
  EXPECT_EQ(evenlySpacedSubset(upTo(4), 4), upTo(4));
  EXPECT_EQ(evenlySpacedSubset(upTo(4), std::numeric_limits<std::int64_t>::max()), upTo(4));
  EXPECT_THAT(evenlySpacedSubset(upTo(0), 3), IsEmpty());
}

}  // namespace
}  // namespace tq::test

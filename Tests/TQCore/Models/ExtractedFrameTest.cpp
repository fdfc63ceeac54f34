#include <cmath>
#include <gtest/gtest.h>

#include "TQCore/Models/ExtractedFrame.hpp"

namespace tq {
namespace {

std::string formatted(double seconds) {
  return CMTimecode{seconds}.formatted();
}

TEST(CMTimecode, ShowsHoursMinutesSecondsAndMilliseconds) {
  EXPECT_EQ(formatted(0), "00:00:00.000");
  EXPECT_EQ(formatted(3661.5), "01:01:01.500");
  EXPECT_EQ(formatted(59.999), "00:00:59.999");
}

TEST(CMTimecode, RoundsToTheNearestMillisecondHalvesAwayFromZero) {
  EXPECT_EQ(formatted(0.0004), "00:00:00.000");
  EXPECT_EQ(formatted(0.0005), "00:00:00.001");
  EXPECT_EQ(formatted(59.9996), "00:01:00.000");
}

TEST(CMTimecode, NeitherCutsNorWrapsHours) {
  EXPECT_EQ(formatted(360'000), "100:00:00.000");
  EXPECT_EQ(formatted(90'000), "25:00:00.000");
}

TEST(CMTimecode, TruncatesNegativePositionsTowardsZero) {
  EXPECT_EQ(formatted(-1.5), "00:00:-1.-500");
  EXPECT_EQ(formatted(-3661.25), "-1:-1:-1.-250");
}

TEST(CMTimecodeDeathTest, EndsTheProgramOnAPositionThatIsNone) {
  EXPECT_DEATH(formatted(std::nan("")), "");
  EXPECT_DEATH(formatted(HUGE_VAL), "");
  EXPECT_DEATH(formatted(-1e300), "");
  EXPECT_DEATH(formatted(0x1p63 / 1000), "");
}

}  // namespace
}  // namespace tq

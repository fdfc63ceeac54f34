#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "TQDescription/Export/Timecode.hpp"

namespace tq {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr std::int64_t mostFrames = std::int64_t{1} << 53;

/// A frame rate as the exact fraction that `value` is nearest to.
struct Rate {
  std::int64_t num, den;

  double value() const { return static_cast<double>(num) / static_cast<double>(den); }
  std::int64_t nominal() const { return std::max<std::int64_t>((2 * num + den) / (2 * den), 1); }
};

constexpr Rate rates[] = {{24000, 1001}, {23976, 1000}, {24, 1},     {25, 1},       {30000, 1001},  {2997, 100},
                          {30, 1},       {50, 1},       {5994, 100}, {60000, 1001}, {60, 1},        {25, 2},
                          {15, 1},       {1, 1},        {1, 3},      {48, 1},       {120000, 1001}, {120, 1},
                          {240, 1},      {10, 1},       {12345, 997}};

/// The numbers of frames to look at: every one of two minutes, and those around each whole hour of a hundred.
std::vector<std::int64_t> framesToLookAt(const Rate& rate) {
  std::vector<std::int64_t> numbers;
  for (std::int64_t frame = 0; frame < 120 * rate.nominal(); ++frame)
    numbers.push_back(frame);
  for (std::int64_t hour = 1; hour <= 100; ++hour)
    for (std::int64_t around = -2; around <= 2; ++around)
      numbers.push_back(hour * 3600 * rate.nominal() + around);
  return numbers;
}

double startOf(std::int64_t frame, const Rate& rate) {
  return static_cast<double>(frame * rate.den) / static_cast<double>(rate.num);
}

// Counting

TEST(TimecodeFrames, TheStartOfEveryFrameIsThatFrameAtEveryRate) {
  for (const Rate& rate : rates) {
    std::int64_t wrong = 0;
    for (const std::int64_t frame : framesToLookAt(rate))
      wrong += Timecode::frames(startOf(frame, rate), rate.value()) != frame;
    EXPECT_EQ(wrong, 0) << rate.num << "/" << rate.den;
  }
}

TEST(TimecodeFrames, EveryMillisecondGoesToTheNearestFrame) {
  // In whole numbers: ms / 1000 * num / den, rounded; the few times that lie half-way are left out.
  for (const Rate& rate : rates) {
    std::int64_t wrong = 0, seen = 0;
    for (std::int64_t ms = 0; ms < 100'000'000; ms += 1009) {
      const std::int64_t twice = 2 * ms * rate.num + 1000 * rate.den;
      if (twice % (2000 * rate.den) == 0) continue;
      ++seen;
      wrong += Timecode::frames(static_cast<double>(ms) / 1000, rate.value()) != twice / (2000 * rate.den);
    }
    EXPECT_EQ(wrong, 0) << rate.num << "/" << rate.den;
    EXPECT_GT(seen, 90'000);
  }
}

TEST(TimecodeFrames, HalfAFrameIsRoundedUp) {
  EXPECT_EQ(Timecode::frames(0.5, 1), 1);
  EXPECT_EQ(Timecode::frames(1.5, 1), 2);
  EXPECT_EQ(Timecode::frames(0.499, 1), 0);
}

TEST(TimecodeFrames, AtARateThatIsNoWholeNumberTheClockIsAheadOfTheFrames) {
  EXPECT_EQ(Timecode::frames(1.0, 29.97), 30);
  EXPECT_EQ(Timecode::frames(3600.0, 29.97), 107892);
}

TEST(TimecodeFrames, ANegativeTimeCountsAsZero) {
  EXPECT_EQ(Timecode::frames(-1.0, 25), 0);
  EXPECT_EQ(Timecode::frames(-infinity, 25), 0);
}

TEST(TimecodeFrames, ARateThatIsNotAboveZeroGivesZero) {
  for (const double rate : {0.0, -0.0, -25.0, -infinity, notANumber})
    EXPECT_EQ(Timecode::frames(10, rate), 0) << rate;
}

TEST(TimecodeFrames, ValuesBeyondAllReasonStopAtTheLargestCount) {
  EXPECT_EQ(Timecode::frames(1e300, 25), mostFrames);
  EXPECT_EQ(Timecode::frames(1e300, 1e300), mostFrames);
  EXPECT_EQ(Timecode::frames(infinity, 25), mostFrames);
  EXPECT_EQ(Timecode::frames(notANumber, 25), 0);
}

// Splitting

TEST(TimecodeSMPTE, EveryFrameIsSplitWithTheNominalRate) {
  for (const Rate& rate : rates) {
    std::int64_t wrong = 0;
    for (const std::int64_t frame : framesToLookAt(rate)) {
      const std::int64_t perMinute = 60 * rate.nominal(), perHour = 60 * perMinute;
      const SMPTETimecode expected{frame / perHour, frame % perHour / perMinute, frame % perMinute / rate.nominal(),
                                   frame % rate.nominal()};
      wrong += Timecode::smpte(startOf(frame, rate), rate.value()) != expected;
    }
    EXPECT_EQ(wrong, 0) << rate.num << "/" << rate.den;
  }
}

TEST(TimecodeSMPTE, DriftsFromTheClockAsNonDropFrameMust) {
  EXPECT_EQ(Timecode::smpte(1.0, 29.97).formatted(), "00:00:01:00");
  EXPECT_EQ(Timecode::smpte(3600.0, 29.97).formatted(), "00:59:56:12");
  EXPECT_EQ(Timecode::smpte(3600.0, 23.976).formatted(), "00:59:56:10");
  EXPECT_EQ(Timecode::smpte(3600.0, 59.94).formatted(), "00:59:56:24");
  EXPECT_EQ(Timecode::smpte(3600.0, 25).formatted(), "01:00:00:00");
}

TEST(TimecodeSMPTE, ANegativeTimeCountsAsZero) {
  EXPECT_EQ(Timecode::smpte(-5, 25), SMPTETimecode{});
}

TEST(TimecodeSMPTE, ARateThatIsNotAboveZeroGivesZero) {
  for (const double rate : {0.0, -25.0, notANumber})
    EXPECT_EQ(Timecode::smpte(10, rate), SMPTETimecode{}) << rate;
}

TEST(TimecodeSMPTE, ARateBelowOneHasOneFrameASecond) {
  EXPECT_EQ(Timecode::smpte(100, 0.1), (SMPTETimecode{.seconds = 10}));
}

TEST(TimecodeSMPTE, HoursDoNotWrapAtADay) {
  EXPECT_EQ(Timecode::smpte(25 * 3600, 25).formatted(), "25:00:00:00");
  EXPECT_EQ(Timecode::smpte(100 * 3600, 25).formatted(), "100:00:00:00");
}

TEST(TimecodeSMPTE, ValuesBeyondAllReasonAreStillATimecode) {
  EXPECT_EQ(Timecode::smpte(1e300, 1).formatted(), "2501999792983:36:32:00");
  EXPECT_EQ(Timecode::smpte(1e300, 1e300).formatted(), "00:00:01:00");
}

TEST(SMPTETimecode, IsWrittenWithTwoDigitsOrMore) {
  EXPECT_EQ(SMPTETimecode{}.formatted(), "00:00:00:00");
  EXPECT_EQ((SMPTETimecode{1, 2, 3, 4}).formatted(), "01:02:03:04");
  EXPECT_EQ((SMPTETimecode{100, 59, 59, 119}).formatted(), "100:59:59:119");
}

TEST(SMPTETimecode, EqualOnesHashEquallyAndEveryPartCounts) {
  EXPECT_EQ(hashOf(SMPTETimecode{1, 2, 3, 4}), hashOf(SMPTETimecode{1, 2, 3, 4}));
  for (const SMPTETimecode& other : {SMPTETimecode{2, 1, 3, 4}, {1, 2, 4, 3}, {0, 2, 3, 4}, {1, 2, 3, 0}})
    EXPECT_NE(hashOf(SMPTETimecode{1, 2, 3, 4}), hashOf(other)) << other.formatted();
}

// Back to seconds

TEST(TimecodeSeconds, AreThoseOfTheFrameThatTheTimecodeNames) {
  for (const Rate& rate : rates) {
    std::int64_t wrong = 0;
    for (const std::int64_t frame : framesToLookAt(rate)) {
      const double seconds = startOf(frame, rate);
      const double back = Timecode::seconds(Timecode::smpte(seconds, rate.value()), rate.value());
      // A rate below one half is rounded to no frames at all on the way back.
      if (rate.value() >= 0.5) wrong += std::abs(back - seconds) > 1e-12 * seconds;
    }
    EXPECT_EQ(wrong, 0) << rate.num << "/" << rate.den;
  }
}

TEST(TimecodeSeconds, FollowTheFormula) {
  EXPECT_EQ(Timecode::seconds({1, 2, 3, 4}, 25), 3723 + 4 / 25.0);
  EXPECT_EQ(Timecode::seconds({0, 59, 56, 12}, 29.97), 107892 / 29.97);
  EXPECT_EQ(Timecode::seconds({0, 0, 7, 1}, 0.25), 4.0) << "the nominal rate is not raised to 1 here";
}

TEST(TimecodeSeconds, ARateThatIsNotAboveZeroGivesZero) {
  for (const double rate : {0.0, -25.0, notANumber})
    EXPECT_EQ(Timecode::seconds({1, 2, 3, 4}, rate), 0.0) << rate;
}

TEST(TimecodeSeconds, TheLargestPartsDoNotOverflow) {
  constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
  EXPECT_NEAR(Timecode::seconds({largest, largest, largest, largest}, 25), 3661.04 * 0x1p63, 1e10);
}

// The timecode of a shot

TEST(SidecarTimecode, ReadsHoursMinutesAndSeconds) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:00:05"), 5.0);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:01:02.5"), 62.5);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("1:2:3"), 3723.0);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:00:01.234"), 1.234);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:00:00.000"), 0.0);
}

TEST(SidecarTimecode, TrimsBlanksAtBothEndsOnly) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("  00:00:05   "), 5.0);
  for (const char* text : {"00: 00:05", "00:00 :05", "00:00:0 5", "\t00:00:05", "00:00:05\n", "00:00:05\xC2\xA0"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, WantsExactlyThreeParts) {
  for (const char* text : {"", " ", ":", "5", "00:05", "00:00:00:05", "::", ":::", "00::05", ":00:05", "00:00:"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, NoPartMayBeNegative) {
  for (const char* text : {"-1:00:00", "00:-1:00", "00:00:-1", "00:00:-1.5", "00:00:1.-5", "00:00:-0.5.1"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, AZeroWithASignIsNotNegative) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("-0:00:05"), 5.0);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("+1:+2:+3"), 3723.0);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("0:0:-0.5"), 0.5);
}

TEST(SidecarTimecode, HoursAndMinutesAreWholeNumbers) {
  for (const char* text :
       {"1.0:00:00", "00:1.5:00", "1e1:00:00", "0x1:00:00", "a:00:00", "00:\u0661:00", "9223372036854775808:00:00"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, NoPartIsLimitedToFiftyNine) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("100:75:90.5"), 100 * 3600 + 75 * 60 + 90.5);
}

TEST(SidecarTimecode, SecondsWithoutAPointAreAnyNumber) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("0:0:1e2"), 100.0);
  for (const char* text : {"0:0:x", "0:0:1s", "0:0:inf", "0:0:nan", "0:0:0x10", "0:0:1e999", "0:0:1,5"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, BeforeAPointStandsAWholeNumberAndBehindItAFraction) {
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:00:.5"), std::nullopt);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("00:00:5."), 5.0);
  EXPECT_EQ(Timecode::secondsFromSidecarTimecode("0:0:5.1e1"), 6.0);
  for (const char* text : {"0:0:1e2.5", "0:0:1.2.3", "0:0:1.x", "0:0:.", "0:0:5.+1", "0:0:5. 1"})
    EXPECT_EQ(Timecode::secondsFromSidecarTimecode(text), std::nullopt) << text;
}

TEST(SidecarTimecode, LargePartsStayFinite) {
  const auto seconds = Timecode::secondsFromSidecarTimecode("9223372036854775807:9223372036854775807:1e308");
  ASSERT_TRUE(seconds);
  EXPECT_TRUE(std::isfinite(*seconds));
}

TEST(SidecarTimecode, ReadsWhatWasWrittenOfEveryMillisecond) {
  std::mt19937 random(1);
  int wrong = 0;
  for (int count = 0; count < 100'000; ++count) {
    const int ms = static_cast<int>(random() % 360'000'000);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", ms / 3'600'000, ms / 60'000 % 60, ms / 1000 % 60,
                  ms % 1000);
    const auto seconds = Timecode::secondsFromSidecarTimecode(text);
    wrong += !seconds || std::llround(*seconds * 1000) != ms;
  }
  EXPECT_EQ(wrong, 0);
}

// The length of a frame

TEST(FrameDuration, TheRatesInUseAreExact) {
  const std::pair<double, const char*> known[] = {
      {24000.0 / 1001, "1001/24000s"}, {23.976, "1001/24000s"}, {24, "1/24s"}, {25, "1/25s"},
      {30000.0 / 1001, "1001/30000s"}, {29.97, "1001/30000s"},  {30, "1/30s"}, {50, "1/50s"},
      {60000.0 / 1001, "1001/60000s"}, {59.94, "1001/60000s"},  {60, "1/60s"}};
  for (const auto& [rate, text] : known)
    EXPECT_EQ(Timecode::fcpxmlFrameDuration(rate), text) << rate;
}

TEST(FrameDuration, ARateLessThanAHundredthAwayCountsAsTheKnownOne) {
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(23.98), "1001/24000s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(24.0099), "1/24s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(24.9901), "1/25s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(29.9605), "1001/30000s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(24.011), "100/2401s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(24.98), "100/2498s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(60.02), "100/6002s");
}

TEST(FrameDuration, AnyOtherRateIsTakenInHundredths) {
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(12.5), "100/1250s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(15), "100/1500s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(119.88), "100/11988s");
  EXPECT_EQ(Timecode::fcpxmlFrameDuration(0.125), "100/13s") << "half away from zero";
}

TEST(FrameDuration, ARateWithoutAHundredthIsTakenAsOne) {
  for (const double rate : {0.004, 0.0, -25.0, -infinity, notANumber})
    EXPECT_EQ(Timecode::fcpxmlFrameDuration(rate), "100/1s") << rate;
}

TEST(FrameDuration, ValuesBeyondAllReasonStopAtTheLargestCount) {
  EXPECT_EQ(Timecode::frameDuration(1e300), (FrameDuration{100, mostFrames}));
  EXPECT_EQ(Timecode::frameDuration(infinity), (FrameDuration{100, mostFrames}));
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>

#include "TQPlatform/Text/DateText.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using std::chrono::sys_days;
using std::chrono::year;

const Date tenOClock = sys_days(year(2026) / 11 / 21) + 10h;

TEST(ISO8601, WritesWholeSecondsInUTC) {
  EXPECT_EQ(iso8601(tenOClock), "2026-11-21T10:00:00Z");
  EXPECT_EQ(iso8601(tenOClock + 1h + 2min + 3s), "2026-11-21T11:02:03Z");
  EXPECT_EQ(iso8601(Date()), "1970-01-01T00:00:00Z");
}

TEST(ISO8601, CutsFractionsTowardsThePast) {
  EXPECT_EQ(iso8601(tenOClock + 999ms), "2026-11-21T10:00:00Z");
  EXPECT_EQ(iso8601(Date() - 1ms), "1969-12-31T23:59:59Z");
}

TEST(ParseISO8601, ReadsWhatIsWritten) {
  EXPECT_EQ(parseISO8601("2026-11-21T10:00:00Z"), tenOClock);
  EXPECT_EQ(parseISO8601("1969-12-31T23:59:59Z"), Date() - 1s);
}

TEST(ParseISO8601, ReadsOffsets) {
  EXPECT_EQ(parseISO8601("2026-11-21T11:00:00+01:00"), tenOClock);
  EXPECT_EQ(parseISO8601("2026-11-21T04:30:00-05:30"), tenOClock);
  EXPECT_EQ(parseISO8601("2026-11-22T00:30:00+14:30"), tenOClock);
  EXPECT_EQ(parseISO8601("2026-11-21T10:00:00+00:00"), tenOClock);
}

TEST(ParseISO8601, KnowsLeapYears) {
  EXPECT_TRUE(parseISO8601("2024-02-29T00:00:00Z"));
  EXPECT_TRUE(parseISO8601("2000-02-29T00:00:00Z"));
  EXPECT_FALSE(parseISO8601("2026-02-29T00:00:00Z"));
  EXPECT_FALSE(parseISO8601("2100-02-29T00:00:00Z"));
}

class RefusedDate : public testing::TestWithParam<const char*> {};

TEST_P(RefusedDate, IsAbsent) {
  EXPECT_FALSE(parseISO8601(GetParam()));
}

INSTANTIATE_TEST_SUITE_P(OtherForms, RefusedDate,
                         testing::Values("", "2026-11-21", "2026-11-21T10:00Z", "2026-11-21T10:00:00.5Z",
                                         "2026-11-21T10:00:00,5Z", "2026-11-21 10:00:00Z", "2026-11-21t10:00:00Z",
                                         "2026-11-21T10:00:00z", "2026-11-21T10:00:00", " 2026-11-21T10:00:00Z",
                                         "2026-11-21T10:00:00Z ", "20261121T100000Z", "26-11-21T10:00:00Z",
                                         "2026-1-21T10:00:00ZZ", "+2026-11-21T10:00:00Z", "2026-11-21T10:00:0xZ",
                                         "2026-11-21T10:00:00+0100", "2026-11-21T10:00:00+01",
                                         "2026-11-21T10:00:00*01:00", "2026-11-21T10:00:00+01:00Z"));

INSTANTIATE_TEST_SUITE_P(ImpossibleDates, RefusedDate,
                         testing::Values("2026-00-21T10:00:00Z", "2026-13-21T10:00:00Z", "2026-11-31T10:00:00Z",
                                         "2026-11-00T10:00:00Z", "2026-11-21T24:00:00Z", "2026-11-21T10:60:00Z",
                                         "2026-11-21T10:00:60Z", "2026-11-21T10:00:00+24:00",
                                         "2026-11-21T10:00:00+01:60"));

INSTANTIATE_TEST_SUITE_P(DatesBeyondTheClock, RefusedDate,
                         testing::Values("0001-01-01T00:00:00Z", "1677-01-01T00:00:00Z", "2263-01-01T00:00:00Z",
                                         "9999-12-31T23:59:59Z"));

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>

#include "TQFrames/ISO6709.hpp"

namespace tq::test {
namespace {

GPS at(double latitude, double longitude, std::optional<double> altitude = std::nullopt) {
  return {.latitude = latitude, .longitude = longitude, .altitudeMeters = altitude, .placeName = std::nullopt};
}

TEST(ParseISO6709, ReadsLatitudeLongitudeAndAltitude) {
  EXPECT_EQ(parseISO6709("+37.7749-122.4194+012.000/"), at(37.7749, -122.4194, 12));
}

TEST(ParseISO6709, TheAltitudeMayBeMissing) {
  EXPECT_EQ(parseISO6709("+48.8577+002.295/"), at(48.8577, 2.295));
}

TEST(ParseISO6709, TheAltitudeMayBeBelowTheSea) {
  EXPECT_EQ(parseISO6709("+31.5+035.5-430/"), at(31.5, 35.5, -430));
}

TEST(ParseISO6709, AnAltitudeThatIsNoNumberStaysAbsent) {
  EXPECT_EQ(parseISO6709("+48.8577+002.295+high/"), at(48.8577, 2.295));
}

TEST(ParseISO6709, FurtherPiecesAreIgnored) {
  EXPECT_EQ(parseISO6709("+1+2+3+4-5/"), at(1, 2, 3));
}

TEST(ParseISO6709, WhiteSpaceAtTheEndsIsDropped) {
  EXPECT_EQ(parseISO6709(" \n+1+2/\t\n"), at(1, 2));
}

TEST(ParseISO6709, TheSlashMayBeMissing) {
  EXPECT_EQ(parseISO6709("+1+2"), at(1, 2));
}

TEST(ParseISO6709, OnlyOneSlashIsDropped) {
  EXPECT_FALSE(parseISO6709("+1+2//"));
}

TEST(ParseISO6709, TheFirstNumberNeedsNoSign) {
  EXPECT_EQ(parseISO6709("48.5-2.25/"), at(48.5, -2.25));
}

TEST(ParseISO6709, TheBoundsBelongToTheRange) {
  EXPECT_EQ(parseISO6709("+90+180/"), at(90, 180));
  EXPECT_EQ(parseISO6709("-90-180/"), at(-90, -180));
}

TEST(ParseISO6709, BeyondTheRangeIsAbsent) {
  EXPECT_FALSE(parseISO6709("91.0+000.0/"));
  EXPECT_FALSE(parseISO6709("-90.1+000.0/"));
  EXPECT_FALSE(parseISO6709("+00+180.01/"));
}

TEST(ParseISO6709, DegreesAndMinutesAreNotConverted) {
  EXPECT_FALSE(parseISO6709("+4051.30-07400.36/"));
}

TEST(ParseISO6709, FewerThanTwoPiecesAreAbsent) {
  for (const char* text : {"", "/", " ", "+48.5/", "48.5", "+", "somewhere"})
    EXPECT_FALSE(parseISO6709(text)) << text;
}

TEST(ParseISO6709, APieceThatIsNoNumberIsAbsent) {
  for (const char* text : {"++48+2/", "+48-/", "+4x+2/", "+48 +2/", "+nan+2/", "+1e-5+2/"})
    EXPECT_FALSE(parseISO6709(text)) << text;
}

}  // namespace
}  // namespace tq::test

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "TQPlatform/Text/NumberText.hpp"

namespace tq {
namespace {

TEST(ParseDouble, ReadsSignPointAndExponent) {
  EXPECT_EQ(parseDouble("0"), 0.0);
  EXPECT_EQ(parseDouble("-12.5"), -12.5);
  EXPECT_EQ(parseDouble("+3.25"), 3.25);
  EXPECT_EQ(parseDouble("5."), 5.0);
  EXPECT_EQ(parseDouble(".5"), 0.5);
  EXPECT_EQ(parseDouble("007"), 7.0);
  EXPECT_EQ(parseDouble("1e3"), 1000.0);
  EXPECT_EQ(parseDouble("25E-1"), 2.5);
  EXPECT_EQ(parseDouble("1.5e+2"), 150.0);
  EXPECT_EQ(parseDouble("5e-324"), std::numeric_limits<double>::denorm_min());
}

TEST(ParseDouble, WantsTheWholeText) {
  for (const char* text : {"", " 1", "1 ", "1\n", "1x", "1,5", "1e", "1e+", "e5", ".", "-", "+", "-.", "--1", "+-1",
                           "-+1", "++1", "1.2.3", "1-2"})
    EXPECT_FALSE(parseDouble(text)) << '"' << text << '"';
}

TEST(ParseDouble, KnowsNoHexadecimalInfinityOrNotANumber) {
  for (const char* text : {"0x10", "0x1p3", "inf", "-inf", "infinity", "nan", "NaN", "nan(0)"})
    EXPECT_FALSE(parseDouble(text)) << text;
}

TEST(ParseDouble, RefusesWhatNoDoubleHolds) {
  EXPECT_FALSE(parseDouble("1e400"));
  EXPECT_FALSE(parseDouble("-1e400"));
  EXPECT_FALSE(parseDouble("1e-400"));
}

TEST(ParseInteger, ReadsDigitsWithASign) {
  EXPECT_EQ(parseInteger("0"), 0);
  EXPECT_EQ(parseInteger("+42"), 42);
  EXPECT_EQ(parseInteger("-42"), -42);
  EXPECT_EQ(parseInteger("9223372036854775807"), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(parseInteger("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
}

TEST(ParseInteger, RefusesEverythingElse) {
  for (const char* text : {"", "-", "+", "+-1", " 1", "1 ", "1.0", "1e3", "0x1", "9223372036854775808"})
    EXPECT_FALSE(parseInteger(text)) << '"' << text << '"';
}

TEST(FixedText, RoundsAsCDoes) {
  EXPECT_EQ(fixedText(2.5, 0), "2");
  EXPECT_EQ(fixedText(3.5, 0), "4");
  EXPECT_EQ(fixedText(0.125, 2), "0.12");
  EXPECT_EQ(fixedText(1.005, 2), "1.00");
  EXPECT_EQ(fixedText(-0.001, 2), "-0.00");
  EXPECT_EQ(fixedText(12.0, 3), "12.000");
}

TEST(FixedText, HasRoomForTheLongestNumbers) {
  EXPECT_EQ(fixedText(-std::numeric_limits<double>::max(), 20).size(), 331u);
  EXPECT_EQ(fixedText(5e-324, 400).size(), 402u);
}

TEST(PaddedText, FillsUpWithZerosAndNeverCuts) {
  EXPECT_EQ(paddedText(7, 2), "07");
  EXPECT_EQ(paddedText(42, 2), "42");
  EXPECT_EQ(paddedText(100, 2), "100");
  EXPECT_EQ(paddedText(0, 3), "000");
  EXPECT_EQ(paddedText(5, 0), "5");
  EXPECT_EQ(paddedText(5, -3), "5");
}

TEST(PaddedText, CountsTheSignAsCDoes) {
  EXPECT_EQ(paddedText(-5, 2), "-5");
  EXPECT_EQ(paddedText(-5, 4), "-005");
  EXPECT_EQ(paddedText(std::numeric_limits<std::int64_t>::min(), 22), "-009223372036854775808");
}

TEST(ShortestText, AlwaysLooksLikeADouble) {
  EXPECT_EQ(shortestText(30), "30.0");
  EXPECT_EQ(shortestText(0), "0.0");
  EXPECT_EQ(shortestText(-0.0), "-0.0");
  EXPECT_EQ(shortestText(29.97), "29.97");
}

TEST(ShortestText, TurnsToExponentsForTheVeryLargeAndTheVerySmall) {
  EXPECT_EQ(shortestText(100000), "100000.0");
  EXPECT_EQ(shortestText(1e14), "100000000000000.0");
  EXPECT_EQ(shortestText(1e15), "1e+15");
  EXPECT_EQ(shortestText(1.5e300), "1.5e+300");
  EXPECT_EQ(shortestText(0.0001), "0.0001");
  EXPECT_EQ(shortestText(0.00001), "1e-05");
}

TEST(ShortestText, ReadsBackAsTheSameDouble) {
  for (const double value : {0.1, 1.0 / 3, 2.0 / 3, 123456789.123456789, 5e-324, 1.7976931348623157e308, 1e22, 9.5e-5,
                             -98765.4321, 123456789012345.6, 1e14 + 0.015625})
    EXPECT_EQ(parseDouble(shortestText(value)), value) << shortestText(value);
}

TEST(WholeNumber, IsANumberWithoutAFractionThatFits) {
  EXPECT_EQ(wholeNumber(-0.0), 0);
  EXPECT_EQ(wholeNumber(2.0), 2);
  EXPECT_EQ(wholeNumber(-0x1p63), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(wholeNumber(0x1p63 - 1024), std::numeric_limits<std::int64_t>::max() - 1023);
  for (const double number : {0.5, -2.5, 0x1p63, -0x1p63 - 2048, 1e300, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(wholeNumber(number), std::nullopt) << number;
}

}  // namespace
}  // namespace tq

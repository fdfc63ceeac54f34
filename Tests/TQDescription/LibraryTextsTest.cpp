#include <gtest/gtest.h>
#include <limits>

#include "TQDescription/LibraryTexts.hpp"

namespace tq {
namespace {

LoadedSidecar sidecar(std::optional<bool> flagged = std::nullopt, std::optional<bool> reviewFlag = std::nullopt) {
  DescriptionResult result;
  result.flagged = flagged;
  result.reviewFlag = reviewFlag;
  return {.sidecarURL = "/x.description.json", .result = result};
}

TEST(LibraryTexts, OneIsNoPlural) {
  EXPECT_EQ(LibraryTexts::counted(0, "clip"), "0 clips");
  EXPECT_EQ(LibraryTexts::counted(1, "clip"), "1 clip");
  EXPECT_EQ(LibraryTexts::counted(2, "range"), "2 ranges");
  EXPECT_EQ(LibraryTexts::skipped(1), "Skipped 1 malformed sidecar");
  EXPECT_EQ(LibraryTexts::skipped(2), "Skipped 2 malformed sidecars");
}

TEST(LibraryTexts, CountsClipsAndWhatNeedsAttention) {
  EXPECT_EQ(LibraryTexts::counts({}), "0 clips · 0 flagged · 0 need review");
  EXPECT_EQ(LibraryTexts::counts({sidecar(true)}), "1 clip · 1 flagged · 0 need review");
  EXPECT_EQ(LibraryTexts::counts({sidecar(true, true), sidecar(false, true), sidecar({}, false), sidecar()}),
            "4 clips · 1 flagged · 2 need review");
}

TEST(LibraryTexts, TellsHowManyMatch) {
  EXPECT_EQ(LibraryTexts::matches(3, 12), "3 of 12 match");
}

TEST(MatchPercent, IsTheShareOfTheBestScoreRounded) {
  EXPECT_EQ(LibraryTexts::matchPercent(4, 4), 100);
  EXPECT_EQ(LibraryTexts::matchPercent(1, 3), 33);
  EXPECT_EQ(LibraryTexts::matchPercent(2, 3), 67);
  EXPECT_EQ(LibraryTexts::matchPercent(1, 8), 13);
  EXPECT_EQ(LibraryTexts::matchPercent(1e-9, 1), 0);
}

TEST(MatchPercent, IsZeroUnlessBothScoresAreAboveZero) {
  EXPECT_EQ(LibraryTexts::matchPercent(0, 4), 0);
  EXPECT_EQ(LibraryTexts::matchPercent(-1, 4), 0);
  EXPECT_EQ(LibraryTexts::matchPercent(4, 0), 0);
  EXPECT_EQ(LibraryTexts::matchPercent(std::numeric_limits<double>::quiet_NaN(), 1), 0);
}

TEST(MatchPercent, AScoreAboveTheFirstIsNoMoreThanAll) {
  EXPECT_EQ(LibraryTexts::matchPercent(std::numeric_limits<double>::infinity(), 1), 100);
}

}  // namespace
}  // namespace tq

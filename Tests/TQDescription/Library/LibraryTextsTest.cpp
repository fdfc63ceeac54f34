#include <gtest/gtest.h>
#include <limits>

#include "TQDescription/Library/LibraryTexts.hpp"

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

TEST(LibraryTexts, EveryFacetIsOfferedOnce) {
  const auto& offered = LibraryTexts::facetBarFields;
  EXPECT_EQ(std::set<FacetField>(offered.begin(), offered.end()).size(), allCases<FacetField>().size());
}

TEST(LibraryTexts, SayWhatAnActionCameTo) {
  EXPECT_EQ(LibraryTexts::loadFailed("x"), "Load failed: x");
  EXPECT_EQ(LibraryTexts::indexFailed("x"), "Write failed: x");
  EXPECT_EQ(LibraryTexts::exportFailed("x"), "Export failed: x");
  EXPECT_EQ(LibraryTexts::trimFailed("x"), "Clip trim failed: x");
  EXPECT_EQ(LibraryTexts::exported(1, "/out/beach_walk.fcpxml"), "Exported 1 range → beach_walk.fcpxml");
  EXPECT_EQ(LibraryTexts::exported(3, "a.csv"), "Exported 3 ranges → a.csv");
  EXPECT_EQ(LibraryTexts::trimming(1), "Trimming 1 clip…");
  EXPECT_EQ(LibraryTexts::trimmed(2, "/out/cuts"), "Trimmed 2 clips → cuts");
  EXPECT_EQ(LibraryTexts::enqueued(1), "Enqueued 1 clip for re-rate. Switch to Queue to watch progress.");
  EXPECT_EQ(LibraryTexts::enqueued(2), "Enqueued 2 clips for re-rate. Switch to Queue to watch progress.");
}

TEST(LibraryTexts, AFolderHasANameHoweverItIsWritten) {
  EXPECT_EQ(LibraryTexts::trimmed(1, "/out/cuts/"), "Trimmed 1 clip → cuts");
  EXPECT_EQ(LibraryTexts::trimmed(1, "cuts"), "Trimmed 1 clip → cuts");
  EXPECT_EQ(LibraryTexts::trimmed(1, "/"), "Trimmed 1 clip → /");
  EXPECT_EQ(LibraryTexts::trimmed(1, ".."), "Trimmed 1 clip → ..");
  EXPECT_EQ(LibraryTexts::trimmed(1, "caf\xC3"), "Trimmed 1 clip → caf\uFFFD");
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

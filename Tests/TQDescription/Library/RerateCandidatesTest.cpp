#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQDescription/Library/LibraryModel.hpp"

namespace tq {

void PrintTo(const RerateCandidate& candidate, std::ostream* stream) {
  *stream << candidate.sidecarURL << ", " << candidate.sourceURL << ", " << candidate.reason.value_or("no reason");
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr bool withRefusals = true;
constexpr bool withoutRefusals = false;

struct Flags {
  std::optional<bool> flagged;
  std::optional<bool> reviewFlag;
  std::optional<std::string> reviewReason;
};

LoadedSidecar sidecar(const std::string& stem, Flags flags, const std::string& filename) {
  DescriptionResult result;
  result.source.filename = filename;
  result.flagged = flags.flagged;
  result.reviewFlag = flags.reviewFlag;
  result.reviewReason = std::move(flags.reviewReason);
  return {.sidecarURL = "/v/" + stem + ".description.json", .result = result};
}

LoadedSidecar sidecar(Flags flags) {
  return sidecar("clip", std::move(flags), "clip.mov");
}

RerateCandidate candidate(std::optional<std::string> reason) {
  return {.sidecarURL = "/v/clip.description.json", .sourceURL = "/v/clip.mov", .reason = std::move(reason)};
}

std::vector<RerateCandidate> candidates(const LoadedSidecar& sidecar, bool includeRefusals) {
  return LibraryModel::rerateCandidates({sidecar}, includeRefusals);
}

TEST(RerateCandidates, LeavesClipsInOrderAlone) {
  for (const Flags& flags : {Flags{}, Flags{false, false, std::nullopt}, Flags{std::nullopt, std::nullopt, "blurry"}})
    EXPECT_THAT(candidates(sidecar(flags), withRefusals), IsEmpty());
}

TEST(RerateCandidates, ProposesAClipInReviewWithItsReason) {
  for (const bool includeRefusals : {true, false}) {
    EXPECT_THAT(candidates(sidecar({std::nullopt, true, "blurry"}), includeRefusals), ElementsAre(candidate("blurry")));
    EXPECT_THAT(candidates(sidecar({std::nullopt, true, ""}), includeRefusals), ElementsAre(candidate("")));
    EXPECT_THAT(candidates(sidecar({false, true, std::nullopt}), includeRefusals),
                ElementsAre(candidate(std::nullopt)));
  }
}

TEST(RerateCandidates, ProposesARefusedClipOnlyWhenAskedTo) {
  EXPECT_THAT(candidates(sidecar({true, std::nullopt, std::nullopt}), withoutRefusals), IsEmpty());
  EXPECT_THAT(candidates(sidecar({true, std::nullopt, std::nullopt}), withRefusals),
              ElementsAre(candidate("model refused")));
  EXPECT_THAT(candidates(sidecar({true, false, std::nullopt}), withRefusals), ElementsAre(candidate("model refused")));
}

TEST(RerateCandidates, PrefersTheReasonThatTheModelGave) {
  EXPECT_THAT(candidates(sidecar({true, std::nullopt, "too dark"}), withRefusals), ElementsAre(candidate("too dark")));
}

TEST(RerateCandidates, GivesNoReasonForARefusedClipInReview) {
  for (const bool includeRefusals : {true, false})
    EXPECT_THAT(candidates(sidecar({true, true, std::nullopt}), includeRefusals), ElementsAre(candidate(std::nullopt)));
}

TEST(RerateCandidates, DoesNotAskWhetherTheClipIsStillThere) {
  EXPECT_FALSE(std::filesystem::exists("/v/clip.mov"));
  EXPECT_THAT(candidates(sidecar({true, std::nullopt, std::nullopt}), withRefusals),
              ElementsAre(candidate("model refused")));
}

TEST(RerateCandidates, DropsAClipWhoseNameLeadsElsewhere) {
  for (const char* filename : {"../clip.mov", "/etc/passwd", "sub/clip.mov", "..", ""})
    EXPECT_THAT(candidates(sidecar("clip", {true, true, "blurry"}, filename), withRefusals), IsEmpty()) << filename;
}

TEST(RerateCandidates, SortsByTheClipAndKeepsTheOrderOfEqualClips) {
  const Flags review{std::nullopt, true, std::nullopt};
  const auto proposed = LibraryModel::rerateCandidates(
      {sidecar("1", review, "b.mov"), sidecar("2", review, "é.mov"), sidecar("3", review, "a.mov"),
       sidecar("4", review, "b.mov"), sidecar("5", review, "B.mov")},
      withoutRefusals);
  std::vector<std::string> order;
  for (const RerateCandidate& candidate : proposed)
    order.push_back(candidate.sidecarURL.stem().stem().string() + candidate.sourceURL.filename().string());
  EXPECT_THAT(order, ElementsAre("5B.mov", "3a.mov", "1b.mov", "4b.mov", "2é.mov"));
}

}  // namespace
}  // namespace tq

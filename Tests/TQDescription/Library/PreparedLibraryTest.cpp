#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQDescription/Library/LibraryClips.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {
namespace {

using test::hitsOf;
using test::indexed;
using test::sidecarOf;
using test::stemsOf;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::size_t limit = 500;

/// Five clips, two of which have the same name.
std::vector<LoadedSidecar> library() {
  return {sidecarOf("a", "waves.mov", "Waves at dusk.", {"Beach"}), sidecarOf("b", "boat.mov", "A boat.", {"sea"}),
          sidecarOf("c", "waves.mov", "Waves, waves and a boat.", {"storm"}),
          sidecarOf("d", "alley.mov", "An alley at dusk.", {"beach", "town"}), sidecarOf("e", "z.mov", "Nothing.")};
}

std::vector<LibraryMatch> found(std::string_view query, const FacetSelection& facets = {}, std::size_t most = limit) {
  return LibraryModel::filter(library(), query, facets, most);
}

TEST(LibraryFilter, FindsNothingForNothing) {
  for (const char* query : {"", "  ", " \t\r\n\u00a0\u3000"})
    EXPECT_THAT(found(query), IsEmpty());
  EXPECT_THAT(found("  ", {{FacetField::theme, {}}, {FacetField::mood, {}}}), IsEmpty());
}

TEST(LibraryFilter, IgnoresWhiteSpaceAroundTheQuery) {
  EXPECT_THAT(stemsOf(found("\n boat\u2003")), ElementsAre("b", "a"));
  EXPECT_EQ(found("\n boat\u2003"), found("boat"));
}

TEST(LibraryFilter, PairsEveryHitWithItsSidecar) {
  const auto matches = found("alley");
  ASSERT_EQ(matches.size(), 1u);
  EXPECT_EQ(matches.front().sidecar, library()[3]);
  EXPECT_EQ(matches.front().hit.filename, "alley.mov");
  EXPECT_EQ(matches.front().hit.score, 1.0);
  EXPECT_THAT(matches.front().hit.matchedTerms, ElementsAre("alley"));
}

TEST(LibraryFilter, ShowsTheFirstSidecarForAllHitsOfOneName) {
  const auto matches = found("waves");
  EXPECT_THAT(stemsOf(matches), ElementsAre("a", "a"));
  EXPECT_THAT(stemsOf(found("storm")), ElementsAre("a")) << "only the other one matches";
}

TEST(LibraryFilter, NarrowsByFacetsAloneAndTogetherWithWords) {
  const FacetSelection beach{{FacetField::theme, {"BEACH"}}};
  EXPECT_THAT(stemsOf(found("", beach)), ElementsAre("d", "a"));
  EXPECT_THAT(stemsOf(found("waves", beach)), ElementsAre("a"));
  EXPECT_THAT(stemsOf(found("waves", {{FacetField::theme, {}}})), ElementsAre("a", "a"));
}

TEST(LibraryFilter, TakesTypedConditions) {
  EXPECT_THAT(stemsOf(found("flagged:false dusk")), ElementsAre("d", "a"));
  EXPECT_THAT(found("flagged:true"), IsEmpty());
}

TEST(LibraryFilter, KeepsTheFirstHits) {
  EXPECT_THAT(stemsOf(found("dusk", {}, 1)), ElementsAre("d"));
  EXPECT_THAT(found("dusk", {}, 0), IsEmpty());
}

TEST(LibraryFilter, FindsNothingInAnEmptyLibrary) {
  EXPECT_THAT(LibraryModel::filter({}, "waves", {}, limit), IsEmpty());
  EXPECT_TRUE(LibraryModel::facetOptions({}, 2).empty());
}

TEST(LibraryFilter, RanksAsTheSearchEngineDoes) {
  for (const char* query : {"dusk waves boat", "wave", "the", "duration:>1 boat", "beach beach sea"})
    EXPECT_EQ(hitsOf(found(query)), SearchEngine::search(query, indexed(library()), {}, limit)) << query;
}

TEST(LibraryFilter, CountsTheFacetsOfAllSidecars) {
  const std::vector<FacetValue> themes{{"Beach", 2}, {"sea", 1}, {"storm", 1}, {"town", 1}};
  for (const std::size_t processorCount : {1, 3, 16})
    EXPECT_EQ(LibraryModel::facetOptions(library(), processorCount), (FacetOptions{{FacetField::theme, themes}}));
}

TEST(PreparedLibrary, AnswersAsTheLibraryItWasMadeOf) {
  const PreparedLibrary prepared(library(), 3, {});
  EXPECT_EQ(prepared.sidecars(), library());
  EXPECT_EQ(prepared.facetOptions(), LibraryModel::facetOptions(library(), 1));
  for (const char* query : {"", "waves", " dusk ", "flagged:false"})
    EXPECT_EQ(prepared.filter(query, {}, limit), found(query)) << query;
}

TEST(PreparedLibrary, AnswersWhereverItIsMovedTo) {
  PreparedLibrary prepared(library(), 1, {});
  const PreparedLibrary moved = std::move(prepared);
  EXPECT_EQ(moved.filter("waves", {}, limit), found("waves"));
}

TEST(PreparedLibrary, CopiesNoRecords) {
  const std::vector<LoadedSidecar> sidecars = library();
  const PreparedLibrary prepared(sidecars, 1, {});
  EXPECT_EQ(&*prepared.filter("boat", {}, limit).front().sidecar.result, &*sidecars[1].result);
}

TEST(PreparedLibrary, IsNotMadeOnceAStopWasRequested) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(PreparedLibrary(library(), 1, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq

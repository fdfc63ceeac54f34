#include <gtest/gtest.h>
#include <limits>
#include <stdexcept>
#include <unordered_set>

#include "TQDescription/Search/SearchIndex.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

// What a search finds, asked of the plain functions and of the index at once.

namespace tq {
namespace {

using Words = std::vector<std::string>;
using Records = std::vector<DescriptionResult>;
using Hits = std::vector<SearchHit>;
using Similarities = std::vector<FilenameSimilarity>;

constexpr std::size_t all = std::numeric_limits<std::size_t>::max();

std::vector<IndexedResult> indexed(const Records& records) {
  std::vector<IndexedResult> prepared;
  for (const DescriptionResult& record : records)
    prepared.push_back({record, SearchEngine::buildScoredFields(record)});
  return prepared;
}

Hits found(const std::string& query, const Records& records, const FacetSelection& facets = {},
           std::size_t limit = all) {
  const Hits hits = SearchEngine::search(query, indexed(records), facets, limit);
  EXPECT_EQ(SearchEngine::search(query, records, facets, limit), hits);
  EXPECT_EQ(SearchIndex(records).search(query, facets, limit), hits);
  return hits;
}

struct Blend {
  double weight = 0.5;
  double floor = 0.2;
  FacetSelection facets = {};
  std::size_t limit = all;
};

Hits blended(const std::string& query, const Records& records, const Similarities& semantic, const Blend& blend = {}) {
  const Hits hits = SearchEngine::hybridSearch(query, indexed(records), semantic, blend.weight, blend.floor,
                                               blend.facets, blend.limit);
  const Hits byIndex =
      SearchIndex(records).hybridSearch(query, semantic, blend.weight, blend.floor, blend.facets, blend.limit);
  EXPECT_EQ(byIndex, hits);
  return hits;
}

/// A record whose only searchable text is a summary, each word worth 1.
DescriptionResult clip(const std::string& filename, const std::string& summary) {
  DescriptionResult record;
  record.source.filename = filename;
  record.summary = summary;
  return record;
}

DescriptionResult withOneLine(DescriptionResult record, const std::string& oneLine) {
  record.global.overallSummaryOneLine = oneLine;
  return record;
}

DescriptionResult withTheme(DescriptionResult record, const std::string& theme) {
  record.global.themes = {{theme}};
  return record;
}

DescriptionResult flagged(DescriptionResult record) {
  record.flagged = true;
  return record;
}

SearchHit hit(const std::string& filename, double score, Words terms) {
  return {.filename = filename, .score = score, .matchedTerms = std::move(terms)};
}

Words filenames(const Hits& hits) {
  Words names;
  for (const SearchHit& each : hits)
    names.push_back(each.filename);
  return names;
}

const Records beaches{clip("b.mov", "beach sunset"), clip("a.mov", "beach"), clip("c.mov", "city")};

TEST(Search, FindsWhatTheWordsMatch) {
  EXPECT_EQ(found("beach", beaches), (Hits{hit("a.mov", 1, {"beach"}), hit("b.mov", 1, {"beach"})}));
}

TEST(Search, RanksHigherScoresFirst) {
  EXPECT_EQ(found("sunset beach", beaches), (Hits{hit("b.mov", 2, {"beach", "sunset"}), hit("a.mov", 1, {"beach"})}));
}

TEST(Search, ShowsTheSummaryInOneLine) {
  const Hits hits = found("beach", {withOneLine(clip("a.mov", "beach"), "A calm day."), clip("b.mov", "beach")});
  EXPECT_EQ(hits.at(0).oneLine, "A calm day.");
  EXPECT_EQ(hits.at(1).oneLine, std::nullopt);
}

TEST(Search, ForNothingFindsNothing) {
  for (const std::string query : {"", "  ", "the clip", ".,;"}) {
    EXPECT_EQ(found(query, beaches), Hits{}) << query;
    EXPECT_EQ(found(query, beaches, {{FacetField::theme, {}}}), Hits{}) << query;
  }
}

TEST(Search, InNoRecordsFindsNothing) {
  EXPECT_EQ(found("beach flagged:false", {}), Hits{});
  EXPECT_EQ(found("", {}, {{FacetField::theme, {"sea"}}}), Hits{});
}

TEST(Search, OfConditionsAloneScoresNothingAndSortsByFilename) {
  const Records records{flagged(clip("c.mov", "sea")), clip("b.mov", "sea"), flagged(clip("a.mov", "city"))};
  EXPECT_EQ(found("flagged:true", records), (Hits{hit("a.mov", 0, {}), hit("c.mov", 0, {})}));
}

TEST(Search, MeetsEveryConditionAndTheWords) {
  Records records = beaches;
  records[0].source.durationSeconds = 40;
  records[1].source.durationSeconds = 20;
  records[2].source.durationSeconds = 40;
  EXPECT_EQ(filenames(found("duration:>30 beach", records)), Words{"b.mov"});
  EXPECT_EQ(filenames(found("duration:>30 duration:<30 beach", records)), Words{});
}

TEST(Search, OfFacetsAloneScoresNothing) {
  const Records records{withTheme(clip("b.mov", ""), "Sea"), withTheme(clip("a.mov", ""), " SEA"),
                        clip("c.mov", "sea")};
  EXPECT_EQ(found("", records, {{FacetField::theme, {"sea"}}}), (Hits{hit("a.mov", 0, {}), hit("b.mov", 0, {})}));
  EXPECT_EQ(found("the", records, {{FacetField::theme, {"nowhere"}}}), Hits{});
}

TEST(Search, NarrowsWordsByFacets) {
  const Records records{withTheme(clip("a.mov", "beach"), "sea"), withTheme(clip("b.mov", "beach"), "night"),
                        withTheme(clip("c.mov", "city"), "night")};
  EXPECT_EQ(filenames(found("beach", records, {{FacetField::theme, {"night"}}, {FacetField::mood, {}}})),
            Words{"b.mov"});
}

TEST(Search, TakesAWrongConditionForWords) {
  EXPECT_EQ(found("beach:sunset", beaches), (Hits{hit("b.mov", 2, {"beach", "sunset"}), hit("a.mov", 1, {"beach"})}));
  EXPECT_EQ(found("duration:long", {clip("a.mov", "long duration")}), Hits{hit("a.mov", 2, {"duration", "long"})});
}

TEST(Search, ARepeatedWordScoresAgain) {
  const Records records{withTheme(clip("a.mov", "beaches"), "beach")};
  EXPECT_EQ(found("beach", records).at(0).score, 3.0 + 0.6);
  EXPECT_EQ(found("beach beach", records).at(0).score, 3.0 + 0.6 + 3.0 + 0.6);
  EXPECT_EQ(found("beach beach", records).at(0).matchedTerms, Words{"beach"});
}

TEST(Search, RecordsOfOneFilenameAreHitsOfTheirOwnInTheirOrder) {
  const Records records{withOneLine(clip("a.mov", "beach"), "first"), clip("0.mov", "beach"),
                        withOneLine(clip("a.mov", "beach"), "second"),
                        withOneLine(clip("a.mov", "beach sunset"), "best")};
  const Hits hits = found("beach sunset", records);
  EXPECT_EQ(filenames(hits), (Words{"a.mov", "0.mov", "a.mov", "a.mov"}));
  EXPECT_EQ(hits[0].oneLine, "best");
  EXPECT_EQ(hits[2].oneLine, "first");
  EXPECT_EQ(hits[3].oneLine, "second");
}

TEST(Search, SortsFilenamesByTheirBytes) {
  const Records records{clip("é.mov", "sea"), clip("z.mov", "sea"), clip("A.mov", "sea"),
                        clip("a.mov", "sea"), clip("a.mo", "sea"),  clip("", "sea")};
  EXPECT_EQ(filenames(found("sea", records)), (Words{"", "A.mov", "a.mo", "a.mov", "z.mov", "é.mov"}));
}

TEST(Search, KeepsTheFirstUpToTheLimit) {
  EXPECT_EQ(filenames(found("sunset beach city", beaches, {}, 2)), (Words{"b.mov", "a.mov"}));
  EXPECT_EQ(found("sunset beach city", beaches, {}, 3).size(), 3u);
  EXPECT_EQ(found("sunset beach city", beaches, {}, 4).size(), 3u);
  EXPECT_EQ(found("beach", beaches, {}, 0), Hits{});
  EXPECT_EQ(filenames(found("flagged:false", beaches, {}, 1)), Words{"a.mov"});
}

TEST(Search, LeavesPeopleMoodsColoursReasonsAndFilenamesAside) {
  DescriptionResult record = clip("filename", "");
  record.reviewReason = "reason";
  record.global.dominantPalette = {{"palette"}};
  record.shots = {{.people = {{{.expression = "smiling"}}}, .overallMood = "moody"}};
  EXPECT_EQ(found("filename reason palette smiling moody", {record}), Hits{});
}

TEST(Search, GoesThroughEveryWriting) {
  const Records records{clip("1", "夕日 CAFE\u0301 👨‍👩‍👧"), clip("2", "שקיעה ΟΔΟΣ"),
                        clip("3", "ISPARTA ısparta straße")};
  EXPECT_EQ(filenames(found("夕日", records)), Words{"1"});
  EXPECT_EQ(filenames(found("👨‍👩‍👧", records)), Words{"1"});
  EXPECT_EQ(filenames(found("cafe\u0301", records)), Words{"1"});
  EXPECT_EQ(filenames(found("שקיעה", records)), Words{"2"});
  EXPECT_EQ(filenames(found("ΟΔΟΣ", records)), Words{"2"});
  EXPECT_EQ(found("isparta", records), Hits{hit("3", 1, {"isparta"})});
  EXPECT_EQ(found("ısparta", records), Hits{hit("3", 1, {"ısparta"})});
  EXPECT_EQ(found("strasse", records), Hits{});  // two edits away
}

TEST(SearchHit, HashesOnAllFields) {
  SearchHit other = hit("a", 1, {"x"});
  other.oneLine = "";
  const std::unordered_set<SearchHit, RecordHash> hits{
      hit("a", 1, {"x"}), hit("b", 1, {"x"}), hit("a", 2, {"x"}), hit("a", 1, {"y"}), other, hit("a", 1, {"x"})};
  EXPECT_EQ(hits.size(), 5u);
}

TEST(HybridSearch, BlendsBothScores) {
  const Similarities semantic{{"a.mov", 1.0}, {"b.mov", 0.0}, {"c.mov", 0.5}};
  EXPECT_EQ(blended("sunset beach", beaches, semantic, {.weight = 0.25}),
            (Hits{hit("b.mov", 0.75 + 0.25 * 0.5, {"beach", "sunset"}), hit("a.mov", 0.25, {"beach"}),
                  hit("c.mov", 0.25 * 0.75, {})}));
}

TEST(HybridSearch, AddsTheTwoSharesToTheLastBit) {
  constexpr double weight = 0.2;
  constexpr double semantic = (0.4 + 1.0) * 0.5;
  constexpr double expected = (1 - weight) * 1.0 + weight * semantic;
  static_assert(expected != 1.0 + weight * (semantic - 1.0), "the example shows the order by its last bit");
  EXPECT_EQ(blended("sunset", beaches, {{"b.mov", 0.4}}, {.weight = weight}), Hits{hit("b.mov", expected, {"sunset"})});
}

TEST(HybridSearch, WithoutSimilaritiesRanksByWords) {
  EXPECT_EQ(blended("sunset beach", beaches, {}),
            (Hits{hit("b.mov", 0.5, {"beach", "sunset"}), hit("a.mov", 0, {"beach"})}));
}

TEST(HybridSearch, HoldsTheWeightWithinZeroAndOne) {
  const Similarities semantic{{"a.mov", 0.5}};
  const Hits wholly = blended("sunset", beaches, semantic, {.weight = 1});
  EXPECT_EQ(wholly, (Hits{hit("a.mov", 0.75, {}), hit("b.mov", 0, {"sunset"})}));
  EXPECT_EQ(blended("sunset", beaches, semantic, {.weight = 2}), wholly);
  EXPECT_EQ(blended("sunset", beaches, semantic, {.weight = std::numeric_limits<double>::infinity()}), wholly);

  const Hits none = blended("sunset", beaches, semantic, {.weight = 0});
  EXPECT_EQ(none, (Hits{hit("b.mov", 1, {"sunset"}), hit("a.mov", 0, {})}));
  EXPECT_EQ(blended("sunset", beaches, semantic, {.weight = -1}), none);
  EXPECT_EQ(blended("sunset", beaches, semantic, {.weight = std::numeric_limits<double>::quiet_NaN()}), none);
}

TEST(HybridSearch, ALoneKeywordHitKeepsItsFullStrength) {
  EXPECT_EQ(blended("sunset", beaches, {}), Hits{hit("b.mov", 0.5, {"sunset"})});
}

TEST(HybridSearch, KeywordHitsOfEqualScoreRankBySimilarityAlone) {
  EXPECT_EQ(blended("beach", beaches, {{"b.mov", 0.5}}),
            (Hits{hit("b.mov", 0.375, {"beach"}), hit("a.mov", 0, {"beach"})}));
}

TEST(HybridSearch, TheFloorIsForRecordsThatTheWordsDidNotFind) {
  const Similarities semantic{{"b.mov", -0.5}, {"c.mov", 0.1}};
  EXPECT_EQ(blended("sunset", beaches, semantic), Hits{hit("b.mov", 0.5 + 0.5 * 0.25, {"sunset"})});
}

TEST(HybridSearch, ASimilarityOnTheFloorCounts) {
  EXPECT_EQ(blended("the", beaches, {{"c.mov", 0.2}}), Hits{hit("c.mov", 0.5 * (1.2 * 0.5), {})});
}

TEST(HybridSearch, LeavesOutFilenamesThatNoRecordHas) {
  EXPECT_EQ(blended("the", beaches, {{"gone.mov", 1.0}}), Hits{});
}

TEST(HybridSearch, WordsThatSayNothingStillFindByMeaning) {
  EXPECT_EQ(blended("show me the clip", beaches, {{"c.mov", 1.0}}), Hits{hit("c.mov", 0.5, {})});
}

TEST(HybridSearch, ForNothingFindsNothing) {
  EXPECT_EQ(blended("", beaches, {}), Hits{});
  EXPECT_EQ(blended("the", beaches, {{"c.mov", 0.0}}), Hits{});
  EXPECT_EQ(blended("the", {}, {{"c.mov", 1.0}}), Hits{});
}

TEST(HybridSearch, MeaningMeetsConditionsAndFacetsToo) {
  const Records records{flagged(withTheme(clip("a.mov", ""), "sea")), withTheme(clip("b.mov", ""), "sea"),
                        flagged(clip("c.mov", "")), flagged(withTheme(clip("d.mov", "beach"), "sea"))};
  const Similarities semantic{{"a.mov", 0.5}, {"b.mov", 0.5}, {"c.mov", 0.5}};
  const FacetSelection sea{{FacetField::theme, {"SEA"}}};
  EXPECT_EQ(filenames(blended("beach flagged:true", records, semantic, {.facets = sea})), (Words{"d.mov", "a.mov"}));
  EXPECT_EQ(filenames(blended("flagged:true", records, semantic)), (Words{"a.mov", "c.mov", "d.mov"}));
}

TEST(HybridSearch, ConditionsAloneFindRecordsWithoutASimilarity) {
  EXPECT_EQ(blended("flagged:false", {clip("a.mov", "")}, {}), Hits{hit("a.mov", 0.5, {})});
}

TEST(HybridSearch, OfEqualFilenamesTheLaterHitAndTheFirstRecordStay) {
  // The weaker hit stands later in the list of hits; its record is not the first one.
  const Records records{withOneLine(clip("a.mov", "beach sunset"), "first"),
                        withOneLine(clip("a.mov", "beach"), "later"), clip("b.mov", "beach sunset palm")};
  const Hits hits = blended("beach sunset palm", records, {});
  EXPECT_EQ(hits.size(), 2u);
  EXPECT_EQ(hits.at(1), (SearchHit{"a.mov", 0, "later", {"beach"}}));

  const Records silent{withOneLine(clip("a.mov", ""), "first"), clip("a.mov", "beach")};
  EXPECT_EQ(blended("beach", silent, {}).at(0), (SearchHit{"a.mov", 0.5, "first", {"beach"}}));
}

TEST(HybridSearch, TheLaterOfTwoHitsIsTheWeakerOneWhereverItsRecordStands) {
  const Records records{withOneLine(clip("a.mov", "beach"), "weaker"),
                        withOneLine(clip("a.mov", "beach sunset"), "stronger"), clip("b.mov", "beach sunset palm")};
  EXPECT_EQ(blended("beach sunset palm", records, {}).at(1), (SearchHit{"a.mov", 0, "weaker", {"beach"}}));
}

TEST(HybridSearch, OfEqualFilenamesAndScoresTheLaterRecordStays) {
  const Records records{withOneLine(clip("a.mov", "beach"), "first"), withOneLine(clip("a.mov", "beach"), "later")};
  EXPECT_EQ(blended("beach", records, {}), (Hits{{"a.mov", 0, "later", {"beach"}}}));
}

TEST(HybridSearch, MeaningJudgesTheFirstRecordOfAFilename) {
  const Records records{withOneLine(clip("a.mov", ""), "first"), flagged(withOneLine(clip("a.mov", ""), "later"))};
  EXPECT_EQ(blended("the", records, {{"a.mov", 1.0}}), (Hits{{"a.mov", 0.5, "first", {}}}));
  EXPECT_EQ(blended("beach flagged:true", records, {{"a.mov", 1.0}}), Hits{});
}

TEST(HybridSearch, OfEqualFilenamesTheLaterAcceptedSimilarityStays) {
  EXPECT_EQ(blended("the", beaches, {{"c.mov", 1.0}, {"c.mov", 0.5}}), Hits{hit("c.mov", 0.375, {})});
  EXPECT_EQ(blended("the", beaches, {{"c.mov", 1.0}, {"c.mov", 0.1}}), Hits{hit("c.mov", 0.5, {})});
}

TEST(HybridSearch, SortsEqualScoresByFilenameAndKeepsTheLimit) {
  const Similarities semantic{{"c.mov", 0.5}, {"b.mov", 0.5}, {"a.mov", 0.5}};
  EXPECT_EQ(filenames(blended("the", beaches, semantic)), (Words{"a.mov", "b.mov", "c.mov"}));
  EXPECT_EQ(filenames(blended("the", beaches, semantic, {.limit = 2})), (Words{"a.mov", "b.mov"}));
  EXPECT_EQ(blended("the", beaches, semantic, {.limit = 0}), Hits{});
}

TEST(HybridSearch, RanksASimilarityThatIsNoNumberLast) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const Similarities semantic{{"a.mov", none}, {"b.mov", 0.5}, {"c.mov", none}};
  EXPECT_EQ(filenames(SearchEngine::hybridSearch("the", indexed(beaches), semantic, 0.5, 0.2, {}, all)),
            (Words{"b.mov", "a.mov", "c.mov"}));
  EXPECT_EQ(filenames(SearchIndex(beaches).hybridSearch("the", semantic, 0.5, 0.2, {}, all)),
            (Words{"b.mov", "a.mov", "c.mov"}));
}

TEST(SearchIndex, NamesTheFirstRecordOfAFilename) {
  const SearchIndex index(Records{clip("b.mov", ""), clip("a.mov", ""), clip("b.mov", "")});
  EXPECT_EQ(index.recordCount(), 3u);
  EXPECT_EQ(index.firstRecord("b.mov"), 0u);
  EXPECT_EQ(index.firstRecord("a.mov"), 1u);
  EXPECT_EQ(index.firstRecord("c.mov"), std::nullopt);
}

TEST(SearchIndex, OffersTheFacetsOfItsRecords) {
  const Records records{withTheme(clip("a.mov", ""), "Sea"), withTheme(clip("b.mov", ""), "sea")};
  EXPECT_EQ(SearchIndex(records).facetOptions(), FacetIndex::build(records));
}

TEST(SearchIndex, MayHoldNoRecords) {
  const SearchIndex index(Records{});
  EXPECT_EQ(index.recordCount(), 0u);
  EXPECT_EQ(index.facetOptions(), FacetOptions{});
  EXPECT_EQ(index.search("beach", {}, all), Hits{});
}

TEST(SearchIndex, MayBeMadeByMoreThreadsThanRecords) {
  const SearchIndex index(beaches.size(), recordsIn(beaches), 8);
  EXPECT_EQ(filenames(index.search("beach", {}, all)), (Words{"a.mov", "b.mov"}));
}

TEST(SearchIndex, ItsMakingCanBeCancelled) {
  std::stop_source stop;
  const RecordAt stopping = [&](std::size_t number) -> const DescriptionResult& {
    if (number == 1) stop.request_stop();
    EXPECT_LT(number, 2u);
    return beaches[number];
  };
  EXPECT_THROW(SearchIndex(beaches.size(), stopping, 1, stop.get_token()), Cancelled);
}

TEST(SearchIndex, PassesOnWhatReadingARecordThrows) {
  const RecordAt failing = [](std::size_t) -> const DescriptionResult& { throw std::out_of_range("gone"); };
  EXPECT_THROW(SearchIndex(2, failing, 2), std::out_of_range);
}

TEST(SearchIndex, AnswersForTheRecordsAsTheyWere) {
  Records records{clip("a.mov", "beach")};
  const SearchIndex index(records);
  records[0] = clip("b.mov", "city");
  EXPECT_EQ(index.search("beach", {}, all), Hits{hit("a.mov", 1, {"beach"})});
}

}  // namespace
}  // namespace tq

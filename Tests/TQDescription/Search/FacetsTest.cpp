#include <gtest/gtest.h>
#include <unordered_set>

#include "TQDescription/Search/Facets.hpp"

namespace tq {
namespace {

using Texts = std::vector<std::string>;
using Records = std::vector<DescriptionResult>;

DescriptionResult withThemes(Texts themes) {
  DescriptionResult record;
  record.global.themes = std::move(themes);
  return record;
}

DescriptionResult withMoods(Texts moods) {
  DescriptionResult record;
  for (std::string& mood : moods)
    record.shots.push_back({.overallMood = std::move(mood)});
  return record;
}

DescriptionResult fullRecord() {
  DescriptionResult record;
  record.global = {
      .primarySubjects = {{"s"}}, .themes = {{"t"}}, .searchKeywords = {{"k"}}, .suggestedUseCases = {{"u"}}};
  record.shots = {{},
                  {.shotType = "wide",
                   .cameraMotion = "pan",
                   .setting = {{.locationType = "outdoor",
                                .environment = "street",
                                .timeOfDay = "dusk",
                                .weather = "rain",
                                .lighting = "overcast"}},
                   .overallMood = "calm"}};
  return record;
}

TEST(FacetField, HasElevenCasesWithTheirNamesAndLabels) {
  const std::vector<std::pair<std::string_view, std::string_view>> expected{
      {"theme", "Theme"},     {"keyword", "Keyword"},   {"useCase", "Use case"},
      {"subject", "Subject"}, {"shotType", "Shot"},     {"cameraMotion", "Motion"},
      {"timeOfDay", "Time"},  {"lighting", "Lighting"}, {"environment", "Environment"},
      {"weather", "Weather"}, {"mood", "Mood"}};
  std::vector<std::pair<std::string_view, std::string_view>> found;
  for (const FacetField field : allCases<FacetField>())
    found.emplace_back(rawValue(field), label(field));
  EXPECT_EQ(found, expected);
}

TEST(FacetValues, ComeFromTheirPlaces) {
  const std::map<FacetField, Texts> expected{
      {FacetField::theme, {"t"}},        {FacetField::keyword, {"k"}},         {FacetField::useCase, {"u"}},
      {FacetField::subject, {"s"}},      {FacetField::shotType, {"wide"}},     {FacetField::cameraMotion, {"pan"}},
      {FacetField::timeOfDay, {"dusk"}}, {FacetField::lighting, {"overcast"}}, {FacetField::environment, {"street"}},
      {FacetField::weather, {"rain"}},   {FacetField::mood, {"calm"}}};
  for (const auto& [field, values] : expected)
    EXPECT_EQ(FacetIndex::values(field, fullRecord()), values) << rawValue(field);
}

TEST(FacetValues, AreNoneWhereTheRecordSaysNothing) {
  for (const FacetField field : allCases<FacetField>())
    EXPECT_EQ(FacetIndex::values(field, {}), Texts{}) << rawValue(field);
}

TEST(FacetValues, AreTrimmedAndNeverEmpty) {
  EXPECT_EQ(FacetIndex::values(FacetField::theme, withThemes({" Sea\n", "", " \t", "\u3000Old town\u00A0"})),
            (Texts{"Sea", "Old town"}));
}

TEST(FacetValues, KeepDuplicates) {
  EXPECT_EQ(FacetIndex::values(FacetField::mood, withMoods({"calm", "Calm", "calm"})), (Texts{"calm", "Calm", "calm"}));
}

TEST(FacetBuild, OfNoRecordsIsEmpty) {
  EXPECT_EQ(FacetIndex::build({}), FacetOptions{});
}

TEST(FacetBuild, LeavesOutFieldsWithoutValues) {
  const Records records{withThemes({"Sea"}), withMoods({" "})};
  EXPECT_EQ(FacetIndex::build(records), (FacetOptions{{FacetField::theme, {{"Sea", 1}}}}));
}

TEST(FacetBuild, CountsEveryField) {
  const Records records{fullRecord()};
  EXPECT_EQ(FacetIndex::build(records).size(), allCases<FacetField>().size());
}

TEST(FacetBuild, CountsSpellingsTogetherAndShowsTheFirst) {
  const Records records{withThemes({"Beach"}), withThemes({"beach "})};
  EXPECT_EQ(FacetIndex::build(records), (FacetOptions{{FacetField::theme, {{"Beach", 2}}}}));
}

TEST(FacetBuild, ShowsTheFirstSpellingOfARecordThatHasSeveral) {
  const Records records{withThemes({" bEach", "Beach"}), withThemes({"BEACH"})};
  EXPECT_EQ(FacetIndex::build(records), (FacetOptions{{FacetField::theme, {{"bEach", 2}}}}));
}

TEST(FacetBuild, CountsARecordOnceHoweverManyShotsCarryTheValue) {
  const Records records{withMoods({"calm", "CALM", "tense", "calm"}), withMoods({"tense"})};
  EXPECT_EQ(FacetIndex::build(records), (FacetOptions{{FacetField::mood, {{"tense", 2}, {"calm", 1}}}}));
}

TEST(FacetBuild, SortsByCountAndThenByLowerCasedValue) {
  const Records records{withThemes({"b", "C", "a", "B2", "Z"}), withThemes({"z"})};
  EXPECT_EQ(FacetIndex::build(records),
            (FacetOptions{{FacetField::theme, {{"Z", 2}, {"a", 1}, {"b", 1}, {"B2", 1}, {"C", 1}}}}));
}

TEST(FacetBuild, LowersFullUnicode) {
  const Records records{withThemes({"ÉTÉ", "ΟΔΟΣ", "STRASSE"}), withThemes({"été", "οδος", "straße", "ΟΔΟΣ"})};
  EXPECT_EQ(FacetIndex::build(records),
            (FacetOptions{{FacetField::theme, {{"ÉTÉ", 2}, {"ΟΔΟΣ", 2}, {"STRASSE", 1}, {"straße", 1}}}}));
}

TEST(FacetBuild, KeepsComposedAndDecomposedFormsApart) {
  const Records records{withThemes({"caf\u00E9", "cafe\u0301"})};
  EXPECT_EQ(FacetIndex::build(records), (FacetOptions{{FacetField::theme, {{"cafe\u0301", 1}, {"caf\u00E9", 1}}}}));
}

TEST(FacetBuild, IsTheSameByAnyNumberOfThreads) {
  const Records records{withThemes({"b"}), withThemes({"SEA", "b"}), withMoods({"calm"}), withThemes({"sea"}), {}};
  for (const std::size_t width : {1, 2, 3, 9})
    EXPECT_EQ(FacetIndex::build(records.size(), recordsIn(records), width), FacetIndex::build(records)) << width;
  EXPECT_EQ(FacetIndex::build(0, recordsIn({}), 2), FacetOptions{});
}

TEST(FacetMatches, AnEmptySelectionMatchesEverything) {
  EXPECT_TRUE(FacetIndex::matches({}, {}));
  EXPECT_TRUE(FacetIndex::matches({{FacetField::theme, {}}}, {}));
}

TEST(FacetMatches, TakesTheValuesOfAFieldForAlternatives) {
  const FacetSelection selection{{FacetField::theme, {"sea", "city"}}};
  EXPECT_TRUE(FacetIndex::matches(selection, withThemes({"city", "night"})));
  EXPECT_TRUE(FacetIndex::matches(selection, withThemes({"sea"})));
  EXPECT_FALSE(FacetIndex::matches(selection, withThemes({"night"})));
  EXPECT_FALSE(FacetIndex::matches(selection, {}));
}

TEST(FacetMatches, AsksForAllFields) {
  DescriptionResult record = withMoods({"calm"});
  record.global.themes = {{"sea"}};
  EXPECT_TRUE(FacetIndex::matches({{FacetField::theme, {"sea"}}, {FacetField::mood, {"calm"}}}, record));
  EXPECT_FALSE(FacetIndex::matches({{FacetField::theme, {"sea"}}, {FacetField::mood, {"tense"}}}, record));
  EXPECT_TRUE(FacetIndex::matches({{FacetField::theme, {"sea"}}, {FacetField::mood, {}}}, record));
}

TEST(FacetMatches, LeavesCaseAsideOnBothSides) {
  EXPECT_TRUE(FacetIndex::matches({{FacetField::theme, {"ÉTÉ"}}}, withThemes({" Été\n"})));
}

TEST(FacetMatches, ComparesWholeValues) {
  EXPECT_FALSE(FacetIndex::matches({{FacetField::theme, {"old"}}}, withThemes({"old town"})));
}

TEST(FacetMatches, TakesAChoiceAsItStands) {
  EXPECT_FALSE(FacetIndex::matches({{FacetField::theme, {"sea "}}}, withThemes({"sea"})));
  EXPECT_FALSE(FacetIndex::matches({{FacetField::theme, {""}}}, withThemes({""})));
}

TEST(FacetMatches, ComparesWithinTheFieldOnly) {
  EXPECT_FALSE(FacetIndex::matches({{FacetField::keyword, {"sea"}}}, withThemes({"sea"})));
}

TEST(FacetValue, HashesOnValueAndCount) {
  const std::unordered_set<FacetValue, RecordHash> values{{"a", 1}, {"a", 2}, {"b", 1}, {"a", 1}};
  EXPECT_EQ(values.size(), 3u);
}

TEST(ActiveFacets, AreThoseThatAskForSomething) {
  EXPECT_EQ(activeFacets({{FacetField::theme, {}}, {FacetField::mood, {"calm"}}}),
            (FacetSelection{{FacetField::mood, {"calm"}}}));
}

}  // namespace
}  // namespace tq

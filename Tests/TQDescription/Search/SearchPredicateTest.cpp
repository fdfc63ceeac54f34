#include <gtest/gtest.h>

#include "TQDescription/Search/SearchPredicate.hpp"

namespace tq {
namespace {

using P = SearchPredicate;
using Op = NumericOp;
using Query = PredicateParser::Query;

DescriptionResult withPeople(std::vector<std::optional<std::int64_t>> counts) {
  DescriptionResult record;
  for (const std::optional<std::int64_t> count : counts)
    record.shots.push_back({.peopleCount = count});
  return record;
}

bool holds(const SearchPredicate& predicate, const DescriptionResult& record) {
  return predicate.holds(PredicateFacts::of(record));
}

TEST(PredicateParser, TakesConditionsOutOfTheWords) {
  EXPECT_EQ(PredicateParser::parse("beach duration:>30 sunset flagged:false"),
            (Query{{P{P::Duration{Op::greaterThan, 30}}, P{P::Flagged{false}}}, "beach sunset"}));
}

TEST(PredicateParser, LeavesTheKeysCaseAside) {
  EXPECT_EQ(PredicateParser::parse("Duration:>=120 beach"),
            (Query{{P{P::Duration{Op::greaterThanOrEqual, 120}}}, "beach"}));
  EXPECT_EQ(PredicateParser::parseToken("HAS-Transcript:true"), P{P::HasTranscript{true}});
}

TEST(PredicateParser, OfNothingIsNothing) {
  for (const std::string_view query : {"", " ", " \t\r\n\u3000"})
    EXPECT_EQ(PredicateParser::parse(query), Query{}) << query;
}

TEST(PredicateParser, KeepsWordsAsTheyStandWithOneBlankBetweenThem) {
  EXPECT_EQ(PredicateParser::parse("  Golden-Hour,\t\tDUSK \r\n été\u3000x "), (Query{{}, "Golden-Hour, DUSK été x"}));
}

TEST(PredicateParser, SplitsAtEveryKindOfWhiteSpace) {
  for (const std::string blank : {" ", "\t", "\n", "\r\n", "\u00A0", "\u2028", "\u3000"})
    EXPECT_EQ(PredicateParser::parse("review:true" + blank + "people:=2"),
              (Query{{P{P::Review{true}}, P{P::People{Op::equal, 2}}}, ""}));
}

TEST(PredicateParser, DoesNotSplitAtWhatOnlyLooksBlank) {
  EXPECT_EQ(PredicateParser::parse("review:true\u200Bpeople:=2"), (Query{{}, "review:true\u200Bpeople:=2"}));
}

TEST(PredicateParser, KeepsRepeatedConditions) {
  EXPECT_EQ(PredicateParser::parse("people:>1 people:>1").predicates.size(), 2u);
}

TEST(PredicateParser, ABlankBehindTheColonMakesTwoWords) {
  EXPECT_EQ(PredicateParser::parse("duration: >30"), (Query{{}, "duration: >30"}));
}

TEST(PredicateParser, ANumberMustStandBehindTheOperator) {
  EXPECT_EQ(PredicateParser::parse("duration:>="), (Query{{}, "duration:>="}));
}

TEST(PredicateParser, ANUL) {
  const std::string query("a\0b duration:>1\0", 16);
  EXPECT_EQ(PredicateParser::parse(query), (Query{{}, query}));
}

TEST(PredicateToken, KnowsItsKeys) {
  EXPECT_EQ(PredicateParser::parseToken("duration:>30"), (P{P::Duration{Op::greaterThan, 30}}));
  EXPECT_EQ(PredicateParser::parseToken("people:<=4"), (P{P::People{Op::lessThanOrEqual, 4}}));
  EXPECT_EQ(PredicateParser::parseToken("flagged:true"), P{P::Flagged{true}});
  EXPECT_EQ(PredicateParser::parseToken("review:false"), P{P::Review{false}});
  EXPECT_EQ(PredicateParser::parseToken("has-transcript:false"), P{P::HasTranscript{false}});
}

TEST(PredicateToken, IsTrueOrFalseInAnyCase) {
  EXPECT_EQ(PredicateParser::parseToken("flagged:TRUE"), P{P::Flagged{true}});
  EXPECT_EQ(PredicateParser::parseToken("flagged:False"), P{P::Flagged{false}});
}

TEST(PredicateToken, IsAWordWhenItIsNoCondition) {
  for (const std::string_view token : {"",
                                       ":",
                                       "beach",
                                       "beach:sunset",
                                       "duration",
                                       "duration:",
                                       ":>30",
                                       "duration:long",
                                       "duration:30",
                                       "duration:true",
                                       "flagged:yes",
                                       "flagged:1",
                                       "flagged:>1",
                                       "flagged:",
                                       "has:transcript",
                                       "hastranscript:true",
                                       "a:b:c",
                                       "flagged:true:",
                                       "duration:>30:",
                                       "DURATİON:>30",
                                       "duration\u0301:>30",
                                       "duration:\u0301>30"})
    EXPECT_EQ(PredicateParser::parseToken(token), std::nullopt) << token;
}

TEST(PredicateValue, KnowsEachOperator) {
  EXPECT_EQ(PredicateParser::parseNumericValue(">1"), std::pair(Op::greaterThan, 1.0));
  EXPECT_EQ(PredicateParser::parseNumericValue(">=1"), std::pair(Op::greaterThanOrEqual, 1.0));
  EXPECT_EQ(PredicateParser::parseNumericValue("<1"), std::pair(Op::lessThan, 1.0));
  EXPECT_EQ(PredicateParser::parseNumericValue("<=1"), std::pair(Op::lessThanOrEqual, 1.0));
  EXPECT_EQ(PredicateParser::parseNumericValue("=1"), std::pair(Op::equal, 1.0));
}

TEST(PredicateValue, IsAnyDecimalNumber) {
  EXPECT_EQ(PredicateParser::parseNumericValue(">1e2"), std::pair(Op::greaterThan, 100.0));
  EXPECT_EQ(PredicateParser::parseNumericValue("=-.5"), std::pair(Op::equal, -0.5));
  EXPECT_EQ(PredicateParser::parseNumericValue("<+5."), std::pair(Op::lessThan, 5.0));
}

TEST(PredicateValue, IsNothingElse) {
  for (const std::string_view value : {"", "1", ">", ">=", "=", "==1", "=>1", "><1", ">30s", "> 30", ">0x10", ">inf",
                                       ">nan", ">1e999", "≥1", ">１", ">1,5", "~1"})
    EXPECT_EQ(PredicateParser::parseNumericValue(value), std::nullopt) << value;
}

TEST(SearchPredicate, ComparesTheDuration) {
  DescriptionResult record;
  record.source.durationSeconds = 30;
  EXPECT_FALSE(holds(P{P::Duration{Op::greaterThan, 30}}, record));
  EXPECT_TRUE(holds(P{P::Duration{Op::greaterThan, 29.5}}, record));
  EXPECT_TRUE(holds(P{P::Duration{Op::greaterThanOrEqual, 30}}, record));
  EXPECT_FALSE(holds(P{P::Duration{Op::greaterThanOrEqual, 30.5}}, record));
  EXPECT_FALSE(holds(P{P::Duration{Op::lessThan, 30}}, record));
  EXPECT_TRUE(holds(P{P::Duration{Op::lessThan, 30.5}}, record));
  EXPECT_TRUE(holds(P{P::Duration{Op::lessThanOrEqual, 30}}, record));
  EXPECT_FALSE(holds(P{P::Duration{Op::lessThanOrEqual, 29.5}}, record));
  EXPECT_TRUE(holds(P{P::Duration{Op::equal, 30}}, record));
  EXPECT_FALSE(holds(P{P::Duration{Op::equal, 30.5}}, record));
}

TEST(SearchPredicate, AddsUpThePeopleOfAllShots) {
  const DescriptionResult record = withPeople({2, std::nullopt, 3});
  EXPECT_TRUE(holds(P{P::People{Op::equal, 5}}, record));
  EXPECT_FALSE(holds(P{P::People{Op::greaterThan, 5}}, record));
  EXPECT_TRUE(holds(P{P::People{Op::greaterThan, 4.5}}, record));
}

TEST(SearchPredicate, CountsNobodyWhereNoCountIsGiven) {
  EXPECT_TRUE(holds(P{P::People{Op::equal, 0}}, withPeople({std::nullopt, std::nullopt})));
  EXPECT_TRUE(holds(P{P::People{Op::equal, 0}}, withPeople({})));
}

TEST(SearchPredicate, AddsUpTheLargestCountsThatAFileMayHold) {
  constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
  EXPECT_TRUE(holds(P{P::People{Op::equal, 0x1p64}}, withPeople({most, most, 2})));
  EXPECT_TRUE(holds(P{P::People{Op::equal, 7}}, withPeople({most, most, 7, -most, -most})));
}

TEST(SearchPredicate, TakesASilentRecordForNotFlagged) {
  DescriptionResult record;
  EXPECT_TRUE(holds(P{P::Flagged{false}}, record));
  EXPECT_FALSE(holds(P{P::Flagged{true}}, record));
  record.flagged = false;
  EXPECT_TRUE(holds(P{P::Flagged{false}}, record));
  record.flagged = true;
  EXPECT_TRUE(holds(P{P::Flagged{true}}, record));
  EXPECT_TRUE(holds(P{P::Review{false}}, record));
}

TEST(SearchPredicate, TakesASilentRecordForNotInReview) {
  DescriptionResult record;
  EXPECT_TRUE(holds(P{P::Review{false}}, record));
  record.reviewFlag = true;
  EXPECT_TRUE(holds(P{P::Review{true}}, record));
  EXPECT_FALSE(holds(P{P::Review{false}}, record));
  EXPECT_TRUE(holds(P{P::Flagged{false}}, record));
}

TEST(SearchPredicate, TakesAnEmptyTranscriptForNone) {
  DescriptionResult record;
  EXPECT_TRUE(holds(P{P::HasTranscript{false}}, record));
  record.transcript = TranscriptInfo{};
  EXPECT_TRUE(holds(P{P::HasTranscript{false}}, record));
  record.transcript->text = " ";
  EXPECT_TRUE(holds(P{P::HasTranscript{true}}, record));
}

TEST(SearchPredicate, AllOfNoneHold) {
  EXPECT_TRUE(allHold({}, PredicateFacts{}));
  EXPECT_FALSE(allHold({P{P::Flagged{false}}, P{P::Review{true}}}, PredicateFacts{}));
}

}  // namespace
}  // namespace tq

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>

#include "TQDescription/Search/SearchEngine.hpp"

namespace tq {
namespace {

using Words = std::vector<std::string>;
using WordSet = std::set<std::string>;
using Score = SearchEngine::KeywordScore;

/// The score of one word against one part of weight 1 that has one word.
double valueOf(const std::string& word, const std::string& token) {
  const std::vector<ScoredField> fields{{1.0, {token}}};
  return SearchEngine::score(Words{word}, fields).score;
}

TEST(Tokenize, DropsWordsThatSayNothing) {
  EXPECT_EQ(SearchEngine::tokenize("shows me the clip"), Words{"shows"});
  EXPECT_EQ(SearchEngine::tokenize("a an and or the of in on at with to for from by as is are was were be show me find "
                                   "clips clip video videos"),
            Words{});
  EXPECT_EQ(SearchEngine::tokenize("THE The Ands"), Words{"ands"});
}

TEST(Tokenize, KeepsHyphenatedWordsWhole) {
  EXPECT_EQ(SearchEngine::tokenize("golden-hour, dusk"), (Words{"golden-hour", "dusk"}));
  EXPECT_EQ(SearchEngine::tokenize("a_b the-clip -"), (Words{"a_b", "the-clip", "-"}));
}

TEST(Tokenize, SplitsAtEachPunctuationSign) {
  for (const char sign : std::string(".,;:?!\"'()[]{}/\\|*#@$&+="))
    EXPECT_EQ(SearchEngine::tokenize(std::string("x") + sign + sign + "y" + sign), (Words{"x", "y"})) << sign;
}

TEST(Tokenize, KeepsOtherSigns) {
  EXPECT_EQ(SearchEngine::tokenize("x-y_z%~<>^`« “q” –"), (Words{"x-y_z%~<>^`«", "“q”", "–"}));
}

TEST(Tokenize, SplitsAtEveryKindOfWhiteSpace) {
  EXPECT_EQ(SearchEngine::tokenize("q\tr\nu\r\nv\rw\u00A0x\u2003y\u3000z\u2028ß"),
            (Words{"q", "r", "u", "v", "w", "x", "y", "z", "ß"}));
  EXPECT_EQ(SearchEngine::tokenize("x\u200By"), Words{"x\u200By"});
}

TEST(Tokenize, KeepsOrderAndDuplicates) {
  EXPECT_EQ(SearchEngine::tokenize("sea beach sea"), (Words{"sea", "beach", "sea"}));
}

TEST(Tokenize, GivesNoEmptyWords) {
  for (const std::string_view text : {"", " ", ".,;", " . \r\n ! "})
    EXPECT_EQ(SearchEngine::tokenize(text), Words{}) << text;
}

TEST(Tokenize, LowersFullUnicode) {
  EXPECT_EQ(SearchEngine::tokenize("ÉTÉ ΟΔΟΣ STRAẞE"), (Words{"été", "οδος", "straße"}));
  EXPECT_EQ(SearchEngine::tokenize("İstanbul ISPARTA ılık"), (Words{"i\u0307stanbul", "isparta", "ılık"}));
}

TEST(Tokenize, LowersTheWholeTextSoThatASignIsNoEndOfAWord) {
  // A final sigma stands before white space, but also before a hyphen.
  EXPECT_EQ(SearchEngine::tokenize("ΟΔΟΣ-Α ΟΔΟΣ"), (Words{"οδος-α", "οδος"}));
}

TEST(Tokenize, GoesByCharactersAReaderSees) {
  EXPECT_EQ(SearchEngine::tokenize("cafe\u0301 👨‍👩‍👧.x"),
            (Words{"cafe\u0301", "👨‍👩‍👧", "x"}));
  EXPECT_EQ(SearchEngine::tokenize("x.\u0301y"), Words{"x.\u0301y"});           // an accented point is no point
  EXPECT_EQ(SearchEngine::tokenize("no #️⃣1"), (Words{"no", "#️⃣1"}));  // nor is a keycap a number sign
  EXPECT_EQ(SearchEngine::tokenize("x \u200Dy"), (Words{"x", "y"}));            // a blank stays one whatever joins it
  EXPECT_EQ(SearchEngine::tokenize("x\u0600 y"), Words{"x\u0600 y"});  // a number mark takes the blank to itself
}

TEST(Tokenize, ReadsWritingsWithoutBlanksOrFromTheRight) {
  EXPECT_EQ(SearchEngine::tokenize("夕日の海、砂浜"), Words{"夕日の海、砂浜"});
  EXPECT_EQ(SearchEngine::tokenize("שקיעה, חוף"), (Words{"שקיעה", "חוף"}));
}

TEST(Tokenize, TakesANULForALetter) {
  EXPECT_EQ(SearchEngine::tokenize(std::string_view("a\0b c", 5)), (Words{std::string("a\0b", 3), "c"}));
}

TEST(Tokenize, DropsNoWordThatOnlyEndsLikeOneThatSaysNothing) {
  using std::string_literals::operator""s;
  const Words words{"\0a"s, "\0\0the"s, "xa", "clip\0"s};
  EXPECT_EQ(SearchEngine::tokenize("\0a \0\0the xa clip\0"s), words);
}

TEST(Tokens, AreThoseOfAllTexts) {
  EXPECT_EQ(SearchEngine::tokens(Words{"Sea beach", "", "the beach, Palm"}), (WordSet{"beach", "palm", "sea"}));
  EXPECT_EQ(SearchEngine::tokens({}), WordSet{});
}

TEST(Tokens, DoNotReachFromOneTextToTheNext) {
  EXPECT_EQ(SearchEngine::tokens(Words{"gol", "den"}), (WordSet{"den", "gol"}));
}

TEST(BuildScoredFields, GivesTwelveEmptyPartsForASilentRecord) {
  const std::vector<ScoredField> expected{{3.0, {}}, {3.0, {}}, {2.5, {}}, {2.0, {}}, {2.0, {}}, {1.0, {}},
                                          {2.0, {}}, {2.0, {}}, {1.5, {}}, {1.5, {}}, {1.0, {}}, {1.5, {}}};
  EXPECT_EQ(SearchEngine::buildScoredFields({}), expected);
}

TEST(BuildScoredFields, HasAPartForATranscriptWithText) {
  DescriptionResult record;
  record.transcript = TranscriptInfo{};
  EXPECT_EQ(SearchEngine::buildScoredFields(record).size(), 12u);
  record.transcript->text = " ";
  EXPECT_EQ(SearchEngine::buildScoredFields(record).size(), 13u);
  record.transcript->text = "Look there";
  EXPECT_EQ(SearchEngine::buildScoredFields(record).back(), (ScoredField{1.5, {"look", "there"}}));
}

TEST(BuildScoredFields, TakesEachPartFromItsPlace) {
  DescriptionResult record;
  record.source.filename = "filename";
  record.summary = "f6 Long";
  record.reviewReason = "reason";
  record.global = {.overallSummaryOneLine = "f5",
                   .primarySubjects = {{"f4", "f4b"}},
                   .themes = {{"f2"}},
                   .dominantPalette = {{"palette"}},
                   .searchKeywords = {{"f1 f1b", "f1c"}},
                   .suggestedUseCases = {{"f3"}}};
  record.shots = {
      {.timecode = "timecode",
       .shotType = "f10",
       .cameraMotion = "f9",
       .framingNotes = "f11",
       .people = {{{.hair = {{.color = "person"}}}}},
       .setting =
           {{.locationType = "f8a", .environment = "f8b", .timeOfDay = "f8c", .weather = "f8d", .lighting = "f8e"}},
       .colorPalette = {{.dominant = {"palette"}, .description = "palette"}},
       .overallMood = "mood",
       .tags = {{"f7"}},
       .onScreenText = {{"f12"}}},
      {.tags = {{"f7", "f7b"}}},
      {.cameraMotion = "f9b"}};
  record.transcript = TranscriptInfo{.text = "f13", .provider = "provider"};
  const std::vector<ScoredField> expected{{3.0, {"f1", "f1b", "f1c"}},
                                          {3.0, {"f2"}},
                                          {2.5, {"f3"}},
                                          {2.0, {"f4", "f4b"}},
                                          {2.0, {"f5"}},
                                          {1.0, {"f6", "long"}},
                                          {2.0, {"f7", "f7b"}},
                                          {2.0, {"f8a", "f8b", "f8c", "f8d", "f8e"}},
                                          {1.5, {"f9", "f9b"}},
                                          {1.5, {"f10"}},
                                          {1.0, {"f11"}},
                                          {1.5, {"f12"}},
                                          {1.5, {"f13"}}};
  EXPECT_EQ(SearchEngine::buildScoredFields(record), expected);
}

TEST(Score, OfTheWordItselfIsTheWeight) {
  EXPECT_EQ(valueOf("sea", "sea"), 1.0);
  EXPECT_EQ(valueOf("é", "é"), 1.0);
  EXPECT_EQ(SearchEngine::score(Words{"sea"}, std::vector<ScoredField>{{2.5, {"sea"}}}), (Score{2.5, {"sea"}}));
}

TEST(Score, OfALongerWordIsLess) {
  EXPECT_EQ(valueOf("sun", "sunset"), 0.6);
  EXPECT_EQ(valueOf("sunset", "sun"), 0.0);
  EXPECT_EQ(SearchEngine::score(Words{"sun"}, std::vector<ScoredField>{{3.0, {"sunset"}}}).score, 3.0 * 0.6);
}

TEST(Score, ShortWordsMatchOnlyThemselves) {
  EXPECT_EQ(valueOf("su", "sunset"), 0.0);
  EXPECT_EQ(valueOf("su", "su"), 1.0);
  EXPECT_EQ(valueOf("日本", "日本海"), 0.0);
  EXPECT_EQ(valueOf("日本海", "日本海岸"), 0.6);
}

TEST(Score, ALongerWordWinsOverASimilarOne) {
  EXPECT_EQ(valueOf("sunse", "sunset"), 0.6);
  EXPECT_EQ(SearchEngine::score(Words{"dolly"}, std::vector<ScoredField>{{1.0, {"dolla", "dollys", "doily"}}}).score,
            0.6);
  EXPECT_EQ(SearchEngine::score(Words{"dolly"}, std::vector<ScoredField>{{1.0, {"aolly", "zolly"}}}).score, 0.5);
}

TEST(Score, TheWordItselfWinsOverAll) {
  EXPECT_EQ(SearchEngine::score(Words{"dolly"}, std::vector<ScoredField>{{1.0, {"dolla", "dolly", "dollys"}}}).score,
            1.0);
}

TEST(Score, OfASimilarWordIsHalf) {
  EXPECT_EQ(valueOf("dolyy", "dolly"), 0.5);
  EXPECT_EQ(valueOf("dollly", "dolly"), 0.5);  // one too many
  EXPECT_EQ(valueOf("drone", "rone"), 0.5);    // the token may be short
  EXPECT_EQ(valueOf("beach", "bench"), 0.5);
}

TEST(Score, WordsUnderFiveCharactersHaveNoSimilarOnes) {
  EXPECT_EQ(valueOf("doly", "dolly"), 0.0);
  EXPECT_EQ(valueOf("éóúí", "éóúú"), 0.0);  // eight bytes, four characters
}

TEST(Score, UpToNineCharactersOneEditIsForgiven) {
  EXPECT_EQ(valueOf("abcdefghi", "abcdefghX"), 0.5);
  EXPECT_EQ(valueOf("abcdefghi", "abcdefgXX"), 0.0);
  EXPECT_EQ(valueOf("éééééééé", "éééééééX"), 0.5);  // sixteen bytes, eight characters
  EXPECT_EQ(valueOf("éééééééé", "ééééééXX"), 0.0);
}

TEST(Score, FromTenCharactersTwoEditsAreForgiven) {
  EXPECT_EQ(valueOf("abcdefghij", "abcdefghXX"), 0.5);
  EXPECT_EQ(valueOf("abcdefghij", "abcdefgh"), 0.5);
  EXPECT_EQ(valueOf("abcdefghij", "abcdefgXXX"), 0.0);
  EXPECT_EQ(valueOf("abcdefghij", "abcdefg"), 0.0);
}

TEST(Score, AnAccentIsOneCharacterHoweverItIsWritten) {
  EXPECT_EQ(valueOf("cafes", "cafe\u0301s"), 0.5);
  EXPECT_EQ(valueOf("caf\u00E9s", "cafe\u0301s"), 0.5);
  EXPECT_EQ(valueOf("cafe", "cafe\u0301s"), 0.0);  // begins with the bytes, not with the characters
  EXPECT_EQ(valueOf("cafe", "cafe\u0301"), 0.0);
}

TEST(Score, AFamilyIsOneCharacter) {
  EXPECT_EQ(valueOf("beach👨‍👩‍👧", "beach👨‍👩‍👦"), 0.5);
  EXPECT_EQ(valueOf("ab👨‍👩‍👧", "ab👨‍👩‍👧s"), 0.6);
  EXPECT_EQ(valueOf("ab👨", "ab👨‍👩‍👧"), 0.0);
  EXPECT_EQ(valueOf("👨‍👩‍👧", "👨‍👩‍👧s"), 0.0);  // one character is too short a word
}

TEST(Score, EveryPartThatHasTheWordCounts) {
  const std::vector<ScoredField> fields{{3.0, {"sea"}}, {2.5, {"seaside"}}, {1.0, {"lake"}}, {1.5, {"sea"}}};
  EXPECT_EQ(SearchEngine::score(Words{"sea"}, fields), (Score{3.0 + 2.5 * 0.6 + 1.5, {"sea"}}));
}

TEST(Score, ARepeatedWordCountsAgainAndIsNamedOnce) {
  const std::vector<ScoredField> fields{{3.0, {"beach"}}, {2.5, {"beachfront"}}};
  const Score once = SearchEngine::score(Words{"beach"}, fields);
  const Score twice = SearchEngine::score(Words{"beach", "beach"}, fields);
  EXPECT_EQ(twice.score, 2 * once.score);
  EXPECT_EQ(twice.matchedTerms, Words{"beach"});
}

double sumOf(const std::vector<double>& parts) {
  return std::accumulate(parts.begin(), parts.end(), 0.0);
}

TEST(Score, AddsUpWordByWordAndWithinAWordPartByPart) {
  const std::vector<ScoredField> fields{
      {1.5, {"seaside", "sun"}}, {1.5, {"seaside", "sunset"}}, {2.0, {"seas", "sun"}}};
  const std::vector<double> parts{1.5 * 0.6, 1.5 * 0.6, 2.0 * 0.6, 1.5, 1.5 * 0.6, 2.0};
  const std::vector<double> partByPart{1.5 * 0.6, 1.5, 1.5 * 0.6, 1.5 * 0.6, 2.0 * 0.6, 2.0};
  ASSERT_NE(sumOf(parts), sumOf(partByPart)) << "the example shows the order by its last bit";
  EXPECT_EQ(SearchEngine::score(Words{"sea", "sun"}, fields).score, sumOf(parts));
}

TEST(Score, NamesMatchedWordsInAscendingOrder) {
  const std::vector<ScoredField> fields{{1.0, {"sea", "zoo", "été", "palm"}}};
  EXPECT_EQ(SearchEngine::score(Words{"zoo", "été", "lake", "sea", "zoo"}, fields).matchedTerms,
            (Words{"sea", "zoo", "été"}));
}

TEST(Score, OfNothingIsZero) {
  EXPECT_EQ(SearchEngine::score({}, std::vector<ScoredField>{{1.0, {"sea"}}}), Score{});
  EXPECT_EQ(SearchEngine::score(Words{"sea"}, {}), Score{});
  EXPECT_EQ(SearchEngine::score(Words{"sea"}, std::vector<ScoredField>{{1.0, {}}}), Score{});
}

TEST(EditDistance, CountsEdits) {
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("same", "same", 0));
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("same", "sane", 0));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("same", "sane", 1));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("same", "sames", 1));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("same", "ame", 1));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("kitten", "sitting", 3));
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("kitten", "sitting", 2));
}

TEST(EditDistance, ASwapOfNeighboursIsTwoEdits) {
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("beach", "baech", 1));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("beach", "baech", 2));
}

TEST(EditDistance, ToAnEmptyTextIsTheLength) {
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("", "", 0));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("", "ab", 2));
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("abc", "", 2));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("", "👨‍👩‍👧", 1));
}

TEST(EditDistance, AnyThresholdWillDo) {
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("kitten", "sitting", std::numeric_limits<std::size_t>::max()));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("abc", "xyz", 3));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("", "xyz", 100));
}

TEST(EditDistance, OfVeryLongWordsIsFoundAtOnce) {
  const std::string word(200'000, 'x');
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold(word, "y" + word + "y", 2));
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("yyy" + word, word + "zzz", 2));
}

TEST(EditDistance, CountsCharactersNotBytes) {
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("x👨‍👩‍👧y", "xy", 1));
  EXPECT_TRUE(SearchEngine::editDistanceWithinThreshold("e\u0301", "e", 1));
  EXPECT_FALSE(SearchEngine::editDistanceWithinThreshold("日本", "", 1));
}

TEST(NormalizeScores, SpreadsOverZeroToOne) {
  EXPECT_EQ(SearchEngine::normalizeScores(std::vector{2.0, 4.0, 3.0}), (std::vector{0.0, 1.0, 0.5}));
}

TEST(NormalizeScores, SpreadsHoweverCloseTheScoresAre) {
  const double next = std::nextafter(2.0, 3.0);
  EXPECT_EQ(SearchEngine::normalizeScores(std::vector{next, 2.0}), (std::vector{1.0, 0.0}));
}

TEST(NormalizeScores, OfNoneAreNone) {
  EXPECT_EQ(SearchEngine::normalizeScores({}), std::vector<double>{});
}

TEST(NormalizeScores, OneAloneIsOneWhateverItWas) {
  for (const double score : {7.5, 0.0, -3.0, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(SearchEngine::normalizeScores(std::vector{score}), std::vector{1.0}) << score;
}

TEST(NormalizeScores, SeveralThatAreEqualAreZero) {
  EXPECT_EQ(SearchEngine::normalizeScores(std::vector{5.0, 5.0, 5.0}), (std::vector{0.0, 0.0, 0.0}));
}

TEST(NormalizeScores, WithoutARangeAreZero) {
  const double none = std::numeric_limits<double>::quiet_NaN();
  const double infinite = std::numeric_limits<double>::infinity();
  EXPECT_EQ(SearchEngine::normalizeScores(std::vector{none, none}), (std::vector{0.0, 0.0}));
  EXPECT_EQ(SearchEngine::normalizeScores(std::vector{infinite, infinite}), (std::vector{0.0, 0.0}));
}

}  // namespace
}  // namespace tq

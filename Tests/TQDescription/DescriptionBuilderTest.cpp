#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQCore/TQError.hpp"
#include "TQDescription/DescriptionBuilder.hpp"

namespace tq {
namespace {

std::string_view stripped(std::string_view text) {
  return DescriptionBuilder::stripFences(text);
}

TEST(StripFences, LeavesABareObjectAlone) {
  EXPECT_EQ(stripped(R"({"a": 1})"), R"({"a": 1})");
}

TEST(StripFences, TakesTheObjectOutOfAFence) {
  EXPECT_EQ(stripped("```json\n{\"a\": 1}\n```"), "{\"a\": 1}");
}

TEST(StripFences, TakesTheObjectOutOfAFenceWithWindowsLineBreaks) {
  EXPECT_EQ(stripped("```json\r\n{}\r\n```\r\n"), "{}");
}

TEST(StripFences, DropsChatterAroundTheObject) {
  EXPECT_EQ(stripped("Sure, here is the JSON: {\"a\": 1} Hope that helps!"), "{\"a\": 1}");
}

TEST(StripFences, DropsChatterAroundAFence) {
  EXPECT_EQ(stripped("Here you are:\n```json\n{\"a\": 1}\n```\nBye."), "{\"a\": 1}");
}

TEST(StripFences, NeedsNoClosingFence) {
  EXPECT_EQ(stripped("```json\n{\"a\": 1}"), "{\"a\": 1}");
}

TEST(StripFences, NeedsNoLineBreakBehindTheFence) {
  EXPECT_EQ(stripped("```{\"a\": 1}"), "{\"a\": 1}");
  EXPECT_EQ(stripped("```json {\"a\": 1}```"), "{\"a\": 1}");
}

TEST(StripFences, TheClosingFenceIsNotTheOpeningOne) {
  EXPECT_EQ(stripped("```json"), "```json");
  EXPECT_EQ(stripped("```"), "```");
  EXPECT_EQ(stripped("````"), "````");
  EXPECT_EQ(stripped("```json```"), "```json");
}

TEST(StripFences, WhatStandsBehindTheClosingFenceGoes) {
  EXPECT_EQ(stripped("```json\n{\"a\": 1}\n```\nThe set {b} is {c}."), "{\"a\": 1}");
}

TEST(StripFences, KeepsEverythingFromTheFirstBraceToTheLast) {
  EXPECT_EQ(stripped("{\"a\": 1} and {\"b\": 2}"), "{\"a\": 1} and {\"b\": 2}");
}

TEST(StripFences, TrimsWhiteSpaceBeyondASCII) {
  EXPECT_EQ(stripped("\u00a0\u2028 text \u3000"), "text");
}

TEST(StripFences, ATextWithoutBracesStays) {
  EXPECT_EQ(stripped("I cannot help with that."), "I cannot help with that.");
  EXPECT_EQ(stripped(""), "");
}

TEST(StripFences, ACutOffObjectStaysCutOff) {
  EXPECT_EQ(stripped("Here: {\"a\": [1, 2"), "{\"a\": [1, 2");
  EXPECT_EQ(stripped("} before {"), "{");
}

constexpr const char* minimal = R"({"summary": "A street.", "shots": [{}], "global": {}})";

DescriptionResult built(std::string_view text) {
  return DescriptionBuilder::build(text, {}, {}, std::nullopt);
}

/// The error that `build` throws for the text.
TQError failureOf(std::string_view text) {
  try {
    built(text);
  } catch (const TQError& error) {
    return error;
  }
  throw std::logic_error("the text was accepted: " + std::string(text));
}

/// The text of the decode failure that `build` throws.
std::string decodeFailureOf(std::string_view text) {
  return std::get<TQError::ProviderDecodeFailure>(failureOf(text).value()).text;
}

TEST(DescriptionBuilder, JoinsTheAnswerWithTheFactsOfTheRun) {
  SourceMetadata source;
  source.filename = "clip.mov";
  const EngineMetadata engine{
      .provider = "anthropic", .model = "m", .framesAnalyzed = 2, .samplingStrategy = "adaptive"};
  const TranscriptInfo transcript{.text = "Hello.", .provider = "deepgram", .model = "nova-3"};

  const DescriptionResult result = DescriptionBuilder::build(
      R"(```json
      {"schema_version": "0.9", "summary": " A street. ", "shots": [{"timecode": "b"}, {"timecode": "a"}],
       "global": {"themes": ["city"]}, "flagged": false, "review_flag": true, "review_reason": "dark",
       "source": {"filename": "evil.mov"}, "engine": 7, "transcript": "none", "extra": [1]}
      ```)",
      source, engine, transcript);

  DescriptionResult expected;
  expected.schemaVersion = "0.9";
  expected.source = source;
  expected.engine = engine;
  expected.summary = " A street. ";
  expected.shots = {{.timecode = "b"}, {.timecode = "a"}};
  expected.global.themes = {{"city"}};
  expected.flagged = false;
  expected.reviewFlag = true;
  expected.reviewReason = "dark";
  expected.transcript = transcript;
  EXPECT_EQ(result, expected);
}

TEST(DescriptionBuilder, WhatTheModelLeavesOutStaysAbsent) {
  const DescriptionResult result = built(minimal);
  EXPECT_EQ(result.flagged, std::nullopt);
  EXPECT_EQ(result.reviewFlag, std::nullopt);
  EXPECT_EQ(result.reviewReason, std::nullopt);
  EXPECT_EQ(result.transcript, std::nullopt);
  EXPECT_EQ(result.shots, std::vector<Shot>{Shot{}});
  EXPECT_EQ(result.global, GlobalSummary{});
}

TEST(DescriptionBuilder, AMissingSchemaVersionIsTheCurrentOne) {
  EXPECT_EQ(built(minimal).schemaVersion, SchemaVersion::current);
  EXPECT_EQ(built(R"({"schema_version": null, "summary": "A", "shots": [{}], "global": {}})").schemaVersion, "1.0");
}

TEST(DescriptionBuilder, AnEmptyOrMissingSummaryIsRejected) {
  const TQError expected = TQError::schemaValidationFailed("missing 'summary'");
  EXPECT_EQ(failureOf(R"({"summary": "", "shots": [{}], "global": {}})"), expected);
  EXPECT_EQ(failureOf(R"({"summary": null, "shots": [{}], "global": {}})"), expected);
  EXPECT_EQ(failureOf(R"({"shots": [{}], "global": {}})"), expected);
}

TEST(DescriptionBuilder, ASummaryOfBlanksPasses) {
  EXPECT_EQ(built(R"({"summary": "  ", "shots": [{}], "global": {}})").summary, "  ");
}

TEST(DescriptionBuilder, EmptyOrMissingShotsAreRejectedAlsoWhenFlagged) {
  const TQError expected = TQError::schemaValidationFailed("missing or empty 'shots'");
  EXPECT_EQ(failureOf(R"({"summary": "A", "shots": [], "global": {}, "flagged": true})"), expected);
  EXPECT_EQ(failureOf(R"({"summary": "A", "shots": null, "global": {}})"), expected);
  EXPECT_EQ(failureOf(R"({"summary": "A", "global": {}})"), expected);
}

TEST(DescriptionBuilder, AMissingGlobalIsRejected) {
  const TQError expected = TQError::schemaValidationFailed("missing 'global'");
  EXPECT_EQ(failureOf(R"({"summary": "A", "shots": [{}]})"), expected);
  EXPECT_EQ(failureOf(R"({"summary": "A", "shots": [{}], "global": null})"), expected);
}

TEST(DescriptionBuilder, TheFirstFaultIsTheOneReported) {
  EXPECT_EQ(failureOf("{}"), TQError::schemaValidationFailed("missing 'summary'"));
  EXPECT_EQ(failureOf(R"({"summary": "A"})"), TQError::schemaValidationFailed("missing or empty 'shots'"));
}

TEST(DescriptionBuilder, AWrongKindOfValueFailsTheWholeAnswer) {
  for (const std::string_view text :
       {R"({"summary": "A", "shots": "none", "global": {}})", R"({"summary": 7, "shots": [{}], "global": {}})",
        R"({"summary": "A", "shots": [{}], "global": {}, "flagged": "false"})",
        R"({"summary": "A", "shots": [{}], "global": []})",
        R"({"summary": "A", "shots": [{"people_count": "2"}], "global": {}})",
        R"({"summary": "A", "shots": [{}], "global": {"themes": "city"}})",
        R"({"summary": "A", "shots": [{"color_palette": {}}], "global": {}})", R"("just a text")"})
    EXPECT_THAT(decodeFailureOf(text), testing::StartsWith("could not decode JSON: ")) << text;
}

TEST(DescriptionBuilder, ADecodingFailureSaysWhereItIs) {
  EXPECT_THAT(decodeFailureOf(R"({"summary": "A", "shots": [{}, {"people_count": "2"}], "global": {}})"),
              testing::HasSubstr("shots[1].people_count"));
}

TEST(DescriptionBuilder, ACutOffAnswerIsADecodingFailure) {
  EXPECT_THAT(decodeFailureOf(R"({"summary": "A", "shots": [{"timecode": "00:00)"),
              testing::StartsWith("could not decode JSON: "));
}

TEST(DescriptionBuilder, TwoObjectsInOneAnswerAreADecodingFailure) {
  EXPECT_THAT(decodeFailureOf(std::string(minimal) + " or " + minimal), testing::StartsWith("could not decode JSON: "));
}

TEST(DescriptionBuilder, AnEmptyAnswerIsADecodingFailure) {
  EXPECT_THAT(decodeFailureOf(""), testing::StartsWith("could not decode JSON: "));
}

TEST(DescriptionBuilder, AnAnswerThatIsNotUTF8IsSaidToBeSo) {
  EXPECT_EQ(decodeFailureOf("{\"summary\": \"\xff\"}"), "response not UTF-8");
}

TEST(DescriptionBuilder, NullInsideAShotIsAbsent) {
  EXPECT_EQ(built(R"({"summary": "A", "shots": [{"timecode": null}], "global": {}})").shots[0], Shot{});
}

TEST(DescriptionBuilder, AReviewFlagNeedsNoReason) {
  const DescriptionResult result =
      built(R"({"summary": "A", "shots": [{}], "global": {}, "review_flag": true, "review_reason": null})");
  EXPECT_EQ(result.reviewFlag, true);
  EXPECT_EQ(result.reviewReason, std::nullopt);
}

TEST(DescriptionBuilder, KeepsWordsThatNoVocabularyKnows) {
  EXPECT_EQ(built(R"({"summary": "A", "shots": [{"shot_type": "worm's-eye"}], "global": {}})").shots[0].shotType,
            "worm's-eye");
}

}  // namespace
}  // namespace tq

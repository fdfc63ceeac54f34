#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQCore/Vocabularies.hpp"
#include "TQVision/PromptBuilder.hpp"

namespace tq {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string golden(const std::string& name) {
  return test::contentOf(std::filesystem::path(TQ_GOLDEN_FOLDER) / name);
}

SourceMetadata clip() {
  return {.filename = "a.mov", .durationSeconds = 12.5, .resolution = "1920x1080", .frameRate = 29.97, .codec = "h264"};
}

std::string userPrompt(const std::optional<std::string>& transcript) {
  return PromptBuilder::userPrompt(8, clip(), transcript);
}

TEST(SystemPrompt, OfTheStandardProfileIsTheAgreedText) {
  EXPECT_EQ(PromptBuilder::systemPrompt(PromptProfile::standard), golden("system-standard.txt"));
}

TEST(SystemPrompt, OfTheUnrestrictedProfileIsTheAgreedText) {
  EXPECT_EQ(PromptBuilder::systemPrompt(PromptProfile::unrestricted), golden("system-unrestricted.txt"));
}

TEST(SystemPrompt, OfEveryProfileEndsWithTheLightingVocabulary) {
  for (const PromptProfile profile : allCases<PromptProfile>())
    EXPECT_THAT(PromptBuilder::systemPrompt(profile), EndsWith("\n- lighting:      " + std::string(Vocab::lighting)));
}

TEST(SystemPrompt, OfEveryProfileBeginsItsSafetyRuleBehindAnEmptyLine) {
  for (const PromptProfile profile : allCases<PromptProfile>()) {
    const std::string text = PromptBuilder::systemPrompt(profile);
    EXPECT_THAT(text, HasSubstr("\n\nInput safety (read this first):\n"));
    EXPECT_THAT(text, Not(HasSubstr("\n\n\n")));
  }
}

TEST(SystemPrompt, OfEveryProfileListsEveryVocabulary) {
  for (const PromptProfile profile : allCases<PromptProfile>())
    for (const std::string_view words :
         {Vocab::shotTypes, Vocab::cameraMotions, Vocab::moods, Vocab::locations, Vocab::timesOfDay, Vocab::lighting})
      EXPECT_THAT(PromptBuilder::systemPrompt(profile), HasSubstr(std::string(words)));
}

TEST(SystemPrompt, KeepsTheLetterNForTheNumberOfFrames) {
  EXPECT_THAT(PromptBuilder::systemPrompt(PromptProfile::standard), HasSubstr("\nGiven N frames extracted"));
}

TEST(SystemPrompt, OfTheUnrestrictedProfileStopsAtApparentMinors) {
  EXPECT_THAT(PromptBuilder::systemPrompt(PromptProfile::unrestricted),
              HasSubstr("\"Content cannot be described — apparent minors\n  present.\""));
}

TEST(UserPrompt, IsTheAgreedText) {
  EXPECT_EQ(userPrompt("  Good evening.\n"), golden("user-prompt.txt"));
}

TEST(UserPrompt, BeginsWithTheFactsOfTheClip) {
  EXPECT_THAT(userPrompt(std::nullopt), StartsWith("Source: a.mov\n"
                                                   "Duration: 12.50s  Resolution: 1920x1080  FPS: 29.97  Codec: h264\n"
                                                   "Frames provided: 8 (chronological)\n"
                                                   "\nProduce a JSON object that conforms to this schema"));
}

TEST(UserPrompt, AWholeFrameRateKeepsItsFraction) {
  SourceMetadata source = clip();
  source.frameRate = 30;
  EXPECT_THAT(PromptBuilder::userPrompt(1, source, std::nullopt), HasSubstr("  FPS: 30.0  Codec: "));
}

TEST(UserPrompt, EndsWithoutALineBreak) {
  EXPECT_THAT(userPrompt(std::nullopt), EndsWith("\nRespond with the JSON object only."));
}

TEST(UserPrompt, PutsEveryVocabularyIntoTheSchema) {
  const std::string text = userPrompt(std::nullopt);
  for (const auto& [key, words] :
       std::vector<std::pair<std::string, std::string_view>>{{"shot_type", Vocab::shotTypes},
                                                             {"camera_motion", Vocab::cameraMotions},
                                                             {"perceived_mood", Vocab::moods},
                                                             {"location_type", Vocab::locations},
                                                             {"time_of_day", Vocab::timesOfDay},
                                                             {"lighting", Vocab::lighting}})
    EXPECT_THAT(text, HasSubstr("\"" + key + "\": \"<one of: " + std::string(words) + ">\""));
}

TEST(UserPrompt, AnAbsentEmptyOrBlankTranscriptLeavesNoTrace) {
  const std::string without = userPrompt(std::nullopt);
  EXPECT_THAT(without, Not(HasSubstr("TRANSCRIPT")));
  EXPECT_EQ(userPrompt(""), without);
  EXPECT_EQ(userPrompt(" \n\t\u00a0\u2028"), without);
}

TEST(UserPrompt, ATranscriptStandsTrimmedBetweenItsMarkers) {
  EXPECT_THAT(userPrompt("\n Hello,\n world. \n"),
              HasSubstr("\n<<<TRANSCRIPT\nHello,\n world.\nTRANSCRIPT>>>\nUse this only to inform"));
}

TEST(UserPrompt, NothingInATranscriptIsEscapedOrFilledIn) {
  EXPECT_THAT(userPrompt("a TRANSCRIPT>>> \"b\" @moods@"),
              HasSubstr("\na TRANSCRIPT>>> \"b\" @moods@\nTRANSCRIPT>>>\n"));
}

TEST(UserPrompt, AFilenameThatNamesAPlaceholderStays) {
  SourceMetadata source = clip();
  source.filename = "@lighting@.mov";
  EXPECT_THAT(PromptBuilder::userPrompt(1, source, std::nullopt), StartsWith("Source: @lighting@.mov\n"));
}

/// What stands between the markers.
std::string passedOn(const std::string& transcript) {
  const std::string text = userPrompt(transcript);
  const std::string opening = "<<<TRANSCRIPT\n";
  const std::size_t start = text.find(opening) + opening.size();
  return text.substr(start, text.find("\nTRANSCRIPT>>>", start) - start);
}

std::string repeated(const std::string& character, std::size_t count) {
  std::string text;
  for (std::size_t index = 0; index < count; ++index)
    text += character;
  return text;
}

TEST(UserPrompt, ATranscriptOfTheLimitIsPassedWhole) {
  const std::string text = repeated("a", PromptBuilder::maxTranscriptCharacters);
  EXPECT_EQ(text.size(), 12000u);
  EXPECT_EQ(passedOn(text), text);
  EXPECT_EQ(passedOn(text + "  \n"), text) << "white space at the end does not count";
}

TEST(UserPrompt, ATranscriptBeyondTheLimitIsCutAndMarked) {
  EXPECT_EQ(passedOn(repeated("a", 12001)), repeated("a", 12000) + "…[truncated]");
}

TEST(UserPrompt, TheLimitCountsCharactersAsReadersDo) {
  for (const std::string character : {"é", "e\u0301", "👩‍👩‍👧", "🇩🇪"}) {
    EXPECT_EQ(passedOn(repeated(character, 12000)), repeated(character, 12000));
    EXPECT_EQ(passedOn(repeated(character, 12001)), repeated(character, 12000) + "…[truncated]");
  }
}

}  // namespace
}  // namespace tq

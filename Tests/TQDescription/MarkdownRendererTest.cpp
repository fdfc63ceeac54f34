#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQDescription/GoldenText.hpp"
#include "TQDescription/MarkdownRenderer.hpp"

namespace tq {
namespace {

using test::golden;
using testing::HasSubstr;

/// What stands between two pieces of the text.
std::string between(const std::string& text, const std::string& start, const std::string& end) {
  const std::size_t from = text.find(start) + start.size();
  return text.substr(from, text.find(end, from) - from);
}

DescriptionResult minimalResult() {
  DescriptionResult result;
  result.source = {.filename = "a.mov", .resolution = "640x480", .codec = "h264"};
  result.engine = {.provider = "mock", .model = "mock-v1", .framesAnalyzed = 0, .samplingStrategy = "adaptive"};
  result.summary = "A street.";
  return result;
}

Shot fullShot() {
  return {
      .timecode = "00:00:01.500",
      .shotType = "wide",
      .cameraMotion = "pan",
      .framingNotes = "Centred on the door.",
      .people = {{
          {.approximateAgeRange = "25-35",
           .perceivedGenderPresentation = "feminine",
           .skinTone = "light-warm",
           .hair = {{.color = "black", .length = "long", .style = "braided"}},
           .eyes = "brown",
           .pose = "standing",
           .expression = "smiling",
           .perceivedMood = "joyful",
           .moodConfidence = 0.875,
           .clothing =
               {{.top = "red coat", .bottom = "jeans", .accessories = {{"hat", "scarf"}}, .overallStyle = "casual"}}},
          {.eyes = "blue"},
      }},
      .peopleCount = 2,
      .setting = {{.locationType = "outdoor",
                   .environment = "market street",
                   .timeOfDay = "dusk",
                   .weather = "light rain",
                   .lighting = "overcast"}},
      .colorPalette = {{.dominant = {"#112233", "#445566"}, .description = "cold and muted"}},
      .overallMood = "calm",
      .tags = {{"street", "rain"}},
      .faces = {{FaceBox{}, FaceBox{}}},
      .onScreenText = {{"EXIT", "Café"}},
  };
}

DescriptionResult fullResult() {
  DescriptionResult result;
  result.source = {
      .filename = "clip.take2.mov",
      .durationSeconds = 12.5,
      .resolution = "1920x1080",
      .frameRate = 29.97,
      .codec = "h264",
      .fileSizeBytes = 4'294'967'296,
      .sha256 = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
      .describedAt = Date(std::chrono::seconds(1'795'255'200)),
      .gps = {{.latitude = 38.7222524, .longitude = -9.1393366, .altitudeMeters = 12.4, .placeName = "Lisbon"}}};
  result.engine = {.provider = "anthropic", .model = "m-1", .framesAnalyzed = 2, .samplingStrategy = "adaptive"};
  result.summary = "A rainy market street at dusk. People pass a lit door.";
  result.global = {.overallSummaryOneLine = "A market street in the rain.",
                   .primarySubjects = {{"street", "people"}},
                   .themes = {{"city", "weather"}},
                   .dominantPalette = {{"#112233", "#445566"}},
                   .searchKeywords = {{"rain", "market"}},
                   .suggestedUseCases = {{"b-roll", "opening"}}};
  result.flagged = true;
  result.reviewFlag = true;
  result.reviewReason = "underexposed";
  result.transcript = {
      {.text = "Hello. Good evening.",
       .provider = "deepgram",
       .model = "nova-3",
       .language = "en",
       .speakers = {{{.speaker = 0, .startSeconds = 0.5, .endSeconds = 1.25, .text = "Hello."},
                     {.speaker = 1, .startSeconds = 1.5, .endSeconds = 3661.5, .text = "Good evening."}}}}};
  result.shots = {fullShot(), {.timecode = "00:00:09.000"}};
  return result;
}

TEST(MarkdownRenderer, RendersAFullRecord) {
  EXPECT_EQ(MarkdownRenderer::render(fullResult()), golden("full.md"));
}

TEST(MarkdownRenderer, RendersAMinimalRecord) {
  EXPECT_EQ(MarkdownRenderer::render(minimalResult()), golden("minimal.md"));
}

// The head of the document.

TEST(MarkdownRenderer, TheTitleIsTheFilenameWithoutItsLastExtension) {
  for (const auto& [filename, title] : std::vector<std::pair<std::string, std::string>>{
           {"a.b.mov", "# a.b\n\n"}, {"clip", "# clip\n\n"}, {".mov", "# .mov\n\n"}}) {
    DescriptionResult result = minimalResult();
    result.source.filename = filename;
    EXPECT_THAT(MarkdownRenderer::render(result), testing::StartsWith(title));
  }
}

TEST(MarkdownRenderer, OnlyATrueFlagPrintsABanner) {
  DescriptionResult result = minimalResult();
  for (const std::optional<bool> value : {std::optional<bool>(), std::optional(false)}) {
    result.flagged = value;
    result.reviewFlag = value;
    result.reviewReason = "unused";
    EXPECT_THAT(MarkdownRenderer::render(result), testing::StartsWith("# a\n\n## Summary\n\n"));
  }
}

std::string reviewBanner(std::optional<std::string> reason) {
  DescriptionResult result = minimalResult();
  result.reviewFlag = true;
  result.reviewReason = std::move(reason);
  return between(MarkdownRenderer::render(result), "# a\n\n", "## Summary");
}

TEST(MarkdownRenderer, TheReviewBannerNeedsNoReason) {
  EXPECT_EQ(reviewBanner({}), "> 👀 **Needs review**\n\n");
}

TEST(MarkdownRenderer, AnEmptyReviewReasonLeavesTheDashStanding) {
  EXPECT_EQ(reviewBanner(""), "> 👀 **Needs review** — \n\n");
}

TEST(MarkdownRenderer, TheReviewReasonFollowsTheDash) {
  EXPECT_EQ(reviewBanner("blurry"), "> 👀 **Needs review** — blurry\n\n");
}

TEST(MarkdownRenderer, AnEmptyOneLineSummaryPrintsNothing) {
  DescriptionResult result = minimalResult();
  result.global.overallSummaryOneLine = "";
  EXPECT_EQ(MarkdownRenderer::render(result), MarkdownRenderer::render(minimalResult()));
}

// The table of the source.

TEST(MarkdownRenderer, AnEmptyDigestIsPresentAndPrintsItsRow) {
  DescriptionResult result = minimalResult();
  result.source.sha256 = "";
  EXPECT_THAT(MarkdownRenderer::render(result), HasSubstr("| SHA-256 | `` |\n"));
}

TEST(MarkdownRenderer, NothingIsEscaped) {
  DescriptionResult result = minimalResult();
  result.source.codec = "a|b";
  result.summary = "*stars* & <tags>";
  const std::string text = MarkdownRenderer::render(result);
  EXPECT_THAT(text, HasSubstr("| Codec | a|b |\n"));
  EXPECT_THAT(text, HasSubstr("## Summary\n\n*stars* & <tags>\n\n"));
}

std::string gpsRow(const GPS& gps) {
  DescriptionResult result = minimalResult();
  result.source.gps = gps;
  return between(MarkdownRenderer::render(result), "| GPS | ", " |\n");
}

TEST(MarkdownRenderer, GPSWithoutANameShowsCoordinates) {
  EXPECT_EQ(gpsRow({.latitude = 1.5, .longitude = -2}), "1.500000, -2.000000");
  EXPECT_EQ(gpsRow({.latitude = 1.5, .longitude = -2, .altitudeMeters = 12.6}), "1.500000, -2.000000 (alt 13 m)");
}

TEST(MarkdownRenderer, GPSWithAnEmptyNameCountsAsUnnamed) {
  EXPECT_EQ(gpsRow({.latitude = 1, .longitude = 2, .altitudeMeters = 3, .placeName = ""}),
            "1.000000, 2.000000 (alt 3 m)");
}

TEST(MarkdownRenderer, GPSWithANameShowsTheNameFirst) {
  EXPECT_EQ(gpsRow({.latitude = 1, .longitude = 2, .placeName = "Rome"}), "Rome (1.000000, 2.000000)");
  EXPECT_EQ(gpsRow({.latitude = 1, .longitude = 2, .altitudeMeters = 3, .placeName = "Rome"}),
            "Rome (1.000000, 2.000000, alt 3 m)");
}

// The global lists.

TEST(MarkdownRenderer, EmptyGlobalListsPrintNothing) {
  DescriptionResult result = minimalResult();
  const std::vector<std::string> empty;
  result.global = {.primarySubjects = empty,
                   .themes = empty,
                   .dominantPalette = empty,
                   .searchKeywords = empty,
                   .suggestedUseCases = empty};
  EXPECT_EQ(between(MarkdownRenderer::render(result), "## Global\n\n", "## Shots"), "\n");
}

TEST(MarkdownRenderer, OnlySuggestedUsesArePartedBySemicolons) {
  DescriptionResult result = minimalResult();
  result.global.themes = {{"a", "b"}};
  result.global.suggestedUseCases = {{"c", "d"}};
  EXPECT_EQ(between(MarkdownRenderer::render(result), "## Global\n\n", "## Shots"),
            "- **Themes:** a, b\n- **Suggested uses:** c; d\n\n");
}

// The transcript.

std::string renderedTranscript(const TranscriptInfo& transcript) {
  DescriptionResult result = minimalResult();
  result.transcript = transcript;
  return between(MarkdownRenderer::render(result), "## Global\n\n\n", "## Shots");
}

TEST(MarkdownRenderer, AnEmptyTranscriptPrintsNoSectionEvenWithSpeakers) {
  EXPECT_EQ(renderedTranscript({.text = "", .provider = "p", .model = "m", .speakers = {{{.text = "Hi."}}}}), "");
}

TEST(MarkdownRenderer, ATranscriptWithoutTurnsPrintsItsText) {
  const std::string expected = "## Transcript\n\n> `p/m`\n\nHi.\n\n";
  EXPECT_EQ(renderedTranscript({.text = "Hi.", .provider = "p", .model = "m"}), expected);
  EXPECT_EQ(renderedTranscript(
                {.text = "Hi.", .provider = "p", .model = "m", .speakers = std::vector<TranscriptSpeakerTurn>()}),
            expected);
}

TEST(MarkdownRenderer, AnEmptyTranscriptLanguagePrintsNothing) {
  EXPECT_EQ(renderedTranscript({.text = "Hi.", .provider = "p", .model = "m", .language = ""}),
            "## Transcript\n\n> `p/m`\n\nHi.\n\n");
}

TEST(MarkdownRenderer, TheTranscriptLanguageFollowsThePoint) {
  EXPECT_THAT(renderedTranscript({.text = "Hi.", .provider = "p", .model = "m", .language = "en"}),
              HasSubstr("> `p/m` · language `en`\n\n"));
}

TEST(MarkdownRenderer, TurnsReplaceThePlainText) {
  EXPECT_EQ(renderedTranscript({.text = "unused",
                                .provider = "p",
                                .model = "m",
                                .speakers = {{{.speaker = 0, .startSeconds = 0, .endSeconds = 1.5, .text = "Hi."}}}}),
            "## Transcript\n\n> `p/m`\n\n**Speaker 0** [00:00:00.000–00:00:01.500]: Hi.\n\n");
}

TEST(MarkdownRenderer, ATurnAtAnImpossibleTimeStillRenders) {
  EXPECT_THAT(renderedTranscript({.text = "x",
                                  .provider = "p",
                                  .model = "m",
                                  .speakers = {{{.startSeconds = -1e300, .endSeconds = 1e300, .text = "Hi."}}}}),
              HasSubstr("]: Hi.\n\n"));
}

// One shot.

TEST(RenderShot, AShotWithOnlyATimecodeIsAHeading) {
  EXPECT_EQ(MarkdownRenderer::renderShot(1, {.timecode = "00:00:01.000"}), "### Shot 1 — 00:00:01.000\n\n\n");
}

TEST(RenderShot, AMissingTimecodeIsADashAndAnEmptyOneIsNot) {
  EXPECT_EQ(MarkdownRenderer::renderShot(3, {}), "### Shot 3 — —\n\n\n");
  EXPECT_EQ(MarkdownRenderer::renderShot(3, {.timecode = ""}), "### Shot 3 — \n\n\n");
}

/// The lines that a shot prints between its heading and its end.
std::string shotLines(const Shot& shot) {
  return between(MarkdownRenderer::renderShot(1, shot) + "\f", "—\n\n", "\n\f");
}

TEST(RenderShot, EmptyShotTypeAndCameraMotionKeepTheirLabels) {
  EXPECT_EQ(shotLines({.shotType = ""}), "- **Shot type:** \n");
  EXPECT_EQ(shotLines({.cameraMotion = ""}), "- **Camera motion:** \n");
}

TEST(RenderShot, EmptyFramingAndMoodPrintNothing) {
  EXPECT_EQ(shotLines({.framingNotes = "", .overallMood = ""}), "");
  EXPECT_EQ(shotLines({.framingNotes = "low", .overallMood = "calm"}), "- **Framing:** low\n- **Mood:** calm\n");
}

TEST(RenderShot, NoPeopleAtAllAreCountedToo) {
  EXPECT_EQ(shotLines({.peopleCount = 0}), "- **People count:** 0\n");
}

TEST(RenderShot, EmptyListsPrintNothing) {
  const std::vector<std::string> empty;
  EXPECT_EQ(
      shotLines(
          {.people = std::vector<Person>(), .tags = empty, .faces = std::vector<FaceBox>(), .onScreenText = empty}),
      "");
}

TEST(RenderShot, FacesAreCounted) {
  EXPECT_EQ(shotLines({.faces = {{FaceBox{}, FaceBox{}, FaceBox{}}}}), "- **Faces detected:** 3\n");
}

TEST(RenderShot, OnScreenTextStandsInTypographicQuotes) {
  EXPECT_EQ(shotLines({.onScreenText = {{"EXIT", ""}}}), "- **On-screen text:** “EXIT”, “”\n");
}

TEST(RenderShot, TagsStandInBackticks) {
  EXPECT_EQ(shotLines({.tags = {{"a", "b c"}}}), "- **Tags:** `a` `b c`\n");
}

TEST(RenderShot, AnEmptySettingAndPaletteArePresent) {
  EXPECT_EQ(shotLines({.setting = Setting{}}), "- **Setting:** —\n");
  EXPECT_EQ(shotLines({.colorPalette = ColorPalette{}}), "- **Palette:** \n");
}

TEST(RenderShot, PeopleAreNumberedFromOneUnderTheirHeading) {
  EXPECT_EQ(shotLines({.people = {{Person{}, Person{}}}}), "\n**People**\n\n**Person 1**\n\n\n**Person 2**\n\n\n");
}

// One person. Every field prints when it is present, even empty.

/// The lines that a person prints between the heading and the end.
std::string personLines(const Person& person) {
  return between(MarkdownRenderer::renderPerson(2, person) + "\f", "**Person 2**\n\n", "\n\f");
}

TEST(RenderPerson, APersonOfWhomNothingIsKnownIsAHeading) {
  EXPECT_EQ(MarkdownRenderer::renderPerson(1, {}), "**Person 1**\n\n\n");
}

TEST(RenderPerson, EmptyFieldsKeepTheirLabels) {
  EXPECT_EQ(personLines({.approximateAgeRange = ""}), "- Approximate age: \n");
  EXPECT_EQ(personLines({.perceivedGenderPresentation = ""}), "- Perceived gender presentation: \n");
  EXPECT_EQ(personLines({.skinTone = ""}), "- Skin tone: \n");
  EXPECT_EQ(personLines({.hair = PersonHair{}}), "- Hair: \n");
  EXPECT_EQ(personLines({.eyes = ""}), "- Eyes: \n");
  EXPECT_EQ(personLines({.pose = ""}), "- Pose: \n");
  EXPECT_EQ(personLines({.expression = ""}), "- Expression: \n");
  EXPECT_EQ(personLines({.perceivedMood = ""}), "- Perceived mood: \n");
  EXPECT_EQ(personLines({.clothing = PersonClothing{}}), "- Clothing: \n");
}

TEST(RenderPerson, TheMoodCarriesItsConfidence) {
  EXPECT_EQ(personLines({.perceivedMood = "sad", .moodConfidence = 0.875}), "- Perceived mood: sad (confidence 88%)\n");
  EXPECT_EQ(personLines({.perceivedMood = "", .moodConfidence = 0}), "- Perceived mood:  (confidence 0%)\n");
}

TEST(RenderPerson, AConfidenceWithoutAMoodPrintsNothing) {
  EXPECT_EQ(personLines({.moodConfidence = 0.5}), "");
}

// Setting, palette, hair and clothing.

TEST(RenderSetting, EmptyLocationAndTimeArePartsAndTheOthersAreNot) {
  EXPECT_EQ(MarkdownRenderer::renderSetting({.locationType = ""}), "- **Setting:** \n");
  EXPECT_EQ(MarkdownRenderer::renderSetting({.timeOfDay = ""}), "- **Setting:** \n");
  EXPECT_EQ(MarkdownRenderer::renderSetting({.locationType = "", .timeOfDay = ""}), "- **Setting:**  · \n");
  EXPECT_EQ(MarkdownRenderer::renderSetting({.environment = "", .weather = "", .lighting = ""}), "- **Setting:** —\n");
}

TEST(RenderSetting, OnlyLightingCarriesALabel) {
  EXPECT_EQ(MarkdownRenderer::renderSetting(*fullShot().setting),
            "- **Setting:** outdoor · market street · dusk · light rain · lighting: overcast\n");
}

TEST(RenderPalette, AnEmptyDescriptionPrintsNoDash) {
  EXPECT_EQ(MarkdownRenderer::renderPalette({.dominant = {"#111111"}, .description = ""}),
            "- **Palette:** `#111111`\n");
  EXPECT_EQ(MarkdownRenderer::renderPalette({.dominant = {"#111111"}, .description = "dark"}),
            "- **Palette:** `#111111` — dark\n");
}

TEST(PaletteLine, PutsEachColourInBackticks) {
  EXPECT_EQ(MarkdownRenderer::paletteLine({"#111111", "#222222"}), "`#111111` `#222222`");
  EXPECT_EQ(MarkdownRenderer::paletteLine({}), "");
}

TEST(HairLine, JoinsWhatIsPresentEvenIfEmpty) {
  EXPECT_EQ(MarkdownRenderer::hairLine({.color = "red", .style = "curly"}), "red, curly");
  EXPECT_EQ(MarkdownRenderer::hairLine({.color = "", .length = "", .style = ""}), ", , ");
  EXPECT_EQ(MarkdownRenderer::hairLine({}), "");
}

TEST(ClothingLine, JoinsWhatIsPresentEvenIfEmpty) {
  EXPECT_EQ(MarkdownRenderer::clothingLine({.top = "", .bottom = "", .overallStyle = ""}),
            "top:  · bottom:  · style: ");
  EXPECT_EQ(MarkdownRenderer::clothingLine({}), "");
}

TEST(ClothingLine, EmptyAccessoriesPrintNothing) {
  EXPECT_EQ(MarkdownRenderer::clothingLine({.top = "coat", .accessories = std::vector<std::string>()}), "top: coat");
  EXPECT_EQ(MarkdownRenderer::clothingLine({.accessories = {{"hat", "scarf"}}}), "accessories: hat, scarf");
}

}  // namespace
}  // namespace tq

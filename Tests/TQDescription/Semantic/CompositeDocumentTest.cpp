#include <gtest/gtest.h>

#include "TQDescription/Semantic/CompositeDocument.hpp"

namespace tq {
namespace {

using Texts = std::vector<std::string>;

DescriptionResult withShots(std::vector<Shot> shots) {
  DescriptionResult result;
  result.shots = std::move(shots);
  return result;
}

TEST(CompositeDocument, HasALineForEachSideInAFixedOrder) {
  DescriptionResult result;
  result.summary = "A beach in the evening.";
  result.global = {.overallSummaryOneLine = "A walk at dusk.",
                   .primarySubjects = Texts{"woman", "dog"},
                   .themes = Texts{"solitude", "nature"},
                   .dominantPalette = Texts{"#aabbcc"},
                   .searchKeywords = Texts{"beach", "dusk"},
                   .suggestedUseCases = Texts{"travel film"}};
  result.shots = {{.timecode = "00:00:01.000",
                   .shotType = "wide",
                   .framingNotes = "low horizon",
                   .setting = Setting{.locationType = "outdoor",
                                      .environment = "beach",
                                      .timeOfDay = "dusk",
                                      .weather = "clear",
                                      .lighting = "golden-hour"},
                   .overallMood = "calm",
                   .tags = Texts{"sea", "sand"},
                   .onScreenText = Texts{"LIFEGUARD"}}};
  result.transcript = TranscriptInfo{.text = "Come here, boy.", .provider = "p", .model = "m"};
  EXPECT_EQ(CompositeDocument::make(result),
            "Summary: A walk at dusk.\n"
            "Keywords: beach, dusk\n"
            "Themes: solitude, nature\n"
            "Use cases: travel film\n"
            "Subjects: woman, dog\n"
            "Description: A beach in the evening.\n"
            "Tags: sea, sand\n"
            "Framing: low horizon\n"
            "Mood: calm\n"
            "Setting: outdoor, dusk, golden-hour, beach, clear\n"
            "On-screen text: LIFEGUARD\n"
            "Transcript: Come here, boy.");
}

TEST(CompositeDocument, OfNothingIsEmpty) {
  EXPECT_EQ(CompositeDocument::make({}), "");
  EXPECT_EQ(CompositeDocument::make(withShots({{}, {.setting = Setting{}, .tags = Texts{}}})), "");
}

TEST(CompositeDocument, LeavesOutWhatIsBlank) {
  DescriptionResult result;
  result.summary = " \n\t\u00A0";
  result.global.overallSummaryOneLine = "";
  result.global.themes = Texts{"", " ", "\n"};
  result.shots = {{.framingNotes = "  ", .setting = Setting{.weather = "\t"}}};
  result.transcript = TranscriptInfo{.text = "\r\n"};
  EXPECT_EQ(CompositeDocument::make(result), "");
}

TEST(CompositeDocument, TrimsEveryValueAndDropsTheEmptyOnesAmongThem) {
  DescriptionResult result;
  result.summary = "\n A  beach. \n";
  result.global.themes = Texts{" sea ", "", "\u3000sand\u2028", "  "};
  EXPECT_EQ(CompositeDocument::make(result), "Themes: sea, sand\nDescription: A  beach.");
}

TEST(CompositeDocument, TakesShotsInTheirOrderAndKeepsWhatRepeats) {
  EXPECT_EQ(
      CompositeDocument::make(withShots({{.overallMood = "calm", .tags = Texts{"b", "a"}},
                                         {.framingNotes = "near"},
                                         {.framingNotes = "far", .overallMood = "calm", .tags = Texts{"a", "b"}}})),
      "Tags: b, a, a, b\nFraming: near, far\nMood: calm, calm");
}

TEST(CompositeDocument, GoesThroughTheSettingsShotByShot) {
  EXPECT_EQ(CompositeDocument::make(withShots({{.setting = Setting{.environment = "street", .lighting = "mixed"}},
                                               {},
                                               {.setting = Setting{.locationType = "indoor", .timeOfDay = "night"}}})),
            "Setting: mixed, street, indoor, night");
}

TEST(CompositeDocument, CutsNothing) {
  DescriptionResult result;
  result.transcript = TranscriptInfo{.text = std::string(1'000'000, 'w')};
  EXPECT_EQ(CompositeDocument::make(result), "Transcript: " + std::string(1'000'000, 'w'));
}

TEST(CompositeDocument, LineBreaksInsideAValueStay) {
  DescriptionResult result;
  result.summary = "one\ntwo";
  EXPECT_EQ(CompositeDocument::make(result), "Description: one\ntwo");
}

TEST(CompositeDocument, TellsNothingOfPeopleFacesColoursAndFile) {
  DescriptionResult result;
  result.source.filename = "clip.mov";
  result.engine.model = "m";
  result.reviewReason = "blurred";
  result.global.dominantPalette = Texts{"#000000"};
  result.shots = {{.timecode = "00:00:01.000",
                   .shotType = "wide",
                   .cameraMotion = "pan",
                   .people = std::vector<Person>{{.pose = "sitting"}},
                   .peopleCount = 1,
                   .colorPalette = ColorPalette{.dominant = {"#ffffff"}, .description = "pale"}}};
  EXPECT_EQ(CompositeDocument::make(result), "");
}

}  // namespace
}  // namespace tq

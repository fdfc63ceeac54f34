#include <gtest/gtest.h>

#include "TQCore/BlindResponseDetector.hpp"

namespace tq {
namespace {

using Texts = std::vector<std::string>;

/// An answer to one frame that says nothing at all.
DescriptionResult emptyAnswer() {
  Shot shot;
  shot.shotType = "unclear";
  shot.overallMood = "unknown";
  shot.tags = Texts();
  shot.peopleCount = 0;
  DescriptionResult result;
  result.engine.framesAnalyzed = 1;
  result.summary = "A clip.";
  result.shots = {shot};
  return result;
}

bool looksBlind(const DescriptionResult& result) {
  return BlindResponseDetector::looksBlind(result);
}

/// Whether the empty answer still looks blind after `change` was made to its shot.
template <class Change>
bool looksBlindWithShot(Change change) {
  DescriptionResult result = emptyAnswer();
  change(result.shots.at(0));
  return looksBlind(result);
}

/// Whether the empty answer still looks blind with one of its setting's fields filled in.
bool looksBlindWithSetting(std::optional<std::string> Setting::*member, const std::string& text) {
  return looksBlindWithShot([&](Shot& shot) { shot.setting.emplace().*member = text; });
}

TEST(HasSignal, IsFalseForAbsentAndEmptyLists) {
  EXPECT_FALSE(BlindResponseDetector::hasSignal(std::nullopt));
  EXPECT_FALSE(BlindResponseDetector::hasSignal(Texts()));
}

TEST(HasSignal, IsFalseForContentlessWordsInAnyCaseWithBlanksAround) {
  EXPECT_FALSE(BlindResponseDetector::hasSignal(Texts{" Unknown ", "N/A"}));
  EXPECT_FALSE(BlindResponseDetector::hasSignal(Texts{"unclear", "unknown", "unprocessable", "n/a", "none",
                                                      "not available", "", " \n\t", " none ", "\u00A0NONE"}));
}

TEST(HasSignal, IsTrueForAnyOtherWord) {
  EXPECT_TRUE(BlindResponseDetector::hasSignal(Texts{"unknown", "dog"}));
  EXPECT_TRUE(BlindResponseDetector::hasSignal(Texts{"-"}));
}

TEST(HasSignal, ComparesTheWholeText) {
  EXPECT_TRUE(BlindResponseDetector::hasSignal(Texts{"none of the people"}));
  EXPECT_TRUE(BlindResponseDetector::hasSignal(Texts{"not  available"}));
}

TEST(LooksBlind, IsTrueForAnAnswerThatSaysNothing) {
  EXPECT_TRUE(looksBlind(emptyAnswer()));
}

TEST(LooksBlind, DoesNotBlameTheModelWhenNoFramesWereSent) {
  DescriptionResult result = emptyAnswer();
  result.engine.framesAnalyzed = 0;
  result.summary = "No frames provided.";
  EXPECT_FALSE(looksBlind(result));
}

TEST(LooksBlind, TakesARefusalForSeeing) {
  DescriptionResult result = emptyAnswer();
  result.summary = "no frames provided";
  result.flagged = true;
  EXPECT_FALSE(looksBlind(result));
}

TEST(LooksBlind, GoesOnWhenFlaggedIsFalseOrAbsent) {
  DescriptionResult result = emptyAnswer();
  result.summary = "no frames provided";
  result.flagged = false;
  EXPECT_TRUE(looksBlind(result));
  result.flagged.reset();
  EXPECT_TRUE(looksBlind(result));
}

class BlindPhrase : public testing::TestWithParam<const char*> {};

TEST_P(BlindPhrase, GivesTheModelAwayWhereverItStands) {
  DescriptionResult seeing = emptyAnswer();
  seeing.global.themes = Texts{"joy"};
  ASSERT_FALSE(looksBlind(seeing));

  DescriptionResult result = seeing;
  result.summary = std::string("I am sorry: ") + GetParam() + ", so I guessed.";
  EXPECT_TRUE(looksBlind(result));
  result = seeing;
  result.global.overallSummaryOneLine = GetParam();
  EXPECT_TRUE(looksBlind(result));
  result = seeing;
  result.reviewReason = GetParam();
  EXPECT_TRUE(looksBlind(result));
}

INSTANTIATE_TEST_SUITE_P(All, BlindPhrase,
                         testing::Values("frame data not provided", "frame data not available", "no frames provided",
                                         "no image provided", "no images provided", "cannot analyze visual content",
                                         "unable to view the image", "cannot see the image",
                                         "without access to the frames"));

TEST(LooksBlind, FindsABlindPhraseInCapitalsInsideASentenceDespiteThemes) {
  DescriptionResult result = emptyAnswer();
  result.global.themes = Texts{"joy"};
  result.summary = "This was written WITHOUT ACCESS TO THE FRAMES of the clip.";
  EXPECT_TRUE(looksBlind(result));
}

TEST(LooksBlind, JoinsTheProseWithOneBlank) {
  DescriptionResult result = emptyAnswer();
  result.global.themes = Texts{"joy"};
  result.summary = "There were no frames";
  result.global.overallSummaryOneLine = "provided today.";
  EXPECT_TRUE(looksBlind(result));
}

TEST(LooksBlind, JoinsAnAbsentTextAsAnEmptyOne) {
  DescriptionResult result = emptyAnswer();
  result.global.themes = Texts{"joy"};
  result.summary = "There were no frames";
  result.reviewReason = "provided today.";
  EXPECT_FALSE(looksBlind(result)) << "two blanks stand between them";
  result.global.overallSummaryOneLine = "no frames";
  EXPECT_TRUE(looksBlind(result));
}

TEST(LooksBlind, DoesNotTakeNotAvailableForABlindPhrase) {
  DescriptionResult result = emptyAnswer();
  result.global.themes = Texts{"joy"};
  result.summary = "Sound is not available.";
  EXPECT_FALSE(looksBlind(result));
}

TEST(LooksBlind, TakesAnyOfFourGlobalListsForASignal) {
  for (const auto list : {&GlobalSummary::primarySubjects, &GlobalSummary::themes, &GlobalSummary::searchKeywords,
                          &GlobalSummary::suggestedUseCases}) {
    DescriptionResult result = emptyAnswer();
    result.global.*list = Texts{"unclear", "dog"};
    EXPECT_FALSE(looksBlind(result));
    result.global.*list = Texts{" Unknown ", "N/A"};
    EXPECT_TRUE(looksBlind(result));
  }
}

TEST(LooksBlind, IsTrueWithoutShotsAndWithEmptyGlobalLists) {
  DescriptionResult result = emptyAnswer();
  result.shots.clear();
  result.global.themes = Texts();
  EXPECT_TRUE(looksBlind(result));
}

TEST(LooksBlind, IsFalseWithoutShotsWhenTheGlobalListsSaySomething) {
  DescriptionResult result = emptyAnswer();
  result.shots.clear();
  result.global.searchKeywords = Texts{"dog"};
  EXPECT_FALSE(looksBlind(result));
}

TEST(LooksBlind, TakesEachTellingFieldOfAShotForASignal) {
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.shotType = "wide"; }));
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.overallMood = "calm"; }));
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.tags = Texts{"none", "dog"}; }));
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.colorPalette = ColorPalette{{}, "warm"}; }));
}

TEST(LooksBlind, TakesEachFieldOfASettingForASignal) {
  for (const auto member :
       {&Setting::locationType, &Setting::environment, &Setting::timeOfDay, &Setting::weather, &Setting::lighting}) {
    EXPECT_FALSE(looksBlindWithSetting(member, "beach"));
    EXPECT_TRUE(looksBlindWithSetting(member, " Unclear"));
  }
}

TEST(LooksBlind, TakesPeopleForASignalWhateverTheTextsSay) {
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.peopleCount = 2; }));
  EXPECT_FALSE(looksBlindWithShot([](Shot& shot) { shot.peopleCount = 1; }));
  EXPECT_TRUE(looksBlindWithShot([](Shot& shot) { shot.peopleCount = -1; }));
}

TEST(LooksBlind, LooksAtEveryShot) {
  DescriptionResult result = emptyAnswer();
  Shot telling;
  telling.tags = Texts{"dog"};
  result.shots.push_back(Shot());
  result.shots.push_back(telling);
  EXPECT_FALSE(looksBlind(result));
}

TEST(LooksBlind, GivesTheOtherFieldsNoSay) {
  DescriptionResult result = emptyAnswer();
  result.summary = "A long and wholly invented summary of a sunny day by the sea.";
  result.global.overallSummaryOneLine = "A sunny day.";
  result.global.dominantPalette = Texts{"#FFFFFF"};
  Shot& shot = result.shots.at(0);
  shot.timecode = "00:00:01.000";
  shot.cameraMotion = "static";
  shot.framingNotes = "centred";
  shot.people = std::vector<Person>(1);
  shot.people->at(0).pose = "standing";
  shot.colorPalette = ColorPalette{{"#FFFFFF"}, "none"};
  shot.faces = std::vector<FaceBox>(1);
  shot.onScreenText = Texts{"EXIT"};
  EXPECT_TRUE(looksBlind(result));
}

}  // namespace
}  // namespace tq

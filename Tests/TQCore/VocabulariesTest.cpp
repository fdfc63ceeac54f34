#include <gtest/gtest.h>

#include "TQCore/Vocabularies.hpp"

namespace tq {
namespace {

TEST(Vocab, JoinsTheWordsWithABlankOnEachSideOfTheBar) {
  EXPECT_EQ(Vocab::locations, "indoor | outdoor | studio | mixed | unclear");
}

TEST(Vocab, ListsEachVocabularyInItsOrder) {
  EXPECT_EQ(Vocab::shotTypes, "super-wide | wide | medium-wide | medium | medium-close | close | extreme-close");
  EXPECT_EQ(Vocab::cameraMotions, "static | handheld-static | pan | tilt | dolly | zoom | crane | drone | unknown");
  EXPECT_EQ(Vocab::moods,
            "joyful | content | neutral | pensive | sad | anxious | angry | surprised | fearful | disgusted | unclear");
  EXPECT_EQ(Vocab::timesOfDay, "dawn | morning | midday | afternoon | golden-hour | dusk | night | unclear");
  EXPECT_EQ(Vocab::lighting, "golden-hour | bright-daylight | overcast | dim-interior | nighttime | mixed | unclear");
}

TEST(Vocabularies, PairEachCaseWithItsWord) {
  EXPECT_EQ(rawValue(ShotType::superWide), "super-wide");
  EXPECT_EQ(rawValue(ShotType::extremeClose), "extreme-close");
  EXPECT_EQ(rawValue(CameraMotion::static_), "static");
  EXPECT_EQ(rawValue(CameraMotion::unknown), "unknown");
  EXPECT_EQ(rawValue(PerceivedMood::joyful), "joyful");
  EXPECT_EQ(rawValue(PerceivedMood::unclear), "unclear");
  EXPECT_EQ(rawValue(LocationType::mixed), "mixed");
  EXPECT_EQ(rawValue(TimeOfDay::goldenHour), "golden-hour");
  EXPECT_EQ(rawValue(TimeOfDay::unclear), "unclear");
  EXPECT_EQ(rawValue(Lighting::dimInterior), "dim-interior");
  EXPECT_EQ(rawValue(Lighting::unclear), "unclear");
}

TEST(Vocabularies, ListAllTheirWords) {
  EXPECT_EQ(all<ShotType>.size(), 7u);
  EXPECT_EQ(all<CameraMotion>.size(), 9u);
  EXPECT_EQ(all<PerceivedMood>.size(), 11u);
  EXPECT_EQ(all<LocationType>.size(), 5u);
  EXPECT_EQ(all<TimeOfDay>.size(), 8u);
  EXPECT_EQ(all<Lighting>.size(), 7u);
  EXPECT_EQ(all<TimeOfDay>.front(), "dawn");
}

TEST(Vocabularies, FindTheCaseOfAWord) {
  EXPECT_EQ(fromRawValue<TimeOfDay>("golden-hour"), TimeOfDay::goldenHour);
  EXPECT_EQ(fromRawValue<TimeOfDay>("goldenHour"), std::nullopt);
  EXPECT_EQ(fromRawValue<TimeOfDay>(""), std::nullopt);
}

}  // namespace
}  // namespace tq

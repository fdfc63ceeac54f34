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

/// The words of the cases, as a vocabulary lists them.
template <class Vocabulary>
std::string words(std::initializer_list<Vocabulary> cases) {
  std::string text;
  for (const Vocabulary value : cases)
    text.append(text.empty() ? "" : " | ").append(rawValue(value));
  return text;
}

TEST(Vocabularies, PairEachCaseWithItsWord) {
  {
    using enum ShotType;
    EXPECT_EQ(Vocab::shotTypes, words({superWide, wide, mediumWide, medium, mediumClose, close, extremeClose}));
  }
  {
    using enum CameraMotion;
    EXPECT_EQ(Vocab::cameraMotions, words({static_, handheldStatic, pan, tilt, dolly, zoom, crane, drone, unknown}));
  }
  {
    using enum PerceivedMood;
    EXPECT_EQ(Vocab::moods,
              words({joyful, content, neutral, pensive, sad, anxious, angry, surprised, fearful, disgusted, unclear}));
  }
  {
    using enum LocationType;
    EXPECT_EQ(Vocab::locations, words({indoor, outdoor, studio, mixed, unclear}));
  }
  {
    using enum TimeOfDay;
    EXPECT_EQ(Vocab::timesOfDay, words({dawn, morning, midday, afternoon, goldenHour, dusk, night, unclear}));
  }
  {
    using enum Lighting;
    EXPECT_EQ(Vocab::lighting, words({goldenHour, brightDaylight, overcast, dimInterior, nighttime, mixed, unclear}));
  }
}

TEST(Vocabularies, ListAllTheirWords) {
  EXPECT_EQ(all<LocationType>, (std::array<std::string_view, 5>{"indoor", "outdoor", "studio", "mixed", "unclear"}));
}

TEST(Vocabularies, FindTheCaseOfAWord) {
  EXPECT_EQ(fromRawValue<TimeOfDay>("golden-hour"), TimeOfDay::goldenHour);
  EXPECT_EQ(fromRawValue<TimeOfDay>("goldenHour"), std::nullopt);
  EXPECT_EQ(fromRawValue<TimeOfDay>(""), std::nullopt);
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>
#include <unordered_set>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQPlatform/Text/DateText.hpp"

namespace tq {
namespace {

/// A record in which every field of the tree is present, as the sidecar holds it.
constexpr std::string_view fullSidecar = R"({
  "engine": {
    "frames_analyzed": 12,
    "model": "some-model",
    "provider": "anthropic",
    "sampling_strategy": "adaptive"
  },
  "flagged": false,
  "global": {
    "dominant_palette": [
      "#112233"
    ],
    "overall_summary_one_line": "One line.",
    "primary_subjects": [
      "dog"
    ],
    "search_keywords": [
      "beach/sea"
    ],
    "suggested_use_cases": [
      "opening"
    ],
    "themes": [
      "joy"
    ]
  },
  "review_flag": true,
  "review_reason": "lens cap",
  "schema_version": "1.0",
  "shots": [
    {
      "camera_motion": "static",
      "color_palette": {
        "description": "warm",
        "dominant": [
          "#AABBCC"
        ]
      },
      "faces": [
        {
          "confidence": 0.9,
          "height": 0.4,
          "width": 0.3,
          "x": 0.1,
          "y": 0.2
        }
      ],
      "framing_notes": "centred",
      "on_screen_text": [
        "EXIT"
      ],
      "overall_mood": "calm",
      "people": [
        {
          "approximate_age_range": "25-35",
          "clothing": {
            "accessories": [
              "hat"
            ],
            "bottom": "jeans",
            "overall_style": "casual",
            "top": "shirt"
          },
          "expression": "smiling",
          "eyes": "open",
          "hair": {
            "color": "brown",
            "length": "short",
            "style": "curly"
          },
          "mood_confidence": 0.75,
          "perceived_gender_presentation": "feminine",
          "perceived_mood": "joyful",
          "pose": "standing",
          "skin_tone": "medium"
        }
      ],
      "people_count": 1,
      "setting": {
        "environment": "beach",
        "lighting": "golden-hour",
        "location_type": "outdoor",
        "time_of_day": "dusk",
        "weather": "clear"
      },
      "shot_type": "some off-list word",
      "tags": [
        "dog"
      ],
      "timecode": "00:00:01.500"
    }
  ],
  "source": {
    "codec": "h264",
    "described_at": "2026-11-21T10:00:00Z",
    "duration_seconds": 30.0,
    "file_size_bytes": 5000000000,
    "filename": "clip.mov",
    "frame_rate": 29.97,
    "gps": {
      "altitude_meters": 12.5,
      "latitude": 52.5,
      "longitude": -13.4,
      "place_name": "Somewhere"
    },
    "resolution": "1920x1080",
    "sha256": "abc"
  },
  "summary": "A dog runs.",
  "transcript": {
    "language": "en",
    "model": "whisper-1",
    "provider": "openai-whisper",
    "speakers": [
      {
        "end_seconds": 2.5,
        "speaker": 0,
        "start_seconds": 0.5,
        "text": "Hello"
      }
    ],
    "text": "Hello"
  }
})";

constexpr std::string_view smallSidecar = R"({
  "engine": {"frames_analyzed": 1, "model": "m", "provider": "p", "sampling_strategy": "adaptive"},
  "global": {}, "schema_version": "1.0", "shots": [],
  "source": {"codec": "h264", "described_at": "2026-11-21T10:00:00Z", "duration_seconds": 1, "file_size_bytes": 1,
             "filename": "a.mov", "frame_rate": 25, "resolution": "1x1"},
  "summary": "s"
})";

/// The small sidecar with one top-level member replaced.
JSONValue sidecarWith(const std::string& key, std::string_view json) {
  JSONValue::Object object = *parseJSON(smallSidecar).asObject();
  object[key] = parseJSON(json);
  return object;
}

template <class Record>
Record read(std::string_view json) {
  return decode<Record>(parseJSON(json));
}

template <class Record>
std::string rewritten(std::string_view json) {
  return writeJSON(encode(read<Record>(json)), JSONLayout::compact);
}

TEST(DescriptionResult, IsWrittenAsItWasReadWithEveryFieldPresent) {
  EXPECT_EQ(writeJSON(encode(read<DescriptionResult>(fullSidecar)), JSONLayout::pretty), fullSidecar);
}

TEST(DescriptionResult, HoldsWhatTheSidecarSays) {
  const Person person{
      .approximateAgeRange = "25-35",
      .perceivedGenderPresentation = "feminine",
      .skinTone = "medium",
      .hair = PersonHair{.color = "brown", .length = "short", .style = "curly"},
      .eyes = "open",
      .pose = "standing",
      .expression = "smiling",
      .perceivedMood = "joyful",
      .moodConfidence = 0.75,
      .clothing = PersonClothing{.top = "shirt", .bottom = "jeans", .accessories = {{"hat"}}, .overallStyle = "casual"},
  };
  const Shot shot{
      .timecode = "00:00:01.500",
      .shotType = "some off-list word",
      .cameraMotion = "static",
      .framingNotes = "centred",
      .people = {{person}},
      .peopleCount = 1,
      .setting = Setting{.locationType = "outdoor",
                         .environment = "beach",
                         .timeOfDay = "dusk",
                         .weather = "clear",
                         .lighting = "golden-hour"},
      .colorPalette = ColorPalette{.dominant = {"#AABBCC"}, .description = "warm"},
      .overallMood = "calm",
      .tags = {{"dog"}},
      .faces = {{FaceBox{.x = 0.1, .y = 0.2, .width = 0.3, .height = 0.4, .confidence = 0.9}}},
      .onScreenText = {{"EXIT"}},
  };
  const DescriptionResult expected{
      .schemaVersion = "1.0",
      .source = {.filename = "clip.mov",
                 .durationSeconds = 30,
                 .resolution = "1920x1080",
                 .frameRate = 29.97,
                 .codec = "h264",
                 .fileSizeBytes = 5'000'000'000,
                 .sha256 = "abc",
                 .describedAt = parseISO8601("2026-11-21T10:00:00Z").value(),
                 .gps = GPS{.latitude = 52.5, .longitude = -13.4, .altitudeMeters = 12.5, .placeName = "Somewhere"}},
      .engine = {.provider = "anthropic", .model = "some-model", .framesAnalyzed = 12, .samplingStrategy = "adaptive"},
      .summary = "A dog runs.",
      .shots = {shot},
      .global = {.overallSummaryOneLine = "One line.",
                 .primarySubjects = {{"dog"}},
                 .themes = {{"joy"}},
                 .dominantPalette = {{"#112233"}},
                 .searchKeywords = {{"beach/sea"}},
                 .suggestedUseCases = {{"opening"}}},
      .flagged = false,
      .reviewFlag = true,
      .reviewReason = "lens cap",
      .transcript =
          TranscriptInfo{.text = "Hello",
                         .provider = "openai-whisper",
                         .model = "whisper-1",
                         .language = "en",
                         .speakers = {{{.speaker = 0, .startSeconds = 0.5, .endSeconds = 2.5, .text = "Hello"}}}},
  };
  EXPECT_EQ(read<DescriptionResult>(fullSidecar), expected);
}

TEST(DescriptionResult, IsOfTheCurrentVersionWhenMade) {
  EXPECT_EQ(DescriptionResult().schemaVersion, "1.0");
}

TEST(DescriptionResult, WithoutShotsStaysUnchanged) {
  const auto result = read<DescriptionResult>(smallSidecar);
  EXPECT_TRUE(result.shots.empty());
  EXPECT_EQ(decode<DescriptionResult>(encode(result)), result);
  EXPECT_EQ(encode(result).find("shots")->asArray()->size(), 0u);
}

TEST(DescriptionResult, NeverWritesNull) {
  const std::string text = rewritten<DescriptionResult>(smallSidecar);
  EXPECT_EQ(text.find("null"), std::string::npos) << text;
  EXPECT_EQ(text.find("flagged"), std::string::npos) << text;
}

TEST(DescriptionResult, TellsFlaggedFalseFromFlaggedAbsent) {
  EXPECT_EQ(decode<DescriptionResult>(sidecarWith("flagged", "false")).flagged, false);
  EXPECT_EQ(decode<DescriptionResult>(sidecarWith("flagged", "null")).flagged, std::nullopt);
  EXPECT_NE(decode<DescriptionResult>(sidecarWith("flagged", "false")), read<DescriptionResult>(smallSidecar));
}

TEST(DescriptionResult, FailsWholeOnTextInPeopleCount) {
  try {
    decode<DescriptionResult>(sidecarWith("shots", R"([{}, {"people_count": "2"}])"));
    FAIL();
  } catch (const DecodingError& error) {
    EXPECT_STREQ(error.what(), "shots[1].people_count: expected a whole number, found text");
  }
}

TEST(DescriptionResult, FailsOnANumberInTheSummary) {
  EXPECT_THROW(decode<DescriptionResult>(sidecarWith("summary", "7")), DecodingError);
}

TEST(DescriptionResult, FailsOnTextForAFlag) {
  EXPECT_THROW(decode<DescriptionResult>(sidecarWith("flagged", "\"false\"")), DecodingError);
}

TEST(Shot, TakesNullAndMissingForAbsentAndWritesNeither) {
  EXPECT_EQ(read<Shot>(R"({"timecode": null})"), Shot());
  EXPECT_EQ(read<Shot>("{}"), Shot());
  EXPECT_EQ(rewritten<Shot>(R"({"timecode": null})"), "{}");
  EXPECT_EQ(rewritten<Shot>("{}"), "{}");
}

TEST(Shot, KeepsAbsentTagsAbsentAndEmptyTagsEmpty) {
  EXPECT_FALSE(read<Shot>("{}").tags);
  EXPECT_EQ(rewritten<Shot>(R"({"tags":[]})"), R"({"tags":[]})");
}

TEST(Shot, FailsOnNullInsideAList) {
  EXPECT_THROW(read<Shot>(R"({"tags": ["a", null]})"), DecodingError);
}

TEST(Shot, TakesAWholeNumberWithAPointForACount) {
  EXPECT_EQ(read<Shot>(R"({"people_count": 2.0})").peopleCount, 2);
  EXPECT_THROW(read<Shot>(R"({"people_count": 2.5})"), DecodingError);
}

TEST(ColorPalette, NeedsItsDominantColours) {
  EXPECT_THROW(read<ColorPalette>(R"({"description": "warm"})"), DecodingError);
  EXPECT_THROW(read<Shot>(R"({"color_palette": {}})"), DecodingError);
  EXPECT_EQ(read<ColorPalette>(R"({"dominant": []})"), ColorPalette());
}

TEST(Person, ReadsWithAMoodConfidenceAlone) {
  Person expected;
  expected.moodConfidence = 1.0;
  EXPECT_EQ(read<Person>(R"({"mood_confidence": 1})"), expected);
}

TEST(GlobalSummary, ReadsFromAnEmptyObject) {
  EXPECT_EQ(read<GlobalSummary>("{}"), GlobalSummary());
}

TEST(SourceMetadata, ReadsADateWithAnOffset) {
  const auto result = decode<DescriptionResult>(sidecarWith("source", R"({
    "codec": "h264", "described_at": "2026-11-21T11:00:00+01:00", "duration_seconds": 1, "file_size_bytes": 1,
    "filename": "a.mov", "frame_rate": 25, "resolution": "1x1"})"));
  EXPECT_EQ(result, read<DescriptionResult>(smallSidecar));
}

TEST(SourceMetadata, RefusesADateAsANumber) {
  EXPECT_THROW(read<SourceMetadata>(R"({"codec": "h264", "described_at": 0, "duration_seconds": 1,
    "file_size_bytes": 1, "filename": "a.mov", "frame_rate": 25, "resolution": "1x1"})"),
               DecodingError);
}

template <class Record>
bool decodes(const JSONValue& value) {
  try {
    decode<Record>(value);
    return true;
  } catch (const DecodingError&) {
    return false;
  }
}

using Keys = std::vector<std::string>;

/// The keys of `full`, in the order of the alphabet, that no such record can do without: neither missing nor null.
template <class Record>
Keys requiredKeys(const JSONValue& full) {
  EXPECT_TRUE(decodes<Record>(full));
  Keys keys;
  for (const auto& [key, value] : *full.asObject()) {
    JSONValue::Object without = *full.asObject();
    without.erase(key);
    JSONValue::Object withNull = *full.asObject();
    withNull[key] = nullptr;
    EXPECT_EQ(decodes<Record>(without), decodes<Record>(withNull)) << key;
    if (!decodes<Record>(without)) keys.push_back(key);
  }
  return keys;
}

TEST(RequiredKeys, OfTheFactsAboutAClip) {
  const JSONValue full = parseJSON(fullSidecar);
  const JSONValue& source = *full.find("source");
  const JSONValue& transcript = *full.find("transcript");
  EXPECT_EQ(requiredKeys<DescriptionResult>(full),
            (Keys{"engine", "global", "schema_version", "shots", "source", "summary"}));
  EXPECT_EQ(requiredKeys<SourceMetadata>(source), (Keys{"codec", "described_at", "duration_seconds", "file_size_bytes",
                                                        "filename", "frame_rate", "resolution"}));
  EXPECT_EQ(requiredKeys<GPS>(*source.find("gps")), (Keys{"latitude", "longitude"}));
  EXPECT_EQ(requiredKeys<EngineMetadata>(*full.find("engine")),
            (Keys{"frames_analyzed", "model", "provider", "sampling_strategy"}));
  EXPECT_EQ(requiredKeys<TranscriptInfo>(transcript), (Keys{"model", "provider", "text"}));
  EXPECT_EQ(requiredKeys<TranscriptSpeakerTurn>(transcript.find("speakers")->asArray()->at(0)),
            (Keys{"end_seconds", "speaker", "start_seconds", "text"}));
}

TEST(RequiredKeys, OfWhatAModelSaysAreTheColoursAlone) {
  const JSONValue full = parseJSON(fullSidecar);
  const JSONValue& shot = full.find("shots")->asArray()->at(0);
  const JSONValue& person = shot.find("people")->asArray()->at(0);
  EXPECT_EQ(requiredKeys<Shot>(shot), Keys());
  EXPECT_EQ(requiredKeys<Person>(person), Keys());
  EXPECT_EQ(requiredKeys<PersonHair>(*person.find("hair")), Keys());
  EXPECT_EQ(requiredKeys<PersonClothing>(*person.find("clothing")), Keys());
  EXPECT_EQ(requiredKeys<Setting>(*shot.find("setting")), Keys());
  EXPECT_EQ(requiredKeys<GlobalSummary>(*full.find("global")), Keys());
  EXPECT_EQ(requiredKeys<ColorPalette>(*shot.find("color_palette")), (Keys{"dominant"}));
}

TEST(RequiredKeys, OfAFaceBoxAreAll) {
  const JSONValue full = parseJSON(fullSidecar);
  EXPECT_EQ(requiredKeys<FaceBox>(full.find("shots")->asArray()->at(0).find("faces")->asArray()->at(0)),
            (Keys{"confidence", "height", "width", "x", "y"}));
}

TEST(DescriptionResult, LivesInHashedSets) {
  std::unordered_set<DescriptionResult, RecordHash> results{read<DescriptionResult>(fullSidecar)};
  results.insert(read<DescriptionResult>(fullSidecar));
  results.insert(read<DescriptionResult>(smallSidecar));
  EXPECT_EQ(results.size(), 2u);
}

}  // namespace
}  // namespace tq

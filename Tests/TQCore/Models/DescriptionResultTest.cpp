#include <gtest/gtest.h>
#include <unordered_set>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQPlatform/DateText.hpp"

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
  const auto result = read<DescriptionResult>(fullSidecar);
  EXPECT_EQ(result.schemaVersion, SchemaVersion::current);
  EXPECT_EQ(result.source.fileSizeBytes, 5'000'000'000);
  EXPECT_EQ(result.source.describedAt, parseISO8601("2026-11-21T10:00:00Z"));
  EXPECT_EQ(result.source.gps->longitude, -13.4);
  EXPECT_EQ(result.engine.framesAnalyzed, 12);
  EXPECT_EQ(result.shots.at(0).shotType, "some off-list word");
  EXPECT_EQ(result.shots.at(0).people->at(0).clothing->overallStyle, "casual");
  EXPECT_EQ(result.shots.at(0).faces->at(0), (FaceBox{0.1, 0.2, 0.3, 0.4, 0.9}));
  EXPECT_EQ(result.global.searchKeywords, std::vector<std::string>{"beach/sea"});
  EXPECT_EQ(result.flagged, false);
  EXPECT_EQ(result.reviewFlag, true);
  EXPECT_EQ(result.transcript->speakers->at(0).endSeconds, 2.5);
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

TEST(DescriptionResult, RequiresEachOfItsFirstSixKeys) {
  for (const char* key : {"schema_version", "source", "engine", "summary", "shots", "global"}) {
    JSONValue::Object object = *parseJSON(smallSidecar).asObject();
    object.erase(key);
    EXPECT_THROW(decode<DescriptionResult>(object), DecodingError) << key;
    EXPECT_THROW(decode<DescriptionResult>(sidecarWith(key, "null")), DecodingError) << key;
  }
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

TEST(FaceBox, IsNeverHalfFilled) {
  const JSONValue::Object full{{"x", 0.1}, {"y", 0.1}, {"width", 0.1}, {"height", 0.1}, {"confidence", 0.1}};
  EXPECT_NO_THROW(decode<FaceBox>(full));
  for (const auto& [key, value] : full) {
    JSONValue::Object part = full;
    part.erase(key);
    EXPECT_THROW(decode<FaceBox>(part), DecodingError) << key;
  }
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

TEST(TranscriptSpeakerTurn, RequiresAllFourKeys) {
  const JSONValue::Object full{{"speaker", 1}, {"start_seconds", 0.0}, {"end_seconds", 1.0}, {"text", "t"}};
  EXPECT_NO_THROW(decode<TranscriptSpeakerTurn>(full));
  for (const auto& [key, value] : full) {
    JSONValue::Object part = full;
    part.erase(key);
    EXPECT_THROW(decode<TranscriptSpeakerTurn>(part), DecodingError) << key;
  }
}

TEST(DescriptionResult, LivesInHashedSets) {
  std::unordered_set<DescriptionResult, RecordHash> results{read<DescriptionResult>(fullSidecar)};
  results.insert(read<DescriptionResult>(fullSidecar));
  results.insert(read<DescriptionResult>(smallSidecar));
  EXPECT_EQ(results.size(), 2u);
}

}  // namespace
}  // namespace tq

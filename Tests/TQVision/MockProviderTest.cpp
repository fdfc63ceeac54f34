#include <gtest/gtest.h>

#include "TQPlatform/JSON/JSON.hpp"
#include "TQVision/MockProvider.hpp"

namespace tq {
namespace {

VisionRequest requestFor(const std::string& filename, std::vector<ExtractedFrame> frames) {
  VisionRequest request;
  request.sourceContext.filename = filename;
  request.frames = std::move(frames);
  return request;
}

VisionResponse answerTo(const VisionRequest& request) {
  return MockProvider("mock", "mock-v1").describe(request, {});
}

TEST(MockProvider, TellsItsNames) {
  const MockProvider provider("mock", "mock-v1");
  EXPECT_EQ(provider.providerId(), "mock");
  EXPECT_EQ(provider.modelId(), "mock-v1");
}

TEST(MockProvider, AnswersWithAWholeDescription) {
  const VisionResponse response = answerTo(requestFor("a.mov", {{.timecode = {3661.5}}}));
  EXPECT_EQ(parseJSON(response.rawText), parseJSON(R"({
    "schema_version": "1.0",
    "summary": "Mock description of a.mov with 1 frames.",
    "shots": [{
      "timecode": "01:01:01.500", "shot_type": "medium", "camera_motion": "static",
      "framing_notes": "Mock framing notes for frame 1", "people": [],
      "setting": {"location_type": "unclear", "environment": "Mocked environment", "time_of_day": "unclear", "weather": null},
      "color_palette": {"dominant": ["#888888", "#444444", "#222222", "#cccccc", "#666666"],
                        "description": "neutral grays"},
      "overall_mood": "neutral", "tags": ["mock", "frame-1"]
    }],
    "global": {"overall_summary_one_line": "Mock one-line summary.", "primary_subjects": ["mock"], "themes": ["mock"],
               "dominant_palette": ["#888888", "#444444", "#cccccc"], "search_keywords": ["mock", "test"]},
    "flagged": false
  })"));
}

TEST(MockProvider, CountsTokensByFrames) {
  const VisionResponse response = answerTo(requestFor("a.mov", {{}, {}, {}}));
  EXPECT_EQ(response.modelId, "mock-v1");
  EXPECT_EQ(response.inputTokens, 3000);
  EXPECT_EQ(response.outputTokens, 800);
}

TEST(MockProvider, NumbersItsShotsFromOne) {
  const JSONValue answer = parseJSON(answerTo(requestFor("a.mov", {{}, {}})).rawText);
  const JSONValue::Array& shots = *answer.find("shots")->asArray();
  ASSERT_EQ(shots.size(), 2u);
  EXPECT_EQ(*shots[1].find("framing_notes")->asString(), "Mock framing notes for frame 2");
  EXPECT_EQ(*shots[1].find("tags"), JSONValue(JSONValue::Array{"mock", "frame-2"}));
}

TEST(MockProvider, PrintsItsAnswerPretty) {
  EXPECT_NE(answerTo(requestFor("a.mov", {})).rawText.find('\n'), std::string::npos);
}

TEST(MockProvider, WithoutFramesThereAreNoShots) {
  for (const VisionRequest& request : {requestFor("a.mov", {}), VisionRequest{}}) {
    const VisionResponse response = answerTo(request);
    EXPECT_EQ(parseJSON(response.rawText).find("shots")->asArray()->size(), 0u);
    EXPECT_EQ(response.inputTokens, 0);
  }
}

TEST(MockProvider, AFilenameThatIsNotUTF8GivesAnEmptyObject) {
  EXPECT_EQ(answerTo(requestFor("caf\xe9.mov", {{}})).rawText, "{}");
}

TEST(MockProvider, AStopRequestDoesNotKeepItFromAnswering) {
  std::stop_source stop;
  stop.request_stop();
  EXPECT_NO_THROW(MockProvider("mock", "mock-v1").describe(requestFor("a.mov", {}), stop.get_token()));
}

}  // namespace
}  // namespace tq

#include "TQVision/MockProvider.hpp"

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

JSONValue mockShot(std::size_t number, const ExtractedFrame& frame) {
  const std::string text = std::to_string(number);
  return JSONValue::Object{
      {"timecode", frame.timecode.formatted()},
      {"shot_type", "medium"},
      {"camera_motion", "static"},
      {"framing_notes", "Mock framing notes for frame " + text},
      {"people", JSONValue::Array{}},
      {"setting", JSONValue::Object{{"location_type", "unclear"},
                                    {"environment", "Mocked environment"},
                                    {"time_of_day", "unclear"},
                                    {"weather", nullptr}}},
      {"color_palette",
       JSONValue::Object{{"dominant", JSONValue::Array{"#888888", "#444444", "#222222", "#cccccc", "#666666"}},
                         {"description", "neutral grays"}}},
      {"overall_mood", "neutral"},
      {"tags", JSONValue::Array{"mock", "frame-" + text}},
  };
}

JSONValue mockAnswer(const std::string& filename, const std::vector<ExtractedFrame>& frames) {
  JSONValue::Array shots;
  for (const ExtractedFrame& frame : frames)
    shots.push_back(mockShot(shots.size() + 1, frame));
  return JSONValue::Object{
      {"schema_version", SchemaVersion::current},
      {"summary", "Mock description of " + filename + " with " + std::to_string(frames.size()) + " frames."},
      {"shots", std::move(shots)},
      {"global", JSONValue::Object{{"overall_summary_one_line", "Mock one-line summary."},
                                   {"primary_subjects", JSONValue::Array{"mock"}},
                                   {"themes", JSONValue::Array{"mock"}},
                                   {"dominant_palette", JSONValue::Array{"#888888", "#444444", "#cccccc"}},
                                   {"search_keywords", JSONValue::Array{"mock", "test"}}}},
      {"flagged", false},
  };
}

std::string prettyOrEmptyObject(const JSONValue& value) {
  try {
    return writeJSON(value, JSONLayout::pretty);
  } catch (const JSONError&) {
    return "{}";
  }
}

}  // namespace

MockProvider::MockProvider(std::string providerId, std::string modelId)
    : providerId_(std::move(providerId)), modelId_(std::move(modelId)) {}

VisionResponse MockProvider::describe(const VisionRequest& request, std::stop_token) const {
  const std::vector<ExtractedFrame>& frames = framesOf(request.frames);
  return {.rawText = prettyOrEmptyObject(mockAnswer(request.sourceContext.filename, frames)),
          .modelId = modelId_,
          .inputTokens = static_cast<std::int64_t>(frames.size()) * 1000,
          .outputTokens = 800};
}

}  // namespace tq

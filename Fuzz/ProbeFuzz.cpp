#include <cmath>

#include "Fuzz/Property.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

std::optional<VideoMetadata> parsed(ByteView input) {
  try {
    return FFmpegBridge::parseProbe(input, "/nonexistent/clip.mkv");
  } catch (const JSONError&) {
  } catch (const TQError& error) {
    fuzz::require(std::holds_alternative<TQError::FrameExtractionFailed>(error.value()),
                  "an answer without a video fails as one");
  }
  return std::nullopt;
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<VideoMetadata> metadata = parsed(input);
  if (!metadata) return;
  require(std::isfinite(metadata->duration), "a duration is finite");
  require(std::isfinite(metadata->frameRate) && metadata->frameRate >= 0, "a frame rate is finite and not negative");
  require(isValidUTF8(metadata->codec), "a codec's name is UTF-8");
  if (metadata->gps) {
    require(std::abs(metadata->gps->latitude) <= 90 && std::abs(metadata->gps->longitude) <= 180,
            "a place is on earth");
    const JSONValue written = encode(*metadata->gps);
    require(decode<GPS>(parseJSON(writeJSON(written, JSONLayout::compact))) == metadata->gps,
            "a place is the same once written and read");
  }
}

}  // namespace tq

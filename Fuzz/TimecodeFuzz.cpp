#include <array>
#include <cmath>
#include <limits>

#include "Fuzz/Property.hpp"
#include "TQDescription/Export/Timecode.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {
namespace {

void requireSteady(double seconds, double frameRate) {
  const SMPTETimecode timecode = Timecode::smpte(seconds, frameRate);
  const std::int64_t frames = Timecode::frames(seconds, frameRate);
  const bool inRange = timecode.hours >= 0 && timecode.minutes >= 0 && timecode.minutes < 60 && timecode.seconds >= 0 &&
                       timecode.seconds < 60 && timecode.frames >= 0 &&
                       timecode.frames < std::llround(std::ceil(frameRate));
  fuzz::require(inRange, "every part of a timecode is within its range");
  if (frames < std::int64_t{1} << 48)
    fuzz::require(Timecode::smpte(Timecode::seconds(timecode, frameRate), frameRate) == timecode,
                  "a timecode is the same once it was a time");
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::string text(textOf(input));
  const std::optional<double> seconds = Timecode::secondsFromSidecarTimecode(text);
  require(Timecode::secondsFromSidecarTimecode("  " + text + " ") == seconds, "blanks around a timecode say nothing");
  require(!Timecode::secondsFromSidecarTimecode(text + ":0:0:0"), "a timecode has three parts");
  if (!seconds) return;
  require(std::isfinite(*seconds) && *seconds >= 0, "a time is finite and not negative");
  const auto again = Timecode::secondsFromSidecarTimecode("0:0:" + fixedText(*seconds, 9));
  if (*seconds < 1e15)
    require(again && std::abs(*again - *seconds) <= 1e-9 + *seconds * std::numeric_limits<double>::epsilon(),
            "a time is the same once written and read");
  for (const double rate : std::array{23.976, 24.0, 25.0, 29.97, 30.0, 50.0, 59.94, 60.0, 12.5, 1.0, 239.76})
    requireSteady(*seconds, rate);
}

}  // namespace tq

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "TQCore/RecordJSON.hpp"

namespace tq {

/// A position as editing software shows it, non-drop-frame (SMPTE ST 12-1). The hours do not wrap at 24.
struct SMPTETimecode {
  std::int64_t hours = 0;
  std::int64_t minutes = 0;
  std::int64_t seconds = 0;
  std::int64_t frames = 0;

  /// "01:02:03:04".
  std::string formatted() const;

  bool operator==(const SMPTETimecode&) const = default;
};
template <>
std::size_t hashOf(const SMPTETimecode&);

/// How long one frame lasts: `num` / `den` seconds.
struct FrameDuration {
  std::int64_t num = 1;
  std::int64_t den = 25;

  bool operator==(const FrameDuration&) const = default;
};

/// The arithmetic that all timeline exporters share. Every timecode is non-drop-frame: a 29.97 clip counts 30 frames to
/// its second, and so its timecode falls behind the clock. Frame rates are frames a second; one that is not above 0
/// gives 0 everywhere. Numbers of frames stop at 2^53, from where on a double does not tell neighbours apart.
struct Timecode {
  /// The number of whole frames nearest to a time; a negative time counts as 0.
  static std::int64_t frames(double seconds, double frameRate);

  static SMPTETimecode smpte(double seconds, double frameRate);

  /// The time in seconds at which a timecode's frame begins.
  static double seconds(const SMPTETimecode& timecode, double frameRate);

  /// Reads the timecode of a shot, "HH:MM:SS" or "HH:MM:SS.mmm", as seconds. No part is limited to 59 or to two digits.
  static std::optional<double> secondsFromSidecarTimecode(std::string_view text);

  /// The exact duration of a frame at a rate that is in use, 1001/30000 for 29.97, and otherwise that of the rate
  /// rounded to hundredths.
  static FrameDuration frameDuration(double frameRate);

  /// The same as text: "1001/30000s".
  static std::string fcpxmlFrameDuration(double frameRate);
};

}  // namespace tq

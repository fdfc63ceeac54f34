#pragma once

#include <string>

#include "TQPlatform/Bytes.hpp"

namespace tq {

/// A position in a clip.
struct CMTimecode {
  double seconds = 0;

  /// "HH:MM:SS.mmm", rounded to the nearest millisecond, halves away from zero; hours neither wrap nor stop at two
  /// digits, and each division of a negative position truncates towards zero. Seconds that are not finite, or whose
  /// milliseconds do not fit 64 bits, are a programming error and end the program.
  std::string formatted() const;

  bool operator==(const CMTimecode&) const = default;
};

/// One sampled picture, in memory only.
struct ExtractedFrame {
  CMTimecode timecode;  ///< the sampling time
  Bytes jpegData;
  int width = 0;   ///< pixels of the encoded picture
  int height = 0;  ///< pixels of the encoded picture

  bool operator==(const ExtractedFrame&) const = default;
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq {

/// Small pictures of clips, as well as they can be had: whatever goes wrong, there is just none. Only the decoder in
/// this program is used, so clips that only the ffmpeg tools can read have no thumbnail. Calls may run side by side.
struct VideoThumbnailer {
  /// An upright JPEG of the picture that is cheapest to reach near the middle of the clip, fitted into a square of
  /// `maxPixelSize` pixels without ever being enlarged; 0 or less leaves its size alone, as does what is no number.
  /// `compressionQuality`: 0 to 1. Absent on every failure and on a stop request; throws nothing.
  static std::optional<Bytes> jpegThumbnail(const std::filesystem::path& url, double maxPixelSize,
                                            double compressionQuality, std::stop_token stop = {}) noexcept;

  /// The picture as a JPEG, quality 0 to 1; absent when it cannot be encoded.
  static std::optional<Bytes> encodeJPEG(const Image& image, double quality) noexcept;

  /// Seconds at which a clip of `duration` seconds is looked at: its middle, or its start when the duration is unknown.
  static double timeIn(double duration);
};

}  // namespace tq

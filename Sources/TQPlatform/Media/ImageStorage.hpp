#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "TQPlatform/Media/Image.hpp"
#include "TQPlatform/Media/Libav.hpp"

struct AVStream;

namespace tq {

/// How a stored picture becomes upright: rows and columns change places first, then it is mirrored. These are the eight
/// ways in which a rectangle of pixels can lie on another one.
struct Orientation {
  bool transposed = false;
  bool mirroredX = false;  ///< left and right change places
  bool mirroredY = false;  ///< top and bottom change places

  /// The way that comes nearest to a track's matrix {a, b, u, c, d, v, x, y, w} (ISO/IEC 14496-12, 8.3.2.3), which puts
  /// the stored point (p, q) at (ap + cq, bp + dq). A matrix of zeros, which would show nothing, counts as upright.
  static Orientation fromMatrix(const std::array<std::int32_t, 9>& matrix);

  /// That of a track.
  static Orientation of(const AVStream& stream);

  /// Degrees, 0, 90, 180 or 270; absent when the picture is mirrored, which no turn makes good.
  std::optional<int> clockwise() const;

  bool upright() const { return *this == Orientation{}; }
  bool operator==(const Orientation&) const = default;
};

/// The inside of an `Image`.
struct Image::Storage {
  libav::Owned<AVFrame> frame;  ///< as stored
  Orientation orientation;
  bool encodable = false;  ///< upright planes of a JPEG: full range, ITU-R BT.601, padded to whole chroma samples
};

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace tq {

/// A picture of a video as a player holds it: planes that belong to somebody else.
struct VideoPicture {
  enum class Matrix { unknown, bt601, bt709, bt2020 };
  enum class Transfer { ordinary, pq, hlg };  ///< the latter two are brighter than ordinary displays

  const char* format = "";  ///< what libav calls its pixel format, "yuv420p" for instance
  int width = 0;            ///< of the first plane, in pixels
  int height = 0;
  std::array<const std::uint8_t*, 4> planes{};
  std::array<int, 4> strides{};  ///< bytes from one row of a plane to the next; may be negative
  Matrix matrix = Matrix::unknown;
  Transfer transfer = Transfer::ordinary;
  bool fullRange = false;  ///< black is 0 and white the largest number
};

/// Where a picture for the screen is drawn: 4 bytes a pixel, which are 0xffRRGGBB as a number of this machine.
struct ScreenPixels {
  std::uint8_t* first = nullptr;
  std::ptrdiff_t stride = 0;  ///< bytes from one row to the next
  int width = 0;
  int height = 0;
};

/// Draws the pictures of a video at the size in which they are shown. Keeps what it needs for the next one of the same
/// kind. Belongs to one thread.
class VideoScaler {
 public:
  VideoScaler();
  VideoScaler(const VideoScaler&) = delete;
  VideoScaler& operator=(const VideoScaler&) = delete;
  ~VideoScaler();

  /// Fills the pixels with the whole picture, smoothly scaled; false when its format is not known, a plane is missing,
  /// a size is out of range, or memory gives out.
  bool draw(const VideoPicture& picture, const ScreenPixels& pixels);

 private:
  class Setup;
  std::unique_ptr<Setup> setup_;
};

}  // namespace tq

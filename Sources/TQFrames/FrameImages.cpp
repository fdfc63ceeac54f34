#include "TQFrames/FrameImages.hpp"

#include <algorithm>
#include <cmath>

#include "TQCore/TQError.hpp"

namespace tq {

Image downscale(const Image& image, std::int64_t maxEdge) try {
  const int longer = std::max(image.width(), image.height());
  if (longer <= maxEdge) return image;
  const double scale = static_cast<double>(std::max(maxEdge, std::int64_t{0})) / longer;
  const auto width = static_cast<int>(std::lround(scale * image.width()));
  const auto height = static_cast<int>(std::lround(scale * image.height()));
  return image.scaled(width, height);
} catch (const ImageError&) {
  return image;
}

Bytes jpegData(const Image& image, double quality) try { return image.jpeg(quality); } catch (const ImageError& error) {
  throw TQError::frameExtractionFailed(error.what());
}

}  // namespace tq

#include "Fuzz/Property.hpp"
#include "TQFrames/FrameImages.hpp"

namespace tq {
namespace {

constexpr int edge = 48;

void requireSize(const Image& image, int width, int height) {
  fuzz::require(image.width() == width && image.height() == height, "a picture keeps the size it was given");
}

/// A picture once encoded and decoded.
Image throughJPEG(const Image& image, double quality) {
  const std::optional<Image> again = Image::decodeJPEG(image.jpeg(quality));
  fuzz::require(again.has_value(), "what was encoded can be decoded");
  requireSize(*again, image.width(), image.height());
  return *again;
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::optional<Image> image = Image::decodeJPEG(input);
  if (!image) return;
  require(image->width() >= 1 && image->height() >= 1, "a picture has a size");
  throughJPEG(downscale(*image, edge), 0.5);
  // Upwards, and to a size that is odd in one direction.
  const Image stretched = image->scaled(edge + 1, edge);
  requireSize(stretched, edge + 1, edge);
  require(throughJPEG(stretched, 1).luma(edge, 2).size() == std::size_t{edge} * 2, "luma has one byte a pixel");
}

}  // namespace tq

#include <algorithm>

#include "Fuzz/Property.hpp"
#include "TQFrames/PerceptualHash.hpp"
#include "TQPlatform/Media/ImageStorage.hpp"

namespace tq {
namespace {

constexpr std::size_t headerBytes = 5;
constexpr int mostPixels = 1 << 16;

/// The bitmap that an input stands for: two bytes of width, two of height, one of orientation, then the pixels, which
/// are repeated over a bitmap that is larger than they are.
Image bitmapOf(ByteView input) {
  const int width = 1 + (input[0] << 8 | input[1]);
  const int height = std::min(1 + (input[2] << 8 | input[3]), std::max(1, mostPixels / width));
  const ByteView source = input.subspan(headerBytes);
  Bytes pixels(std::size_t{3} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  for (std::size_t at = 0; at < pixels.size(); at += source.size())
    std::copy_n(source.begin(), std::min(source.size(), pixels.size() - at), pixels.begin() + std::ptrdiff_t(at));
  const Image stored = Image::fromRGB(width, height, pixels);
  const Orientation orientation{(input[4] & 1) != 0, (input[4] & 2) != 0, (input[4] & 4) != 0};
  return Image(
      std::make_shared<Image::Storage>(Image::Storage{libav::share(*stored.storage().frame), orientation, false}));
}

}  // namespace

void fuzz::check(ByteView input) {
  if (input.size() <= headerBytes) return;
  const Image bitmap = bitmapOf(input);
  const std::uint64_t hash = perceptualHash(bitmap);
  require(perceptualHash(bitmap) == hash, "a picture always has the same hash");
  require(hammingDistance(hash, hash) == 0, "a hash does not differ from itself");
  const Bytes grey = bitmap.luma(9, 8);
  require(((hash >> 63) != 0) == (grey[0] > grey[1]), "the topmost bit compares the first two values");
  require(((hash & 1) != 0) == (grey[70] > grey[71]), "the lowest bit compares the last two values");
  if (std::ranges::adjacent_find(grey, std::ranges::not_equal_to()) == grey.end())
    require(hash == 0, "a picture of one level has the hash 0");
}

}  // namespace tq

#include "TQFrames/PerceptualHash.hpp"

#include <bit>

namespace tq {

std::uint64_t perceptualHash(const Image& image) try {
  constexpr int columns = 9, rows = 8;
  const Bytes grey = image.luma(columns, rows);
  std::uint64_t hash = 0;
  for (std::size_t row = 0; row < rows; ++row)
    for (std::size_t column = 0; column + 1 < columns; ++column) {
      const std::size_t left = row * columns + column;
      hash = hash << 1 | static_cast<std::uint64_t>(grey[left] > grey[left + 1]);
    }
  return hash;
} catch (const ImageError&) {
  return 0;
}

int hammingDistance(std::uint64_t left, std::uint64_t right) {
  return std::popcount(left ^ right);
}

}  // namespace tq

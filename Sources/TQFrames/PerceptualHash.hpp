#pragma once

#include <cstdint>

#include "TQPlatform/Media/Image.hpp"

namespace tq {

/// A difference hash of a picture: like pictures differ in few bits. Over a grid of 9 x 8 grey values a bit says that a
/// value is brighter than its right neighbour; the first row's first comparison is the most significant bit. 0 when the
/// picture cannot be drawn.
std::uint64_t perceptualHash(const Image& image);

/// The number of bits in which two hashes differ.
int hammingDistance(std::uint64_t left, std::uint64_t right);

}  // namespace tq

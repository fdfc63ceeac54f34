#pragma once

#include <span>

#include "TQDescription/Semantic/TextEmbedder.hpp"

namespace tq {

/// Arithmetic on vectors. All sums are taken in 64-bit floats, and the same vectors give the same result everywhere.
struct EmbeddingMath {
  /// The sum of the products; 0 when the lengths differ.
  static double dot(std::span<const float> a, std::span<const float> b);

  static double norm(std::span<const float> vector);

  /// The cosine of the angle between the two; 0 when the lengths differ or one of them has no direction: it is empty or
  /// all but zero, or holds what is no finite number.
  static double cosine(std::span<const float> a, std::span<const float> b);

  /// The same for vectors of one length, from what is known of them.
  static double cosine(double dot, double normOfA, double normOfB);

  /// The vector of that direction and of length 1; zeros for one that has no direction.
  static EmbeddingVector normalize(std::span<const float> vector);
};

}  // namespace tq

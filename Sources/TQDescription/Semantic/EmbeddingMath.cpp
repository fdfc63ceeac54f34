#include "TQDescription/Semantic/EmbeddingMath.hpp"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace tq {
namespace {

constexpr double shortestWithDirection = 1e-12;

bool hasDirection(double norm) {
  return norm > shortestWithDirection && norm <= std::numeric_limits<double>::max();
}

}  // namespace

double EmbeddingMath::dot(std::span<const float> a, std::span<const float> b) {
  if (a.size() != b.size()) return 0;
  // Several sums side by side: none has to wait for the one before it, and the compiler may use vector registers.
  constexpr std::size_t lanes = 8;
  std::array<double, lanes> sums{};
  const float* const left = a.data();
  const float* const right = b.data();
  const std::size_t whole = a.size() - a.size() % lanes;
  for (std::size_t start = 0; start < whole; start += lanes)
    for (std::size_t lane = 0; lane < lanes; ++lane)
      sums[lane] += static_cast<double>(left[start + lane]) * static_cast<double>(right[start + lane]);
  for (std::size_t rest = whole; rest < a.size(); ++rest)
    sums[rest - whole] += static_cast<double>(left[rest]) * static_cast<double>(right[rest]);
  return std::accumulate(sums.begin(), sums.end(), 0.0);
}

double EmbeddingMath::norm(std::span<const float> vector) {
  return std::sqrt(dot(vector, vector));
}

double EmbeddingMath::cosine(std::span<const float> a, std::span<const float> b) {
  return a.size() == b.size() ? cosine(dot(a, b), norm(a), norm(b)) : 0;
}

double EmbeddingMath::cosine(double dot, double normOfA, double normOfB) {
  const double product = normOfA * normOfB;
  return hasDirection(product) ? dot / product : 0;
}

EmbeddingVector EmbeddingMath::normalize(std::span<const float> vector) {
  EmbeddingVector result(vector.size(), 0.0F);
  const double length = norm(vector);
  if (!hasDirection(length)) return result;
  for (std::size_t index = 0; index < vector.size(); ++index)
    result[index] = static_cast<float>(vector[index] / length);
  return result;
}

}  // namespace tq

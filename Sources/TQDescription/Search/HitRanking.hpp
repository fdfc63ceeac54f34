#pragma once

#include <algorithm>
#include <cmath>

namespace tq {

/// The order of scores in a list of hits, the highest first. What is not a number comes last, so that the order is one
/// for any scores.
inline bool scoresHigher(double a, double b) {
  return a > b || (std::isnan(b) && !std::isnan(a));
}

/// The share of similarity in a blended score: held within 0 and 1, and 0 for what is not a number.
inline double semanticShare(double semanticWeight) {
  return semanticWeight >= 0 ? std::min(semanticWeight, 1.0) : 0.0;
}

/// A cosine, brought from -1 to 1 to 0 to 1.
inline double semanticScore(double similarity) {
  return (similarity + 1.0) * 0.5;
}

inline double blendedScore(double keywordScore, double semanticScore, double share) {
  return (1 - share) * keywordScore + share * semanticScore;
}

}  // namespace tq

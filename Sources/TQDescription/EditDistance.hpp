#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace tq {

/// True when at most `threshold` insertions, deletions and replacements of elements make `b` of `a`. The matrix of the
/// Levenshtein distance is filled row by row, and no further than a row whose values are all above the threshold.
template <class Sequence>
bool isWithinEditDistance(const Sequence& a, const Sequence& b, std::size_t threshold) {
  const std::size_t difference = a.size() > b.size() ? a.size() - b.size() : b.size() - a.size();
  if (difference > threshold) return false;
  if (a.size() == 0 || b.size() == 0) return true;

  std::vector<std::size_t> above(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t column = 0; column <= b.size(); ++column)
    above[column] = column;
  for (std::size_t line = 1; line <= a.size(); ++line) {
    row[0] = line;
    for (std::size_t column = 1; column <= b.size(); ++column) {
      const std::size_t replaced = above[column - 1] + (a[line - 1] == b[column - 1] ? 0 : 1);
      row[column] = std::min({replaced, above[column] + 1, row[column - 1] + 1});
    }
    if (*std::min_element(row.begin(), row.end()) > threshold) return false;
    std::swap(row, above);
  }
  return above[b.size()] <= threshold;
}

}  // namespace tq

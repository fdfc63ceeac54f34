#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace tq {

/// True when at most `threshold` insertions, deletions and replacements of elements make `b` of `a`. Fills the matrix
/// of the Levenshtein distance row by row, only where a value can be within the threshold, and no further than a row
/// without such a value.
template <class Sequence>
bool isWithinEditDistance(const Sequence& a, const Sequence& b, std::size_t threshold) {
  const std::size_t longer = std::max(a.size(), b.size());
  if (longer - std::min(a.size(), b.size()) > threshold) return false;
  const std::size_t band = std::min(threshold, longer);
  const std::size_t above = band + 1;  // stands for every value above the threshold

  std::vector<std::size_t> previous(b.size() + 1, above);
  std::vector<std::size_t> row(b.size() + 1, above);
  for (std::size_t column = 0; column <= std::min(band, b.size()); ++column)
    previous[column] = column;
  for (std::size_t line = 1; line <= a.size(); ++line) {
    const std::size_t first = line > band ? line - band : 0;
    const std::size_t last = std::min(b.size(), line + band);
    std::size_t least = above;
    for (std::size_t column = first; column <= last; ++column) {
      std::size_t value = std::min(previous[column] + 1, above);
      if (column > 0) value = std::min(value, previous[column - 1] + (a[line - 1] == b[column - 1] ? 0 : 1));
      if (column > first) value = std::min(value, row[column - 1] + 1);
      row[column] = value;
      least = std::min(least, value);
    }
    if (least == above) return false;
    std::swap(row, previous);
  }
  return previous[b.size()] <= band;
}

}  // namespace tq

#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace tq {

/// True when at most `threshold` insertions, deletions and replacements of elements make `b` of `a`. Fills the matrix
/// of the Levenshtein distance row by row, and no further than a row whose values are all above the threshold. Only the
/// diagonals near the main one can hold others, so a row is these: cell `d` belongs to column `line + d - band`.
template <class Sequence>
bool isWithinEditDistance(const Sequence& a, const Sequence& b, std::size_t threshold) {
  const std::size_t longer = std::max(a.size(), b.size());
  if (longer - std::min(a.size(), b.size()) > threshold) return false;
  const std::size_t band = std::min(threshold, longer);
  const std::size_t above = band + 1;  // stands for every value above the threshold

  constexpr std::size_t usualBand = 2;
  std::array<std::size_t, 2 * usualBand + 2> usual;
  std::vector<std::size_t> wide(band > usualBand ? 2 * band + 2 : 0);
  const std::span<std::size_t> row = band > usualBand ? std::span(wide) : std::span(usual).first(2 * band + 2);
  for (std::size_t d = 0; d < row.size(); ++d)
    row[d] = d >= band && d <= 2 * band ? d - band : above;

  for (std::size_t line = 1; line <= a.size(); ++line) {
    std::size_t least = above;
    std::size_t left = above;
    for (std::size_t d = line < band ? band - line : 0; d <= 2 * band && line + d <= b.size() + band; ++d) {
      const std::size_t column = line + d - band;
      std::size_t value = std::min(left, row[d + 1]) + 1;
      if (column > 0) value = std::min(value, row[d] + (a[line - 1] == b[column - 1] ? 0 : 1));
      row[d] = left = std::min(value, above);
      least = std::min(least, left);
    }
    if (least == above) return false;
  }
  return row[b.size() + band - a.size()] <= band;
}

}  // namespace tq

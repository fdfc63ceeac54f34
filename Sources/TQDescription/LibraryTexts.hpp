#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/LoadedSidecar.hpp"

namespace tq {

/// What users read about a library, in the window and on the command line.
struct LibraryTexts {
  /// "1 clip", "2 clips".
  static std::string counted(std::size_t count, std::string_view noun);

  /// "12 clips · 1 flagged · 2 need review".
  static std::string counts(const std::vector<LoadedSidecar>& sidecars);

  /// "3 of 12 match".
  static std::string matches(std::size_t hits, std::size_t of);

  /// "Skipped 2 malformed sidecars".
  static std::string skipped(std::size_t count);

  /// How good a hit is beside the best one, in percent; 0 unless both scores are above 0.
  static int matchPercent(double score, double top);
};

}  // namespace tq

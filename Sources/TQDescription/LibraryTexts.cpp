#include "TQDescription/LibraryTexts.hpp"

#include <algorithm>
#include <cmath>

namespace tq {

std::string LibraryTexts::counted(std::size_t count, std::string_view noun) {
  return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

std::string LibraryTexts::counts(const std::vector<LoadedSidecar>& sidecars) {
  const auto flagged =
      std::ranges::count_if(sidecars, [](const LoadedSidecar& sidecar) { return sidecar.result->flagged == true; });
  const auto needReview =
      std::ranges::count_if(sidecars, [](const LoadedSidecar& sidecar) { return sidecar.result->reviewFlag == true; });
  return counted(sidecars.size(), "clip") + " · " + std::to_string(flagged) + " flagged · " +
         std::to_string(needReview) + " need review";
}

std::string LibraryTexts::matches(std::size_t hits, std::size_t of) {
  return std::to_string(hits) + " of " + std::to_string(of) + " match";
}

std::string LibraryTexts::skipped(std::size_t count) {
  return "Skipped " + counted(count, "malformed sidecar");
}

int LibraryTexts::matchPercent(double score, double top) {
  if (!(score > 0 && top > 0)) return 0;
  return static_cast<int>(std::round(std::min(score / top, 1.0) * 100));
}

}  // namespace tq

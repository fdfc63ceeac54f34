#include "TQDescription/Library/LibraryTexts.hpp"

#include <algorithm>
#include <cmath>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

/// The last component, be there a slash behind it or not. A path such as ".." or "/" is its own name.
std::string nameOf(const std::filesystem::path& path) {
  const std::filesystem::path named = path.has_filename() ? path : path.parent_path();
  return validUTF8((named.has_filename() ? named.filename() : path).string());
}

}  // namespace

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

std::string LibraryTexts::loadFailed(std::string_view reason) {
  return "Load failed: " + std::string(reason);
}

std::string LibraryTexts::indexFailed(std::string_view reason) {
  return "Write failed: " + std::string(reason);
}

std::string LibraryTexts::exportFailed(std::string_view reason) {
  return "Export failed: " + std::string(reason);
}

std::string LibraryTexts::trimFailed(std::string_view reason) {
  return "Clip trim failed: " + std::string(reason);
}

std::string LibraryTexts::exported(std::size_t ranges, const std::filesystem::path& file) {
  return "Exported " + counted(ranges, "range") + " → " + nameOf(file);
}

std::string LibraryTexts::trimming(std::size_t ranges) {
  return "Trimming " + counted(ranges, "clip") + "…";
}

std::string LibraryTexts::trimmed(std::size_t ranges, const std::filesystem::path& folder) {
  return "Trimmed " + counted(ranges, "clip") + " → " + nameOf(folder);
}

std::string LibraryTexts::enqueued(std::size_t clips) {
  return "Enqueued " + counted(clips, "clip") + " for re-rate. Switch to Queue to watch progress.";
}

int LibraryTexts::matchPercent(double score, double top) {
  if (!(score > 0 && top > 0)) return 0;
  return static_cast<int>(std::round(std::min(score / top, 1.0) * 100));
}

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Library/LoadedSidecar.hpp"
#include "TQDescription/Search/Facets.hpp"

namespace tq {

/// What users read about a library, in the window and on the command line.
struct LibraryTexts {
  /// The order in which facets are offered.
  static constexpr std::array facetBarFields{FacetField::theme,    FacetField::shotType,    FacetField::timeOfDay,
                                             FacetField::lighting, FacetField::environment, FacetField::keyword,
                                             FacetField::useCase,  FacetField::subject,     FacetField::cameraMotion,
                                             FacetField::weather,  FacetField::mood};

  /// "1 clip", "2 clips".
  static std::string counted(std::size_t count, std::string_view noun);

  /// "12 clips · 1 flagged · 2 need review".
  static std::string counts(const std::vector<LoadedSidecar>& sidecars);

  /// "3 of 12 match".
  static std::string matches(std::size_t hits, std::size_t of);

  /// "Skipped 2 malformed sidecars".
  static std::string skipped(std::size_t count);

  // What an action came to. `reason` is the text of an error.
  static constexpr const char* noClipsMatch = "No clips match";
  static constexpr const char* nothingToExport = "Nothing to export.";
  static constexpr const char* noVideosToTrim = "No source videos found to trim.";
  static constexpr const char* ffmpegNotFound =
      "ffmpeg not found. Install it (e.g. `brew install ffmpeg`) to trim clips.";
  static constexpr const char* nothingToRerate = "No re-ratable clips found (source videos missing?).";
  static constexpr const char* wroteIndex = "Wrote _INDEX.json and _INDEX.md";
  static std::string loadFailed(std::string_view reason);
  static std::string indexFailed(std::string_view reason);
  static std::string exportFailed(std::string_view reason);
  static std::string trimFailed(std::string_view reason);
  static std::string exported(std::size_t ranges, const std::filesystem::path& file);
  static std::string trimming(std::size_t ranges);
  static std::string trimmed(std::size_t ranges, const std::filesystem::path& folder);
  static std::string enqueued(std::size_t clips);

  /// How good a hit is beside the best one, in percent; 0 unless both scores are above 0.
  static int matchPercent(double score, double top);
};

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/RawValue.hpp"
#include "TQDescription/Export/ExportItem.hpp"
#include "TQDescription/Library/LoadedSidecar.hpp"

namespace tq {

enum class TextExportFormat { fcpxml, edl, csv };

/// The extension of the format's files.
template <>
inline constexpr auto rawValues<TextExportFormat> = std::to_array<std::string_view>({"fcpxml", "edl", "csv"});

/// How clips that were found in a library become an export.
struct LibraryExport {
  /// The clips with the ranges of their shots. A sidecar whose filename leads out of its folder is left out; whether a
  /// clip is still there is not looked at.
  static std::vector<ExportItem> items(const std::vector<LoadedSidecar>& sidecars);

  static std::size_t rangeCount(const std::vector<ExportItem>& items);

  /// What was searched for, or "Tarquel Export".
  static std::string title(std::string_view query);

  /// "beach_walk.edl" for the query "beach walk".
  static std::string suggestedFilename(std::string_view query, TextExportFormat format);

  /// The content of the file.
  static std::string text(TextExportFormat format, const std::vector<ExportItem>& items, std::string_view query);
};

}  // namespace tq

#pragma once

#include <string>
#include <vector>

#include "TQDescription/Export/ExportItem.hpp"

namespace tq {

/// Markers as comma-separated values (RFC 4180, but lines end in a line feed alone): file, timecodes of start and end,
/// name.
struct CSVMarkersExporter {
  /// A head and one line for each range. Malformed UTF-8 becomes U+FFFD; a text that a spreadsheet would take for a
  /// formula stays as it is.
  static std::string exportItems(const std::vector<ExportItem>& items);
};

}  // namespace tq

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Export/ExportItem.hpp"

namespace tq {

/// An edit decision list in the manner of CMX 3600: one video track, cuts only, every reel "AX", non-drop-frame.
struct EDLExporter {
  /// Source times count in each clip's own rate, record times in that of the first item. Malformed UTF-8 becomes
  /// U+FFFD.
  static std::string exportItems(const std::vector<ExportItem>& items, std::string_view title);
};

}  // namespace tq

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Export/ExportItem.hpp"
#include "TQDescription/Export/Timecode.hpp"

namespace tq {

/// A Final Cut Pro project, FCPXML 1.10: one sequence with every range of every item, in order.
struct FCPXMLExporter {
  /// Always a well-formed document: what XML 1.0 cannot hold becomes U+FFFD.
  static std::string exportItems(const std::vector<ExportItem>& items, std::string_view projectName);

  /// One frame, `num` / `den` seconds.
  static FrameDuration frameDurationRational(double frameRate);

  /// A time as a whole number of frames, exactly: "30030/30000s" for 1 second at 29.97.
  static std::string rationalTime(double seconds, double frameRate);
};

}  // namespace tq

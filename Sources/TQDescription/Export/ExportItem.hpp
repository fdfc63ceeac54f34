#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/Shared.hpp"

namespace tq {

/// One span of a clip, in seconds from the clip's start.
struct ExportRange {
  double startSeconds = 0;
  double endSeconds = 0;
  std::optional<std::string> name;

  /// Never negative.
  double durationSeconds() const;

  bool operator==(const ExportRange&) const = default;
};
template <>
std::size_t hashOf(const ExportRange&);

/// A clip and what is taken from it.
struct ExportItem {
  std::filesystem::path mediaURL;
  Shared<DescriptionResult> result = DescriptionResult();  ///< always has a value
  std::vector<ExportRange> ranges;                         ///< in timeline order

  /// The whole clip as one range, or a range for each shot that tells its time, up to the next such shot. Fewer than
  /// two of them are taken for the whole clip as well.
  static ExportItem make(std::filesystem::path mediaURL, Shared<DescriptionResult> result, bool wholeClip);

  /// Frames a second, always above 0: 25 where the record knows none.
  double frameRate() const;

  /// As the record has it, which may be negative.
  double durationSeconds() const;

  bool operator==(const ExportItem&) const = default;
};
template <>
std::size_t hashOf(const ExportItem&);

/// The rate that a timeline of all `items` counts in, that of the first one; 25 without any.
double timelineFrameRate(const std::vector<ExportItem>& items);

}  // namespace tq

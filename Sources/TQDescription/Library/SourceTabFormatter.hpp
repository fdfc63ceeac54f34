#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// The Source tab of a description: what was described, by what, and how it went.
struct SourceTabFormatter {
  struct Row {
    std::string label;
    std::string value;
    bool operator==(const Row&) const = default;
  };

  /// The rows from top to bottom; those without something to say are left out. `sourceURL` is the clip.
  static std::vector<Row> rows(const DescriptionResult& result, const std::filesystem::path& sourceURL);

  /// "Lisbon (38.722252, -9.139337, alt 12 m)".
  static std::string formatGPS(const GPS& gps);

  /// "whisper/whisper-1 (pt)"; without a language "whisper/whisper-1".
  static std::string formatTranscript(const TranscriptInfo& transcript);

  /// "Refused by model" wins over "Needs review — blurry frames"; absent when there is neither.
  static std::optional<std::string> formatStatus(std::optional<bool> flagged, std::optional<bool> reviewFlag,
                                                 const std::optional<std::string>& reviewReason);
};

}  // namespace tq

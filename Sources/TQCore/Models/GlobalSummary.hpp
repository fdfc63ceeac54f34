#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TQCore/RecordJSON.hpp"

namespace tq {

/// What a model says of the clip as a whole.
struct GlobalSummary {
  std::optional<std::string> overallSummaryOneLine;
  std::optional<std::vector<std::string>> primarySubjects;
  std::optional<std::vector<std::string>> themes;
  std::optional<std::vector<std::string>> dominantPalette;  ///< colours as #RRGGBB
  std::optional<std::vector<std::string>> searchKeywords;
  std::optional<std::vector<std::string>> suggestedUseCases;

  bool operator==(const GlobalSummary&) const = default;
};
TQ_RECORD(GlobalSummary);

}  // namespace tq

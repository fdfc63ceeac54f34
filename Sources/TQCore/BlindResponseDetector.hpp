#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// Tells the answer of a model that never saw the frames from the description of a merely dull clip. A text-only model
/// that is sent pictures often fills the form with "unclear", or says in prose that there were no frames; such an
/// answer looks like a success and is worthless.
struct BlindResponseDetector {
  /// True when frames were sent, the model did not refuse, and it either says that it saw none or says nothing of them.
  static bool looksBlind(const DescriptionResult& result);

  /// True when one of the texts says something: it is neither empty nor one of the words for "don't know".
  static bool hasSignal(const std::optional<std::vector<std::string>>& values);
};

}  // namespace tq

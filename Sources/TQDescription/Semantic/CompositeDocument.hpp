#pragma once

#include <string>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// The text by which a clip is compared in meaning.
struct CompositeDocument {
  /// A line for each side of the description that says something, such as "Mood: calm, wistful"; empty when none does.
  /// Nothing is cut or left out, and what several shots say alike stands there as often.
  static std::string make(const DescriptionResult& result);
};

}  // namespace tq

#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "TQCore/Models/PromptProfile.hpp"
#include "TQCore/Models/SourceMetadata.hpp"

namespace tq {

/// The two texts of a vision request. Nothing here can fail.
struct PromptBuilder {
  /// Of a longer transcript only so many characters reach the model.
  static constexpr std::size_t maxTranscriptCharacters = 12000;

  /// Depends on the profile alone: its rules, then the safety rule and the vocabularies that all profiles share.
  static std::string systemPrompt(PromptProfile profile);

  /// The facts of the clip, what was said in it as data between markers, and the schema of the answer. A transcript
  /// that is absent or blank leaves no trace.
  static std::string userPrompt(std::size_t frameCount, const SourceMetadata& source,
                                const std::optional<std::string>& transcript);
};

}  // namespace tq

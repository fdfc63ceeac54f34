#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// Turns the raw text of a model into a description that is worth keeping.
struct DescriptionBuilder {
  /// Reads the answer, code fences and chatter around it aside, and joins it with the facts that a model is not trusted
  /// to report. Keys that are not the model's to give are ignored. Throws `TQError::providerDecodeFailure` when the
  /// text is no JSON or a value is of the wrong kind, and `TQError::schemaValidationFailed` when summary, shots or
  /// global are missing.
  static DescriptionResult build(std::string_view rawText, SourceMetadata source, EngineMetadata engine,
                                 std::optional<TranscriptInfo> transcript);

  /// The part of `text` that can be the answer's object: without a code fence and without what stands before the first
  /// "{" and behind the last "}". Braces are not balanced, and a text without them stays what it is.
  static std::string_view stripFences(std::string_view text);
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/Models/OutputConfig.hpp"
#include "TQPlatform/Bytes.hpp"

namespace tq {

/// Writes the sidecars and the poster of a clip, and decides what happens where a file of that name exists. Every file
/// is decided for on its own and replaced in one step: a failed write leaves the old file whole.
///
/// Both operations create the folder where it is missing and let the `SystemError` of a failure through as it is. They
/// throw `TQError::outputWriteFailed` when a file cannot be written, or when no number is free under
/// `ConflictPolicy::suffix`. Two calls for the same clip at once are not guarded against each other.
class DescriptionWriter {
 public:
  /// The files that were really written, Markdown before JSON; those skipped are missing from the list. When the JSON
  /// fails the Markdown that was written before it stays. Throws also `JSONError` for a text that is not UTF-8.
  std::vector<std::filesystem::path> write(const DescriptionResult& result, const std::filesystem::path& sourceURL,
                                           const OutputConfig& config) const;

  /// The poster that was written; absent when the file was skipped, or when there are no bytes and nothing was touched.
  std::optional<std::filesystem::path> writePoster(ByteView jpegData, const std::filesystem::path& sourceURL,
                                                   const OutputConfig& config) const;
};

}  // namespace tq

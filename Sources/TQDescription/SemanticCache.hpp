#pragma once

#include <filesystem>
#include <string_view>

#include "TQDescription/SemanticEntries.hpp"

namespace tq {

/// The file form of a `SemanticIndex`: a compact JSON list with an object for each clip, sorted by filename, with the
/// keys "contentHash", "filename" and "vector".
struct SemanticCache {
  /// Throws `JSONError` for a text that is no such list.
  static SemanticEntries parse(std::string_view text);

  /// Replaces the file in one step and makes its folder where it is missing. Throws `SystemError` when it cannot be
  /// written, and `JSONError` for a number that is not finite and a filename that is not UTF-8.
  static void write(const std::filesystem::path& url, const SemanticEntries& entries);
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <string_view>

#include "TQDescription/SemanticEntries.hpp"
#include "TQPlatform/Files.hpp"

namespace tq {

/// The file form of a `SemanticIndex`: a compact JSON list with an object for each clip, sorted by filename, with the
/// keys "contentHash", "filename" and "vector".
struct SemanticCache {
  /// Throws `JSONError` for a text that is no such list.
  static SemanticEntries parse(std::string_view text);

  /// Hands the text over in pieces of about a megabyte. Throws `JSONError` for a number that is not finite and for a
  /// filename that is not UTF-8.
  static void print(const SemanticEntries& entries, const FileSink& sink);

  /// Replaces the file in one step and makes its folder where it is missing. Throws `SystemError` when it cannot be
  /// written, and what `print` throws.
  static void write(const std::filesystem::path& url, const SemanticEntries& entries);
};

}  // namespace tq

#pragma once

#include <cstddef>
#include <filesystem>
#include <string_view>

#include "TQDescription/Semantic/SemanticEntries.hpp"
#include "TQPlatform/FileSystem/Files.hpp"

namespace tq {

/// The file form of a `SemanticIndex`: a compact JSON list with an object for each clip, sorted by filename, with the
/// keys "contentHash", "filename" and "vector". Nearly all the work is that of turning numbers into text and back;
/// `processorCount` threads share it.
struct SemanticCache {
  /// Throws `JSONError` for a text that is no such list.
  static SemanticEntries parse(std::string_view text, std::size_t processorCount = 1);

  /// Hands the text over in pieces of about a megabyte, on the calling thread. Throws `JSONError` for a number that is
  /// not finite and for a filename that is not UTF-8.
  static void print(const SemanticEntries& entries, const FileSink& sink, std::size_t processorCount = 1);

  /// Replaces the file in one step and makes its folder where it is missing. Throws `SystemError` when it cannot be
  /// written, and what `print` throws.
  static void write(const std::filesystem::path& url, const SemanticEntries& entries, std::size_t processorCount = 1);
};

}  // namespace tq

#pragma once

#include <cstdint>
#include <filesystem>

#include "TQPlatform/Bytes.hpp"

namespace tq {

/// Reads whole files, but none that is larger than its reader expects.
struct SafeFile {
  static constexpr std::int64_t maxMetadataBytes = 16'777'216;    ///< 16 MiB: a sidecar
  static constexpr std::int64_t maxAggregateBytes = 268'435'456;  ///< 256 MiB: the semantic cache

  /// The content of the file. Its size is looked at before the first byte is read; where that fails the file is read
  /// all the same. Throws `TQError::fileTooLarge` for a file of more than `max` bytes and `SystemError` for a failed
  /// read.
  static Bytes readBounded(const std::filesystem::path& url, std::int64_t max);

  /// The same into `buffer`, which grows where it must and never shrinks: the part of it that holds the content.
  static ByteView readBounded(const std::filesystem::path& url, std::int64_t max, Bytes& buffer);
};

}  // namespace tq

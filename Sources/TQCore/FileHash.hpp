#pragma once

#include <cstddef>
#include <filesystem>
#include <stop_token>
#include <string>

namespace tq {

struct FileHash {
  /// The SHA-256 of the file's content as 64 lower-case hexadecimal digits. Holds one chunk of `chunkSize` bytes (at
  /// least 1) in memory whatever the size of the file. Throws `SystemError` when the file cannot be opened or read; a
  /// stop request ends it between two chunks with `Cancelled`.
  static std::string sha256Hex(const std::filesystem::path& url, std::size_t chunkSize, std::stop_token stop = {});
};

}  // namespace tq

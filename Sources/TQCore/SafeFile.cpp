#include "TQCore/SafeFile.hpp"

#include <optional>

#include "TQCore/TQError.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace {

std::optional<std::int64_t> knownSize(const std::filesystem::path& url) {
  try {
    return fileSize(url);
  } catch (const SystemError&) {
    return std::nullopt;
  }
}

void refuseMoreThan(std::int64_t max, std::int64_t size, const std::filesystem::path& url) {
  if (size > max) throw TQError::fileTooLarge(url, size);
}

/// The size of a file can be known although it cannot be opened, and being too large is the greater of both faults.
FileReader opened(const std::filesystem::path& url, std::int64_t max) {
  try {
    return FileReader(url);
  } catch (const SystemError&) {
    if (const auto size = knownSize(url)) refuseMoreThan(max, *size, url);
    throw;
  }
}

}  // namespace

Bytes SafeFile::readBounded(const std::filesystem::path& url, std::int64_t max) {
  Bytes content;
  content.resize(readBounded(url, max, content).size());
  return content;
}

ByteView SafeFile::readBounded(const std::filesystem::path& url, std::int64_t max, Bytes& buffer) {
  const FileReader file = opened(url, max);
  refuseMoreThan(max, file.size(), url);
  return file.readWhole(buffer);
}

}  // namespace tq

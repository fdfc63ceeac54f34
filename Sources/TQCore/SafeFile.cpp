#include "TQCore/SafeFile.hpp"

#include <optional>

#include "TQCore/TQError.hpp"
#include "TQPlatform/Files.hpp"
#include "TQPlatform/SystemError.hpp"

namespace tq {

namespace {

std::optional<std::int64_t> knownSize(const std::filesystem::path& url) {
  try {
    return fileSize(url);
  } catch (const SystemError&) {
    return std::nullopt;
  }
}

}  // namespace

Bytes SafeFile::readBounded(const std::filesystem::path& url, std::int64_t max) {
  if (const auto size = knownSize(url); size && *size > max) throw TQError::fileTooLarge(url, *size);
  return readFile(url);
}

}  // namespace tq

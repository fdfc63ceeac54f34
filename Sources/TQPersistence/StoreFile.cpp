#include "TQPersistence/StoreFile.hpp"

#include <system_error>

#include "TQPlatform/Files.hpp"
#include "TQPlatform/SystemError.hpp"

namespace tq {

namespace {

bool meansThatModesAreUnknown(const SystemError& error) {
  return error.code() == std::errc::operation_not_permitted || error.code() == std::errc::operation_not_supported;
}

}  // namespace

std::string storeText(const JSONValue& value) {
  return writeJSON(value, JSONLayout::pretty);
}

void writeStoreFile(const std::filesystem::path& url, const std::string& text, StoreFileMode mode) {
  if (mode == StoreFileMode::ownerOnly) {
    try {
      return writeFileAtomically(url, viewOf(text), 0600);
    } catch (const SystemError& error) {
      if (!meansThatModesAreUnknown(error)) throw;
    }
  }
  writeFileAtomically(url, viewOf(text));
}

}  // namespace tq

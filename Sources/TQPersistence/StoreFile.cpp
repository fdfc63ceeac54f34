#include "TQPersistence/StoreFile.hpp"

#include "TQPlatform/Files.hpp"

namespace tq {

std::string storeText(const JSONValue& value) {
  return writeJSON(value, JSONLayout::pretty);
}

void writeStoreFile(const std::filesystem::path& url, const std::string& text, StoreFileMode mode) {
  if (mode == StoreFileMode::asItIs) return writeFileAtomically(url, viewOf(text));
  writeFileAtomically(url, viewOf(text), 0600,
                      mode == StoreFileMode::ownerOnly ? ModeFailure::isAnError : ModeFailure::isIgnored);
}

}  // namespace tq

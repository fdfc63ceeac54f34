#include "TQPersistence/StoreFile.hpp"

#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace {

void closeToOthers(const std::filesystem::path& folder) {
  try {
    setFileMode(folder, 0700);
  } catch (const SystemError&) {
    // The folder may belong to somebody else; the file's own mode still protects its content.
  }
}

}  // namespace

std::string storeText(const JSONValue& value) {
  return writeJSON(value, JSONLayout::pretty);
}

void writeStoreFile(const std::filesystem::path& url, const std::string& text, StoreFileMode mode) {
  const std::filesystem::path folder = url.parent_path();
  createFolders(folder, 0700);
  if (mode == StoreFileMode::asItIs) return writeFileAtomically(url, viewOf(text));
  if (mode == StoreFileMode::ownerOnlyIfPossible)
    return writeFileAtomically(url, viewOf(text), 0600, ModeFailure::isIgnored);
  closeToOthers(folder);
  writeFileAtomically(url, viewOf(text), 0600);
}

}  // namespace tq

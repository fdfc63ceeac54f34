#include "TQPersistence/AppSupportPaths.hpp"

#include <cstdlib>
#include <system_error>
#include <vector>

#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/HomeFolder.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// The entries directly in `folder`; none when it cannot be listed.
std::vector<fs::path> childrenOf(const fs::path& folder) {
  std::vector<fs::path> children;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    children.push_back(entry->path());
  return error ? std::vector<fs::path>() : children;
}

void moveChildren(const fs::path& legacy, const fs::path& current) {
  for (const fs::path& child : childrenOf(legacy)) {
    const fs::path target = current / child.filename();
    std::error_code ignored;
    if (!fs::exists(fs::symlink_status(target, ignored))) fs::rename(child, target, ignored);
  }
}

}  // namespace

fs::path AppSupportPaths::baseFolder(const std::optional<std::string>& dataHome, const fs::path& home) {
  if (dataHome && fs::path(*dataHome).is_absolute()) return *dataHome;
  return home / ".local" / "share";
}

AppSupportPaths AppSupportPaths::ofUser() {
  const char* dataHome = std::getenv("XDG_DATA_HOME");
  return AppSupportPaths(baseFolder(dataHome ? std::optional<std::string>(dataHome) : std::nullopt, homeFolder()));
}

fs::path AppSupportPaths::appSupportDirectory() const {
  const fs::path result = base_ / "tarquel";
  try {
    if (!fileExists(result)) createFolders(result, 0700);
  } catch (const SystemError&) {
    // The store that wants to write there will meet the same obstacle and report it.
  }
  migrateLegacyDirectory(base_ / "Tarquel", result);
  return result;
}

void AppSupportPaths::removeAbandonedTemporaries() const noexcept {
  try {
    tq::removeAbandonedTemporaries(appSupportDirectory());
    tq::removeAbandonedTemporaries(semanticIndexDirectory());
  } catch (const std::exception&) {
    // Out of memory; the next start tries again.
  }
}

void AppSupportPaths::migrateLegacyDirectory(const fs::path& legacy, const fs::path& current) noexcept {
  try {
    std::error_code unknown;
    if (!fileExists(legacy) || fs::equivalent(legacy, current, unknown)) return;
    moveChildren(legacy, current);
    // Only a folder is removed, and only an empty one: the system refuses any other.
    std::error_code ignored;
    if (fs::is_directory(fs::symlink_status(legacy, ignored))) fs::remove(legacy, ignored);
  } catch (const std::exception&) {
    // Out of memory; the next access tries again.
  }
}

}  // namespace tq

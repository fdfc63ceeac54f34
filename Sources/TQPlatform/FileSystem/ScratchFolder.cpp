#include "TQPlatform/FileSystem/ScratchFolder.hpp"

#include <fcntl.h>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/Uninterrupted.hpp"
#include "TQPlatform/UUID.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefix = ".tarquel-";
constexpr std::string_view suffix = ".work";

std::string newName() {
  return std::string(prefix) + UUID::random().text() + std::string(suffix);
}

bool isScratchName(std::string_view name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() < prefix.size() + suffix.size()) return false;
  name.remove_prefix(prefix.size());
  name.remove_suffix(suffix.size());
  const auto id = UUID::parse(name);
  return id && id->text() == name;
}

Descriptor opened(const fs::path& folder) {
  const int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  return Descriptor(uninterrupted([&] { return ::open(folder.c_str(), flags); }));
}

/// Whether `path` still leads to the open folder.
bool isStillThere(const fs::path& path, const Descriptor& folder) {
  struct stat named {
  }, open{};
  return ::lstat(path.c_str(), &named) == 0 && ::fstat(folder.get(), &open) == 0 && named.st_ino == open.st_ino &&
         named.st_dev == open.st_dev;
}

void removeWithContent(const fs::path& folder) {
  std::error_code ignored;
  fs::remove_all(folder, ignored);
}

void removeIfAbandoned(const fs::path& folder) {
  const Descriptor open = opened(folder);
  struct stat status {};
  if (!open || ::fstat(open.get(), &status) != 0 || status.st_uid != ::geteuid()) return;
  if (::flock(open.get(), LOCK_SH | LOCK_NB) == 0) removeWithContent(folder);
}

}  // namespace

ScratchFolder::ScratchFolder(const fs::path& parent) {
  do {
    path_ = parent / newName();
    if (::mkdir(path_.c_str(), 0777) != 0) throwErrno(parent);
  } while (!lock(parent));
}

ScratchFolder::~ScratchFolder() {
  removeWithContent(path_);
}

/// False when the folder is gone or about to go: until it is locked, a clean-up takes it for abandoned. A file system
/// without locks keeps nobody from the work.
bool ScratchFolder::lock(const fs::path& parent) {
  lock_ = opened(path_);
  if (!lock_ && errno == ENOENT) return false;
  if (!lock_) {
    const int cause = errno;
    removeWithContent(path_);
    throw SystemError(cause, parent);
  }
  const bool isTaken = ::flock(lock_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  return !isTaken && isStillThere(path_, lock_);
}

void removeAbandonedScratchFolders(const fs::path& parent) noexcept {
  try {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(parent, error), end; !error && entry != end; entry.increment(error))
      if (isScratchName(entry->path().filename().native())) found.push_back(entry->path());
    for (const fs::path& folder : found)
      removeIfAbandoned(folder);
  } catch (const std::exception&) {
    // Out of memory; the next run tries again.
  }
}

}  // namespace tq

#include "TQPlatform/FileSystem/TemporaryFile.hpp"

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <random>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/Uninterrupted.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view prefix = ".tarquel-";
constexpr std::string_view suffix = ".tmp";
constexpr std::size_t randomDigits = 16;

std::string newTemporaryName() {
  std::random_device random;
  char digits[randomDigits + 1];
  std::snprintf(digits, sizeof digits, "%08x%08x", random(), random());
  return std::string(prefix) + std::to_string(::getpid()) + '-' + digits + std::string(suffix);
}

bool consistsOf(std::string_view text, std::string_view allowed) {
  return !text.empty() && text.find_first_not_of(allowed) == std::string_view::npos;
}

bool isTemporaryName(std::string_view name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix) || name.size() < prefix.size() + suffix.size()) return false;
  name.remove_prefix(prefix.size());
  name.remove_suffix(suffix.size());
  const std::size_t dash = std::min(name.find('-'), name.size() - 1);
  const std::string_view random = name.substr(dash + 1);
  return consistsOf(name.substr(0, dash), "0123456789") && random.size() == randomDigits &&
         consistsOf(random, "0123456789abcdef");
}

std::vector<std::string> temporaryNamesIn(const fs::path& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error))
    if (std::string name = entry->path().filename().string(); isTemporaryName(name)) names.push_back(std::move(name));
  return names;
}

void removeIfAbandoned(int folder, const char* name) {
  const int flags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const Descriptor file(uninterrupted([&] { return ::openat(folder, name, flags); }));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0) return;
  if (!S_ISREG(status.st_mode) || status.st_uid != ::geteuid()) return;
  // A shared lock excludes the writer as well, and is all that a file opened for reading gets on a network file system.
  // It is held until the name is gone.
  if (::flock(file.get(), LOCK_SH | LOCK_NB) == 0) ::unlinkat(folder, name, 0);
}

}  // namespace

TemporaryFile::TemporaryFile(int folder, fs::path target, std::optional<FileMode> mode, ModeFailure onModeFailure)
    : folder_(folder), target_(std::move(target)) {
  do {
    create(mode.value_or(0666));
  } while (!lock());
  if (mode) ensureMode(*mode, onModeFailure);
}

TemporaryFile::~TemporaryFile() {
  remove();
}

void TemporaryFile::write(ByteView content) {
  while (!content.empty()) {
    const ssize_t count = uninterrupted([&] { return ::write(descriptor_.get(), content.data(), content.size()); });
    if (count == 0) errno = EIO;
    if (count <= 0) fail();
    content = content.subspan(static_cast<std::size_t>(count));
  }
}

void TemporaryFile::putInPlace() {
  if (uninterrupted([&] { return ::fsync(descriptor_.get()); }) != 0) fail();
  // Some file systems send the content off only now, and say now that they could not. Linux has given the descriptor
  // back even when a signal interrupts close.
  if (::close(descriptor_.release()) != 0 && errno != EINTR) fail();
  if (::renameat(folder_, name_.c_str(), folder_, target_.filename().c_str()) != 0) fail();
  name_.clear();
}

void TemporaryFile::create(FileMode mode) {
  const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  std::string name;
  do {
    name = newTemporaryName();
    descriptor_ = Descriptor(uninterrupted([&] { return ::openat(folder_, name.c_str(), flags, mode); }));
  } while (!descriptor_ && errno == EEXIST);
  if (!descriptor_) throwErrno(target_);
  name_ = std::move(name);
}

/// False when the file is gone or about to go: until it is locked, a clean-up takes it for abandoned. A file system
/// without locks keeps no writer from its work.
bool TemporaryFile::lock() {
  const bool isTaken = ::flock(descriptor_.get(), LOCK_EX | LOCK_NB) != 0 && errno == EWOULDBLOCK;
  struct stat status {};
  if (isTaken || (::fstat(descriptor_.get(), &status) == 0 && status.st_nlink == 0)) {
    remove();
    return false;
  }
  lock_ = Descriptor(::fcntl(descriptor_.get(), F_DUPFD_CLOEXEC, 0));
  if (!lock_) fail();
  return true;
}

/// The umask may have taken bits away that were asked for, and some file systems give every file the same mode,
/// whatever they are told.
void TemporaryFile::ensureMode(FileMode mode, ModeFailure onModeFailure) {
  const auto isGiven = [&] {
    struct stat status {};
    return ::fstat(descriptor_.get(), &status) == 0 && (status.st_mode & 07777) == mode;
  };
  if (isGiven()) return;
  if (::fchmod(descriptor_.get(), mode) == 0) {
    if (isGiven()) return;
    errno = ENOTSUP;
  }
  if (onModeFailure == ModeFailure::isAnError) fail();
}

void TemporaryFile::fail() {
  const int cause = errno;
  remove();
  throw SystemError(cause, target_);
}

void TemporaryFile::remove() noexcept {
  if (!name_.empty()) ::unlinkat(folder_, name_.c_str(), 0);
  name_.clear();
}

void removeAbandonedTemporaries(const fs::path& folder) noexcept {
  try {
    const Descriptor open(uninterrupted([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    if (!open) return;
    for (const std::string& name : temporaryNamesIn(folder))
      removeIfAbandoned(open.get(), name.c_str());
  } catch (const std::exception&) {
    // Out of memory; the next start tries again.
  }
}

}  // namespace tq

#include "Support/Faults/FileFaults.hpp"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <fcntl.h>
#include <mutex>
#include <signal.h>
#include <string>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace tq::test {

namespace fs = std::filesystem;

namespace {

std::mutex mutex;
/// Set under the mutex. A look without it keeps threads from waiting for each other, and so from seeming to agree on an
/// order that they do not have without this.
std::atomic<FileFaults*> current = nullptr;
thread_local bool isDeciding = false;  // in this thread

/// What is open there. A file that has lost its name keeps the path it had, with a remark behind it.
fs::path placeOf(int descriptor) {
  std::error_code none;
  return fs::read_symlink("/proc/self/fd/" + std::to_string(descriptor), none);
}

fs::path placeOf(int folder, const char* name) {
  if (*name == '/') return name;
  std::error_code none;
  return (folder == AT_FDCWD ? fs::current_path(none) : placeOf(folder)) / name;
}

bool isWithin(const fs::path& place, const fs::path& folder) {
  const fs::path normal = place.lexically_normal();
  return std::mismatch(folder.begin(), folder.end(), normal.begin(), normal.end()).first == folder.end();
}

/// Absent when nobody is interested in the call.
template <class... Place>
std::optional<FileFate> knownFateOf(FileCall call, Place... place) {
  if (isDeciding || !current.load(std::memory_order_relaxed)) return std::nullopt;
  const std::lock_guard guard(mutex);
  FileFaults* const faults = current;
  if (!faults) return std::nullopt;
  const int error = errno;
  isDeciding = true;
  const std::optional<FileFate> fate = faults->decide(call, placeOf(place...));
  isDeciding = false;
  errno = error;
  return fate;
}

template <class... Place>
FileFate fateOf(FileCall call, Place... place) {
  return knownFateOf(call, place...).value_or(FileFate());
}

template <class Call>
auto go(const FileFate& fate, const Call& call) {
  using Result = decltype(call());
  if (fate.error != 0) errno = fate.error;
  if (fate.error != 0) return Result(-1);
  return fate.isPretended ? Result(0) : call();
}

mode_t modeArgument(int flags, va_list arguments) {
  return (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

std::string_view nameOf(FileCall call) {
  constexpr std::array<std::string_view, fileCalls.size()> names{
      "open", "lock", "duplicate", "inspect", "mode", "read", "write", "sync", "close", "rename", "remove", "folder"};
  return names.at(static_cast<std::size_t>(call));
}

FileFaults::FileFaults(const fs::path& folder, Plan plan) : folder_(fs::canonical(folder)), plan_(std::move(plan)) {
  const std::lock_guard guard(mutex);
  current = this;
}

FileFaults::FileFaults(const fs::path& folder) : FileFaults(folder, [](FileCall, int) { return FileFate(); }) {}

FileFaults::~FileFaults() {
  const std::lock_guard guard(mutex);
  current = nullptr;
}

int FileFaults::count(FileCall call) const {
  const std::lock_guard guard(mutex);
  return counts_.at(static_cast<std::size_t>(call));
}

std::optional<FileFate> FileFaults::decide(FileCall call, const fs::path& place) {
  // What seems to be elsewhere may have come there by a link.
  std::error_code unknown;
  if (!isWithin(place, folder_) &&
      !isWithin(fs::weakly_canonical(place.parent_path(), unknown) / place.filename(), folder_))
    return std::nullopt;
  const FileFate fate = plan_(call, counts_.at(static_cast<std::size_t>(call))++);
  if (fate.kills) ::kill(::getpid(), SIGKILL);
  return fate;
}

extern "C" {

// The linker gives every reference to `open` the name `__wrap_open`, and the system's own function `__real_open`.

int __real_open(const char* path, int flags, ...);
int __wrap_open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeArgument(flags, arguments);
  va_end(arguments);
  return go(fateOf(FileCall::open, AT_FDCWD, path), [&] { return __real_open(path, flags, mode); });
}

int __real_openat(int folder, const char* name, int flags, ...);
int __wrap_openat(int folder, const char* name, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = modeArgument(flags, arguments);
  va_end(arguments);
  return go(fateOf(FileCall::open, folder, name), [&] { return __real_openat(folder, name, flags, mode); });
}

int __real_fcntl(int descriptor, int command, ...);
int __wrap_fcntl(int descriptor, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const long argument = va_arg(arguments, long);
  va_end(arguments);
  const bool duplicates = command == F_DUPFD || command == F_DUPFD_CLOEXEC;
  return go(duplicates ? fateOf(FileCall::duplicate, descriptor) : FileFate(),
            [&] { return __real_fcntl(descriptor, command, argument); });
}

int __real_flock(int descriptor, int operation);
int __wrap_flock(int descriptor, int operation) {
  return go(fateOf(FileCall::lock, descriptor), [&] { return __real_flock(descriptor, operation); });
}

int __real_stat(const char* path, struct stat* status);
int __wrap_stat(const char* path, struct stat* status) {
  return go(fateOf(FileCall::inspect, AT_FDCWD, path), [&] { return __real_stat(path, status); });
}

int __real_lstat(const char* path, struct stat* status);
int __wrap_lstat(const char* path, struct stat* status) {
  return go(fateOf(FileCall::inspect, AT_FDCWD, path), [&] { return __real_lstat(path, status); });
}

int __real_fstat(int descriptor, struct stat* status);
int __wrap_fstat(int descriptor, struct stat* status) {
  return go(fateOf(FileCall::inspect, descriptor), [&] { return __real_fstat(descriptor, status); });
}

int __real_faccessat(int folder, const char* name, int access, int flags);
int __wrap_faccessat(int folder, const char* name, int access, int flags) {
  return go(fateOf(FileCall::inspect, folder, name), [&] { return __real_faccessat(folder, name, access, flags); });
}

int __real_chmod(const char* path, mode_t mode);
int __wrap_chmod(const char* path, mode_t mode) {
  return go(fateOf(FileCall::setMode, AT_FDCWD, path), [&] { return __real_chmod(path, mode); });
}

int __real_fchmod(int descriptor, mode_t mode);
int __wrap_fchmod(int descriptor, mode_t mode) {
  return go(fateOf(FileCall::setMode, descriptor), [&] { return __real_fchmod(descriptor, mode); });
}

ssize_t __real_read(int descriptor, void* buffer, std::size_t size);
ssize_t __wrap_read(int descriptor, void* buffer, std::size_t size) {
  const FileFate fate = fateOf(FileCall::read, descriptor);
  return go(fate, [&] { return __real_read(descriptor, buffer, std::min(size, fate.most)); });
}

ssize_t __real_pread(int descriptor, void* buffer, std::size_t size, off_t offset);
ssize_t __wrap_pread(int descriptor, void* buffer, std::size_t size, off_t offset) {
  const FileFate fate = fateOf(FileCall::read, descriptor);
  return go(fate, [&] { return __real_pread(descriptor, buffer, std::min(size, fate.most), offset); });
}

ssize_t __real_write(int descriptor, const void* content, std::size_t size);
ssize_t __wrap_write(int descriptor, const void* content, std::size_t size) {
  const FileFate fate = fateOf(FileCall::write, descriptor);
  return go(fate, [&] { return __real_write(descriptor, content, std::min(size, fate.most)); });
}

int __real_fsync(int descriptor);
int __wrap_fsync(int descriptor) {
  const std::optional<FileFate> fate = knownFateOf(FileCall::sync, descriptor);
  return go(fate.value_or(FileFate()), [&] { return fate ? 0 : __real_fsync(descriptor); });
}

int __real_close(int descriptor);
int __wrap_close(int descriptor) {
  const FileFate fate = fateOf(FileCall::close, descriptor);
  const int result = __real_close(descriptor);
  return go(fate, [&] { return result; });
}

int __real_rename(const char* from, const char* to);
int __wrap_rename(const char* from, const char* to) {
  return go(fateOf(FileCall::rename, AT_FDCWD, to), [&] { return __real_rename(from, to); });
}

int __real_renameat(int fromFolder, const char* from, int toFolder, const char* to);
int __wrap_renameat(int fromFolder, const char* from, int toFolder, const char* to) {
  return go(fateOf(FileCall::rename, toFolder, to), [&] { return __real_renameat(fromFolder, from, toFolder, to); });
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  return go(fateOf(FileCall::remove, AT_FDCWD, path), [&] { return __real_unlink(path); });
}

int __real_unlinkat(int folder, const char* name, int flags);
int __wrap_unlinkat(int folder, const char* name, int flags) {
  return go(fateOf(FileCall::remove, folder, name), [&] { return __real_unlinkat(folder, name, flags); });
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
  return go(fateOf(FileCall::makeFolder, AT_FDCWD, path), [&] { return __real_mkdir(path, mode); });
}

}  // extern "C"

}  // namespace tq::test

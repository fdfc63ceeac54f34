#include "TQPlatform/FileSystem/FileState.hpp"

#include <fcntl.h>
#include <sys/stat.h>

namespace tq {

namespace {

using std::chrono::seconds;

Date dateOf(const struct statx_timestamp& time) {
  const std::chrono::sys_seconds whole{seconds(time.tv_sec)};
  if (whole < std::chrono::ceil<seconds>(Date::min())) return Date::min();
  if (whole >= std::chrono::floor<seconds>(Date::max())) return Date::max();
  return whole + std::chrono::nanoseconds(time.tv_nsec);
}

FileKind kindOf(unsigned mode) {
  if (S_ISREG(mode)) return FileKind::regular;
  return S_ISDIR(mode) ? FileKind::folder : FileKind::other;
}

std::optional<FileState> look(int folder, const char* name, int flags) {
  struct statx status {};
  if (::statx(folder, name, flags, STATX_TYPE | STATX_INO | STATX_MTIME | STATX_SIZE, &status) != 0)
    return std::nullopt;
  return FileState{.kind = kindOf(status.stx_mode),
                   .identity = {.device = std::uint64_t{status.stx_dev_major} << 32 | status.stx_dev_minor,
                                .number = status.stx_ino},
                   .modified = status.stx_mask & STATX_MTIME ? std::optional(dateOf(status.stx_mtime)) : std::nullopt,
                   .size = static_cast<std::int64_t>(status.stx_size)};
}

}  // namespace

std::optional<FileState> fileState(const std::filesystem::path& path) {
  return look(AT_FDCWD, path.c_str(), 0);
}

std::optional<FileState> fileStateIn(int folder, const char* name) {
  return look(folder, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_EMPTY_PATH);
}

}  // namespace tq

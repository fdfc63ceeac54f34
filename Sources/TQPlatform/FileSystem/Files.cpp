#include "TQPlatform/FileSystem/Files.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"
#include "TQPlatform/FileSystem/Uninterrupted.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// Fills `buffer` by calls of `readSome(rest, filled)` until the end of the file.
template <class ReadSome>
std::size_t fill(std::span<std::uint8_t> buffer, const fs::path& path, ReadSome readSome) {
  std::size_t filled = 0;
  while (filled < buffer.size()) {
    const ssize_t count = uninterrupted([&] { return readSome(buffer.subspan(filled), filled); });
    if (count < 0) throwErrno(path);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return filled;
}

struct stat statusOf(const fs::path& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) throwErrno(path);
  return status;
}

/// The mode that a write over `path` has to keep; absent when there is no file whose mode could be kept. Throws when
/// what is there must not be replaced.
std::optional<FileMode> modeToKeep(const fs::path& path) {
  struct stat status {};
  if (::lstat(path.c_str(), &status) != 0) {
    if (errno == ENOENT) return std::nullopt;
    throwErrno(path);
  }
  if (S_ISLNK(status.st_mode)) return std::nullopt;
  if (S_ISDIR(status.st_mode)) throw SystemError(EISDIR, path);
  if (!S_ISREG(status.st_mode)) throw SystemError(EINVAL, path);
  // The superuser passes every access check, but a file without any write bit is locked for that user as well.
  if ((status.st_mode & 0222) == 0) throw SystemError(EACCES, path);
  if (::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0) throwErrno(path);
  return status.st_mode & 0777;
}

Descriptor openFolderOf(const fs::path& path) {
  const fs::path parent = path.has_parent_path() ? path.parent_path() : fs::path(".");
  Descriptor folder(uninterrupted([&] { return ::open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!folder) throwErrno(path);
  return folder;
}

/// Makes sure of the new name of `path` in its open folder.
void syncFolderOf(const fs::path& path, const Descriptor& folder) {
  // Some network and user-space file systems know no fsync of a folder.
  if (uninterrupted([&] { return ::fsync(folder.get()); }) != 0 && errno != EINVAL && errno != ENOTSUP)
    throwErrno(path);
}

}  // namespace

bool fileExists(const fs::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0;
}

bool isExecutableFile(const fs::path& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
         ::faccessat(AT_FDCWD, path.c_str(), X_OK, AT_EACCESS) == 0;
}

std::int64_t fileSize(const fs::path& path) {
  return statusOf(path).st_size;
}

FileReader::FileReader(fs::path path) : path_(std::move(path)) {
  // Without O_NONBLOCK, opening a named pipe would wait for its writer.
  descriptor_ = Descriptor(uninterrupted([&] { return ::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK); }));
  struct stat status {};
  if (!descriptor_ || ::fstat(descriptor_.get(), &status) != 0) throwErrno(path_);
  if (S_ISDIR(status.st_mode)) throw SystemError(EISDIR, path_);
  if (!S_ISREG(status.st_mode)) throw SystemError(EINVAL, path_);
  size_ = status.st_size;
}

std::size_t FileReader::read(std::span<std::uint8_t> buffer) {
  return fill(buffer, path_, [&](std::span<std::uint8_t> rest, std::size_t) {
    return ::read(descriptor_.get(), rest.data(), rest.size());
  });
}

std::size_t FileReader::readAt(std::int64_t offset, std::span<std::uint8_t> buffer) const {
  return fill(buffer, path_, [&](std::span<std::uint8_t> rest, std::size_t filled) {
    return ::pread(descriptor_.get(), rest.data(), rest.size(), offset + static_cast<std::int64_t>(filled));
  });
}

std::int64_t FileReader::sizeNow() const {
  struct stat status {};
  if (::fstat(descriptor_.get(), &status) != 0) throwErrno(path_);
  return status.st_size;
}

ByteView FileReader::readWhole(Bytes& buffer) const {
  constexpr std::size_t step = std::size_t{64} * 1024;
  const auto expected = static_cast<std::size_t>(size_);
  // One byte more than the file had, so that its end is seen without another round.
  if (buffer.size() <= expected) buffer.resize(expected + 1);
  for (std::size_t length = 0;;) {
    if (length == buffer.size()) buffer.resize(length + std::max(step, length / 2));
    const auto rest = std::span(buffer).subspan(length);
    const auto offset = static_cast<off_t>(length);
    const ssize_t count = uninterrupted([&] { return ::pread(descriptor_.get(), rest.data(), rest.size(), offset); });
    if (count < 0) throwErrno(path_);
    length += static_cast<std::size_t>(count);
    // A read that stops short where the file ended has seen its end; another one would only say so again.
    if (count == 0 || (length == expected && length < buffer.size())) return std::span(buffer).first(length);
  }
}

Bytes readFile(const fs::path& path) {
  Bytes content;
  content.resize(FileReader(path).readWhole(content).size());
  return content;
}

void createFolders(const fs::path& path, FileMode mode) {
  if (path.empty() || ::mkdir(path.c_str(), mode) == 0) return;
  if (errno == ENOENT && path.has_relative_path()) {
    createFolders(path.parent_path(), mode);
    if (::mkdir(path.c_str(), mode) == 0) return;
  }
  int cause = errno;
  struct stat status {};
  const bool isSeen = ::stat(path.c_str(), &status) == 0;
  if (isSeen && S_ISDIR(status.st_mode)) return;
  if (!isSeen && cause == EEXIST && errno != ENOENT) cause = errno;
  throw SystemError(cause, path);
}

void setFileMode(const fs::path& path, FileMode mode) {
  if (::chmod(path.c_str(), mode) != 0) throwErrno(path);
}

void writeFileAtomically(const fs::path& path, ByteView content, std::optional<FileMode> mode,
                         ModeFailure onModeFailure) {
  streamFileAtomically(
      path, [&](const FileSink& sink) { sink(content); }, mode, onModeFailure);
}

void streamFileAtomically(const fs::path& path, const std::function<void(const FileSink&)>& produce,
                          std::optional<FileMode> mode, ModeFailure onModeFailure) {
  const std::optional<FileMode> kept = modeToKeep(path);
  const Descriptor folder = openFolderOf(path);
  TemporaryFile temporary(folder.get(), path, mode ? mode : kept, mode ? onModeFailure : ModeFailure::isIgnored);
  produce([&](ByteView bytes) { temporary.write(bytes); });
  temporary.putInPlace();
  syncFolderOf(path, folder);
}

void replaceFile(const fs::path& finished, const fs::path& target) {
  const std::optional<FileMode> kept = modeToKeep(target);
  const Descriptor folder = openFolderOf(target);
  const Descriptor file(uninterrupted([&] { return ::open(finished.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC); }));
  if (!file) throwErrno(target);
  if (kept) ::fchmod(file.get(), *kept);  // as far as the file system can
  if (uninterrupted([&] { return ::fsync(file.get()); }) != 0) throwErrno(target);
  if (::rename(finished.c_str(), target.c_str()) != 0) throwErrno(target);
  syncFolderOf(target, folder);
}

}  // namespace tq

#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq {

/// POSIX permission bits, as in `chmod`: 0600.
using FileMode = unsigned;

/// What it means when a new file cannot be given the mode that is asked for, as on a file system that knows no modes.
enum class ModeFailure {
  isAnError,
  isIgnored,  ///< the file has what it was created with: `mode` less the umask, or what the file system gives to all
};

/// True when something exists at `path`; a link counts as what it points to. Any failed look counts as "no".
bool fileExists(const std::filesystem::path& path);

/// True when `path` is a regular file that the current user may execute.
bool isExecutableFile(const std::filesystem::path& path);

/// Size in bytes. Throws `SystemError` when the file cannot be looked at.
std::int64_t fileSize(const std::filesystem::path& path);

/// A regular file opened for reading from its start, in pieces. Closed by the destructor.
class FileReader {
 public:
  /// Throws `SystemError` when the file cannot be opened. A folder is refused (EISDIR), and so is everything else that
  /// is no regular file (EINVAL): a named pipe would block whoever reads it.
  explicit FileReader(std::filesystem::path path);

  /// Fills `buffer` as far as the file reaches and tells how many bytes it got; 0 only at the end of the file.
  /// Throws `SystemError` on a failed read.
  std::size_t read(std::span<std::uint8_t> buffer);

  /// The same from `offset` bytes on, wherever `read` stands.
  std::size_t readAt(std::int64_t offset, std::span<std::uint8_t> buffer) const;

  /// Reads the whole content into `buffer`, which grows where it must and never shrinks, and gives the part of it that
  /// was filled. Throws `SystemError` on a failed read.
  ByteView readWhole(Bytes& buffer) const;

  /// In bytes, when it was opened; the kernel's own files tell 0.
  std::int64_t size() const { return size_; }

  /// In bytes, at this moment. Throws `SystemError`.
  std::int64_t sizeNow() const;

 private:
  std::filesystem::path path_;
  std::int64_t size_ = 0;
  Descriptor descriptor_;
};

/// The whole content. Throws `SystemError` when it cannot be read; anything but a regular file is such a case.
Bytes readFile(const std::filesystem::path& path);

/// Creates the folder and all missing parents; those it creates get `mode` less the umask. An existing folder is fine,
/// and so is the empty path, which is the current folder. Throws `SystemError`, also when a file is in the way.
void createFolders(const std::filesystem::path& path, FileMode mode = 0777);

/// Throws `SystemError`.
void setFileMode(const std::filesystem::path& path, FileMode mode);

/// Replaces the content of `path` in one step: a reader sees the old file or the new one, and so does the next start
/// after a power cut. The bytes go to a `TemporaryFile` in the same folder, created with its final mode before its
/// first byte; all writes are checked, then fsync, rename, fsync of the folder. On any failure before the rename the
/// temporary file is removed, the old file is untouched and a `SystemError` naming `path` is thrown. When only the last
/// step fails, the new content is in place but may not survive a power cut; that is thrown too.
///
/// A new file gets `mode`, or 0666 less the umask. One that exists gets `mode`, or keeps its own as far as the file
/// system can. A file that has no write permission is not replaced (EACCES), although rename could: its owner locked
/// it. A symbolic link is replaced by the new file and never followed, so a link planted in a folder cannot lead a
/// write elsewhere.
void writeFileAtomically(const std::filesystem::path& path, ByteView content,
                         std::optional<FileMode> mode = std::nullopt,
                         ModeFailure onModeFailure = ModeFailure::isAnError);

/// Gives a finished file of the same file system the name `target`, in one step and in place of a file that has it,
/// once its content is safe on the disk. What must not be replaced, what is kept of it, what becomes of a symbolic link
/// and what a failure of the last step means: as for `writeFileAtomically`. Throws a `SystemError` that names `target`;
/// both files have their names and contents then.
void replaceFile(const std::filesystem::path& finished, const std::filesystem::path& target);

/// Takes the next bytes of a file. Throws `SystemError`.
using FileSink = std::function<void(ByteView bytes)>;

/// `writeFileAtomically` for content that is never whole in memory: `produce` hands it over piece by piece. What
/// `produce` throws leaves the old file untouched as well.
void streamFileAtomically(const std::filesystem::path& path, const std::function<void(const FileSink& sink)>& produce,
                          std::optional<FileMode> mode = std::nullopt,
                          ModeFailure onModeFailure = ModeFailure::isAnError);

}  // namespace tq

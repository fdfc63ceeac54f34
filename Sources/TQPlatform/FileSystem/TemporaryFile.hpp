#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TQPlatform/FileSystem/Files.hpp"

namespace tq {

/// A file on its way to its name, as `writeFileAtomically` needs it: named ".tarquel-<process>-<random>.tmp" in an open
/// folder, and locked (flock) until it has its name or is removed, so that what a dead run left behind can be told from
/// what is being written. Every operation throws a `SystemError` that names the target, and the file is gone then.
class TemporaryFile {
 public:
  /// `target` is a file of the open `folder`, which outlives this. The new file has `mode` before its first byte, or
  /// without one 0666 less the umask.
  TemporaryFile(int folder, std::filesystem::path target, std::optional<FileMode> mode, ModeFailure onModeFailure);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  void write(ByteView content);

  /// Makes sure that the content is on the disk, and gives the file the target's name.
  void putInPlace();

 private:
  void create(FileMode mode);
  bool lock();
  void ensureMode(FileMode mode, ModeFailure onModeFailure);
  [[noreturn]] void fail();
  void remove() noexcept;

  int folder_;
  std::filesystem::path target_;
  std::string name_;  ///< empty when there is nothing to remove
  Descriptor descriptor_;
  Descriptor lock_;  ///< the same open file: the lock stays when `descriptor_` is closed
};

/// Removes the temporary files of dead runs from `folder`: files of exactly such a name that belong to this user and
/// that nobody holds a lock on. The number in the name decides nothing, since systems use it again. Links, folders and
/// all other files stay; so does what cannot be opened, locked or removed, and a folder that cannot be listed is left
/// alone. Safe beside any number of writers and other clean-ups on this machine. Where a network file system keeps its
/// locks from the server, a write that another machine does at this very moment may fail, with its old file whole.
void removeAbandonedTemporaries(const std::filesystem::path& folder) noexcept;

}  // namespace tq

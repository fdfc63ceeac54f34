#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

enum class FileKind { regular, folder, other };

/// Which file it is, whatever it is called: two paths lead to the same file or folder when these are equal.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t number = 0;

  bool operator==(const FileIdentity&) const = default;
};

/// What one look at a file tells.
struct FileState {
  FileKind kind = FileKind::other;
  FileIdentity identity;
  std::optional<Date>
      modified;           ///< when its content last changed; a date out of the range of `Date` is its nearest end
  std::int64_t size = 0;  ///< bytes
};

/// Looks at `path`, through links. Absent when there is nothing or it may not be looked at.
std::optional<FileState> fileState(const std::filesystem::path& path);

/// Looks at the entry `name` of an open folder, where a link is `other`, or at the folder itself for "". For the rooms
/// of TQPlatform, which alone speak POSIX.
std::optional<FileState> fileStateIn(int folder, const char* name);

}  // namespace tq

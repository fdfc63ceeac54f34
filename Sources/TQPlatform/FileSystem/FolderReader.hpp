#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

#include "TQPlatform/FileSystem/FileState.hpp"

namespace tq {

/// Tells what lies directly in a folder, entry by entry. Only what is asked for is looked at: mostly the listing itself
/// says of what kind an entry is, and a look at the file costs far more than its name.
class FolderReader {
 public:
  struct Entry {
    std::string_view name;         ///< of any bytes but '/' and zero; until the next entry is read
    std::optional<FileKind> kind;  ///< a link is `other`; absent where the file system's listing does not tell
  };

  /// Throws `SystemError` when `folder` is none or may not be read. It may be a link to one.
  explicit FolderReader(const std::filesystem::path& folder);
  ~FolderReader();
  FolderReader(const FolderReader&) = delete;
  FolderReader& operator=(const FolderReader&) = delete;

  /// The folder that was opened, whatever lies at its path by now. Throws `SystemError`.
  FileIdentity identity() const;

  /// The next entry but for "." and "..", in no order; absent at the end. Throws `SystemError` when the listing breaks
  /// off.
  std::optional<Entry> next();

  /// Looks at the entry that `next` gave last, not through links. Absent when it is gone or may not be looked at.
  std::optional<FileState> look() const;

 private:
  struct Stream;

  const std::filesystem::path folder_;
  std::unique_ptr<Stream> stream_;
};

}  // namespace tq

#include "TQPlatform/FileSystem/FolderReader.hpp"

#include <cerrno>
#include <dirent.h>

#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace {

std::optional<FileKind> kindOf(unsigned char type) {
  switch (type) {
    case DT_UNKNOWN: return std::nullopt;
    case DT_REG: return FileKind::regular;
    case DT_DIR: return FileKind::folder;
    default: return FileKind::other;
  }
}

}  // namespace

struct FolderReader::Stream {
  DIR* folder = nullptr;
  dirent* entry = nullptr;  // the system's, until the next one is read

  ~Stream() {
    if (folder) ::closedir(folder);
  }
};

FolderReader::FolderReader(const std::filesystem::path& folder) : folder_(folder), stream_(std::make_unique<Stream>()) {
  stream_->folder = ::opendir(folder.c_str());
  if (!stream_->folder) throwErrno(folder_);
}

FolderReader::~FolderReader() = default;

FileIdentity FolderReader::identity() const {
  const auto state = fileStateIn(::dirfd(stream_->folder), "");
  if (!state) throwErrno(folder_);
  return state->identity;
}

std::optional<FolderReader::Entry> FolderReader::next() {
  for (;;) {
    errno = 0;
    stream_->entry = ::readdir(stream_->folder);
    if (!stream_->entry) break;
    const std::string_view name = stream_->entry->d_name;
    if (name != "." && name != "..") return Entry{.name = name, .kind = kindOf(stream_->entry->d_type)};
  }
  if (errno != 0) throwErrno(folder_);
  return std::nullopt;
}

std::optional<FileState> FolderReader::look() const {
  return fileStateIn(::dirfd(stream_->folder), stream_->entry->d_name);
}

}  // namespace tq

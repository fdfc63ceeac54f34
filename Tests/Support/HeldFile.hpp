#pragma once

#include <filesystem>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// An empty file that is held by a lease (fcntl(2), F_SETLEASE): whoever opens it waits until it is released, for at
/// most the 45 seconds of /proc/sys/fs/lease-break-time. Who opens it with O_NONBLOCK is refused instead.
class HeldFile {
 public:
  /// Creates the file. Throws where the file system knows no leases.
  explicit HeldFile(const std::filesystem::path& file);

  void release() { descriptor_.reset(); }

 private:
  Descriptor descriptor_;
};

}  // namespace tq::test

#pragma once

#include <filesystem>

#include "TQPlatform/FileSystem/Descriptor.hpp"

namespace tq::test {

/// Tells whether anybody, in this process or another one, has opened a file since this was made.
class FileOpenings {
 public:
  explicit FileOpenings(const std::filesystem::path& file);

  bool any() const;

 private:
  Descriptor events_;
};

}  // namespace tq::test

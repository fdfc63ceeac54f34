#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "TQPlatform/Bytes.hpp"

namespace tq::test {

/// A new, empty folder for one test, removed with all its content at the end.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(std::string_view name) const { return path_ / name; }

  /// Writes a file below the folder, with its parent folders.
  std::filesystem::path write(std::string_view name, std::string_view content) const;

 private:
  std::filesystem::path path_;
};

/// Names of the entries directly in `folder`, sorted.
std::vector<std::string> namesIn(const std::filesystem::path& folder);

/// The file's content; a missing file fails the test.
std::string contentOf(const std::filesystem::path& file);

}  // namespace tq::test

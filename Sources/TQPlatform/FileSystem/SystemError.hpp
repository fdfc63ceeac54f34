#pragma once

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

namespace tq {

/// A failed system call, with the words a user reads: `what()` is "<subject>: <reason>", where the subject is mostly a
/// file's name and the reason the system's own text, such as "Permission denied".
class SystemError final : public std::system_error {
 public:
  SystemError(int errnoValue, const std::string& subject)
      : std::system_error(errnoValue, std::generic_category(), subject) {}
  SystemError(int errnoValue, const std::filesystem::path& file)
      : SystemError(errnoValue, file.filename().empty() ? file.string() : file.filename().string()) {}

  /// The system's text alone, for messages that already name the file.
  std::string reason() const { return code().message(); }

  /// True when there is nothing of that name.
  bool meansMissing() const {
    return code() == std::errc::no_such_file_or_directory || code() == std::errc::not_a_directory;
  }
};

/// Throws the `SystemError` of the current `errno`.
[[noreturn]] inline void throwErrno(const std::filesystem::path& file) {
  throw SystemError(errno, file);
}

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <limits>
#include <optional>
#include <string_view>

namespace tq::test {

/// The kinds of system calls through which the program reaches its files.
enum class FileCall { open, lock, duplicate, inspect, setMode, read, write, sync, close, rename, remove, makeFolder };

inline constexpr std::array fileCalls{FileCall::open,    FileCall::lock,   FileCall::duplicate, FileCall::inspect,
                                      FileCall::setMode, FileCall::read,   FileCall::write,     FileCall::sync,
                                      FileCall::close,   FileCall::rename, FileCall::remove,    FileCall::makeFolder};

/// "write", for messages.
std::string_view nameOf(FileCall call);

/// What becomes of one call. As it stands the call takes place.
struct FileFate {
  /// The call fails with this `errno` and has no effect; 0 for none. A failed close gives the descriptor back all the
  /// same, as Linux does.
  int error = 0;
  bool isPretended = false;  ///< the call does nothing and reports success, where it does not fail
  std::size_t most = std::numeric_limits<std::size_t>::max();  ///< how many bytes a read or a write moves at most
  bool kills = false;                                          ///< instead of the call, the process ends by SIGKILL
};

/// Comes between the program and the system: while one stands, every call on something in a folder, or on the folder
/// itself, is counted and goes as planned; all others are the system's. One at a time; for all threads of the process.
/// A sync that passes is left out, as no test can see it and all would wait for it.
///
/// A test program gets this by linking `tq_file_faults`, which leads the calls of the project's own libraries here
/// (the linker's --wrap). Those that shared libraries make, the C++ library's std::filesystem among them, pass unseen.
class FileFaults {
 public:
  /// Gives the fate of a call by its kind and by how many of that kind went before. Asked for one call at a time,
  /// before it; calls of its own pass unseen. Must not throw.
  using Plan = std::function<FileFate(FileCall call, int index)>;

  /// `folder` must exist.
  FileFaults(const std::filesystem::path& folder, Plan plan);

  /// Counts the calls and lets all of them pass.
  explicit FileFaults(const std::filesystem::path& folder);

  ~FileFaults();
  FileFaults(const FileFaults&) = delete;
  FileFaults& operator=(const FileFaults&) = delete;

  /// How many calls of that kind there were, failed ones included.
  int count(FileCall call) const;

  /// For the functions that stand in for the system's; absent for a place elsewhere.
  std::optional<FileFate> decide(FileCall call, const std::filesystem::path& place);

 private:
  std::filesystem::path folder_;
  Plan plan_;
  std::array<int, fileCalls.size()> counts_{};
};

}  // namespace tq::test

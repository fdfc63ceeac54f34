#include "Support/FileOpenings.hpp"

#include <array>
#include <sys/inotify.h>
#include <unistd.h>

#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq::test {

FileOpenings::FileOpenings(const std::filesystem::path& file) : events_(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
  if (!events_ || ::inotify_add_watch(events_.get(), file.c_str(), IN_OPEN) < 0) throwErrno(file);
}

bool FileOpenings::any() const {
  alignas(inotify_event) std::array<char, 4096> buffer;
  return ::read(events_.get(), buffer.data(), buffer.size()) > 0;
}

}  // namespace tq::test

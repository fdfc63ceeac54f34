#include "Support/NoFolderEvents.hpp"

#include <atomic>
#include <cerrno>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> refused = false;

}  // namespace

/// Stands before the system library's own in every program that is linked with this file.
extern "C" int inotify_init1(int flags) noexcept {
  if (!refused) return static_cast<int>(::syscall(SYS_inotify_init1, flags));
  errno = EMFILE;
  return -1;
}

namespace tq::test {

NoFolderEvents::NoFolderEvents() {
  refused = true;
}

NoFolderEvents::~NoFolderEvents() {
  refused = false;
}

}  // namespace tq::test

#include "Support/FolderEventFaults.hpp"

#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <stdexcept>
#include <string>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

std::atomic<bool> refusesAll = false;
std::atomic<bool> refusesFolders = false;

/// The two ends of what stands in for the system's queue of events; -1 when nothing does.
std::atomic<int> reading = -1;
std::atomic<int> writing = -1;

std::mutex mutex;
std::map<std::string, int> watches;  // guarded by mutex

void tell(int watch, std::uint32_t mask) {
  const inotify_event event{.wd = watch, .mask = mask, .cookie = 0, .len = 0};
  if (::write(writing, &event, sizeof event) != sizeof event) throw std::runtime_error("event not written");
}

}  // namespace

// These stand before the system library's own.

extern "C" int inotify_init1(int flags) noexcept {
  if (refusesAll) {
    errno = EMFILE;
    return -1;
  }
  if (reading >= 0) return ::dup(reading);
  return static_cast<int>(::syscall(SYS_inotify_init1, flags));
}

extern "C" int inotify_add_watch(int descriptor, const char* path, std::uint32_t mask) noexcept {
  if (refusesFolders) {
    errno = ENOSPC;
    return -1;
  }
  if (reading < 0) return static_cast<int>(::syscall(SYS_inotify_add_watch, descriptor, path, mask));
  const std::lock_guard lock(mutex);
  return watches.try_emplace(path, static_cast<int>(watches.size()) + 1).first->second;
}

extern "C" int inotify_rm_watch(int descriptor, int watch) noexcept {
  return reading < 0 ? static_cast<int>(::syscall(SYS_inotify_rm_watch, descriptor, watch)) : 0;
}

namespace tq::test {

NoFolderEvents::NoFolderEvents() {
  refusesAll = true;
}

NoFolderEvents::~NoFolderEvents() {
  refusesAll = false;
}

NoMoreFolderWatches::NoMoreFolderWatches() {
  refusesFolders = true;
}

NoMoreFolderWatches::~NoMoreFolderWatches() {
  refusesFolders = false;
}

ScriptedFolderEvents::ScriptedFolderEvents() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) throw std::runtime_error("no pipe");
  writing = ends[1];
  reading = ends[0];
}

ScriptedFolderEvents::~ScriptedFolderEvents() {
  ::close(reading.exchange(-1));
  ::close(writing.exchange(-1));
  const std::lock_guard lock(mutex);
  watches.clear();
}

void ScriptedFolderEvents::overflow() {
  tell(-1, IN_Q_OVERFLOW);
}

void ScriptedFolderEvents::unmount(const std::filesystem::path& folder) {
  int watch = 0;
  {
    const std::lock_guard lock(mutex);
    const auto found = watches.extract(folder.native());
    if (found.empty()) throw std::runtime_error("not watched");
    watch = found.mapped();
    watches.emplace("(unmounted " + std::to_string(watch) + ")", watch);  // a number is never given twice
  }
  tell(watch, IN_UNMOUNT);
  tell(watch, IN_IGNORED);
}

}  // namespace tq::test

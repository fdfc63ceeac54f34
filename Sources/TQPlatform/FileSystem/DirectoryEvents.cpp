#include "TQPlatform/FileSystem/DirectoryEvents.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <poll.h>
#include <string>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace {

constexpr std::uint32_t watchedEvents = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO | IN_CLOSE_WRITE |
                                        IN_ATTRIB | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

/// `descriptor` where a system call gave one.
Descriptor opened(int descriptor) {
  if (descriptor < 0) throw SystemError(errno, std::string("Folder events"));
  return Descriptor(descriptor);
}

/// Blocks until events are there to be read, or a stop request has made `wakeUp` readable.
void waitForEvents(int events, int wakeUp) {
  std::array<pollfd, 2> waits{{{events, POLLIN, 0}, {wakeUp, POLLIN, 0}}};
  while (::poll(waits.data(), waits.size(), -1) < 0)
    if (errno != EINTR) throw SystemError(errno, std::string("Folder events"));
}

/// Takes back the wake-up of an earlier stop request.
void drain(int wakeUp) {
  std::uint64_t count = 0;
  [[maybe_unused]] const auto taken = ::read(wakeUp, &count, sizeof count);
}

}  // namespace

DirectoryEvents::DirectoryEvents()
    : events_(opened(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK))),
      wakeUp_(opened(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))) {}

bool DirectoryEvents::watch(const std::filesystem::path& folder) {
  std::lock_guard lock(mutex_);
  const WatchNumber number = ::inotify_add_watch(events_.get(), folder.c_str(), watchedEvents);
  const auto known = watches_.find(folder);
  if (known != watches_.end() && known->second != number) forget(folder);
  if (number < 0) return false;
  watches_[folder] = number;
  return true;
}

void DirectoryEvents::forget(const std::filesystem::path& folder) {
  const WatchNumber number = watches_.at(folder);
  watches_.erase(folder);
  const bool shared =
      std::any_of(watches_.begin(), watches_.end(), [&](auto& watch) { return watch.second == number; });
  // Where the folder was removed its watch has gone with it, and this fails harmlessly.
  if (!shared) ::inotify_rm_watch(events_.get(), number);
}

DirectoryChanges DirectoryEvents::wait(std::stop_token stop) {
  drain(wakeUp_.get());
  const std::stop_callback wake(stop, [this] {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp_.get(), &one, sizeof one);
  });
  alignas(inotify_event) std::array<std::byte, 16384> buffer;
  DirectoryChanges changes;
  while (changes == DirectoryChanges{}) {
    waitForEvents(events_.get(), wakeUp_.get());
    throwIfStopped(stop);
    const auto length = ::read(events_.get(), buffer.data(), buffer.size());
    if (length > 0) take(std::span(buffer).first(static_cast<std::size_t>(length)), changes);
  }
  return changes;
}

void DirectoryEvents::take(std::span<const std::byte> events, DirectoryChanges& changes) {
  std::lock_guard lock(mutex_);
  while (events.size() >= sizeof(inotify_event)) {
    inotify_event event;
    std::memcpy(&event, events.data(), sizeof event);
    events = events.subspan(sizeof event + event.len);
    if (event.mask & IN_Q_OVERFLOW) changes.overflowed = true;
    for (auto watch = watches_.begin(); watch != watches_.end();) {
      const auto current = watch++;
      if (current->second != event.wd) continue;
      changes.folders.insert(current->first);
      if (event.mask & IN_IGNORED) watches_.erase(current);
    }
  }
}

}  // namespace tq

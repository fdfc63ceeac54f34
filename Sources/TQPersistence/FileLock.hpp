#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <string>

namespace tq {

/// One lock for each file path, so that two read-modify-write cycles on one file never interleave in this program.
/// There is one registry for a program: whoever guards files is given it, since locks of two registries know nothing of
/// each other. Other programs are not kept away. May be used by several threads at once.
class FileLockRegistry {
 public:
  /// The lock of that file, the same for all spellings of its path. It lives as long as the registry, which grows by
  /// one entry for each file.
  std::mutex& queue(const std::filesystem::path& fileURL);

 private:
  std::mutex lock_;  ///< guards the table, and is never held while a lock of it is waited for
  std::map<std::string, std::mutex, std::less<>> queues_;
};

namespace FileLock {

/// Runs `body` when no other body of the same file runs, blocking the calling thread until then; gives its result and
/// passes on its failure. A body must not call this for the same file again: it would wait for itself.
template <class Body>
decltype(auto) sync(FileLockRegistry& registry, const std::filesystem::path& fileURL, Body&& body) {
  const std::lock_guard guard(registry.queue(fileURL));
  return std::forward<Body>(body)();
}

}  // namespace FileLock

}  // namespace tq

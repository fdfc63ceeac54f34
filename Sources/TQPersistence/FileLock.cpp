#include "TQPersistence/FileLock.hpp"

namespace tq {

std::mutex& FileLockRegistry::queue(const std::filesystem::path& fileURL) {
  const std::string key = std::filesystem::absolute(fileURL).lexically_normal().string();
  const std::lock_guard guard(lock_);
  return queues_[key];
}

}  // namespace tq

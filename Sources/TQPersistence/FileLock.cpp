#include "TQPersistence/FileLock.hpp"

namespace tq {

std::mutex& FileLockRegistry::queue(const std::filesystem::path& fileURL) {
  std::filesystem::path normal = std::filesystem::absolute(fileURL).lexically_normal();
  if (!normal.has_filename()) normal = normal.parent_path();
  const std::string key = normal.string();
  const std::lock_guard guard(lock_);
  return queues_[key];
}

}  // namespace tq

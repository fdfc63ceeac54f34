#include "TQPipeline/JobUpdates.hpp"

#include <utility>

namespace tq {

bool JobUpdates::put(const Job& job) {
  std::lock_guard lock(mutex_);
  const bool wakes = unread_.empty();
  const auto [latest, isFirst] = latest_.try_emplace(job.id, last_ + 1);
  if (!isFirst) {
    Job& waiting = unread_.at(latest->second);
    if (waiting.status == job.status) {
      waiting = job;
      return false;
    }
  }
  latest->second = ++last_;
  unread_.emplace_hint(unread_.end(), last_, job);
  return wakes;
}

std::vector<Job> JobUpdates::take(std::size_t most) {
  std::lock_guard lock(mutex_);
  std::vector<Job> taken;
  while (taken.size() < most && !unread_.empty()) {
    auto oldest = unread_.extract(unread_.begin());
    const auto latest = latest_.find(oldest.mapped().id);
    if (latest->second == oldest.key()) latest_.erase(latest);
    taken.push_back(std::move(oldest.mapped()));
  }
  return taken;
}

bool JobUpdates::empty() const {
  std::lock_guard lock(mutex_);
  return unread_.empty();
}

}  // namespace tq

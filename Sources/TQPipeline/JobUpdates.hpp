#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "TQCore/Models/Job.hpp"

namespace tq {

/// News of jobs on their way from the engine to a reader that may lag behind. An update that only carries a job further
/// within the status of its last unread one takes that one's place; so a burst of progress costs the reader one update
/// for each job. A change of status is never dropped, and the updates of one job keep their order.
class JobUpdates {
 public:
  /// From any thread. True when nothing was unread before: then the reader is to be woken.
  bool put(const Job& job);

  /// The updates that are unread longest, at most `most` of them. Those left over wake nobody: the reader comes back.
  std::vector<Job> take(std::size_t most);

  bool empty() const;

 private:
  using Ticket = std::uint64_t;

  mutable std::mutex mutex_;
  std::map<Ticket, Job> unread_;
  std::unordered_map<UUID, Ticket> latest_;  ///< of each job with unread updates, the newest one
  Ticket last_ = 0;
};

}  // namespace tq

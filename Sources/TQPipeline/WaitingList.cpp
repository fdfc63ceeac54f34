#include "TQPipeline/WaitingList.hpp"

#include <utility>

namespace tq {

void WaitingList::append(Job job) {
  tickets_.emplace(job.id, ++last_);
  jobs_.emplace_hint(jobs_.end(), last_, std::move(job));
}

void WaitingList::removeFront() {
  const auto front = jobs_.begin();
  const auto [first, last] = tickets_.equal_range(front->second.id);
  for (auto ticket = first; ticket != last; ++ticket) {
    if (ticket->second != front->first) continue;
    tickets_.erase(ticket);
    break;
  }
  jobs_.erase(front);
}

void WaitingList::remove(const UUID& id) {
  const auto [first, last] = tickets_.equal_range(id);
  for (auto ticket = first; ticket != last; ++ticket)
    jobs_.erase(ticket->second);
  tickets_.erase(first, last);
}

}  // namespace tq

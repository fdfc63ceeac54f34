#include "TQPipeline/FrameBudget.hpp"

#include <iterator>

namespace tq {

namespace {

std::size_t frameBytes(const Job& job) {
  std::size_t bytes = 0;
  if (job.frames)
    for (const ExtractedFrame& frame : *job.frames)
      bytes += frame.jpegData.size();
  return bytes;
}

}  // namespace

void FrameBudget::note(const Job& job) {
  forget(job.id);
  if (!isTerminal(job.status)) return;
  const std::size_t bytes = frameBytes(job);
  if (bytes == 0) return;
  index_[job.id] = kept_.insert(kept_.end(), {job.id, bytes});
  bytes_ += bytes;
}

void FrameBudget::forget(const UUID& id) {
  const auto known = index_.find(id);
  if (known == index_.end()) return;
  bytes_ -= known->second->bytes;
  kept_.erase(known->second);
  index_.erase(known);
}

std::vector<UUID> FrameBudget::takeExcess(const std::optional<UUID>& selected) {
  std::vector<UUID> excess;
  for (auto oldest = kept_.begin(); bytes_ > limit_ && oldest != kept_.end();) {
    const UUID id = (oldest++)->id;
    if (id == selected) continue;
    forget(id);
    excess.push_back(id);
  }
  return excess;
}

}  // namespace tq

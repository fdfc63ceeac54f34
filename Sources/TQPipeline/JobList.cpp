#include "TQPipeline/JobList.hpp"

#include <algorithm>
#include <iterator>
#include <utility>

namespace tq {

std::optional<std::size_t> JobList::rowOf(const UUID& id) const {
  if (std::exchange(indexIsStale_, false)) {
    index_.clear();
    for (std::size_t row = 0; row < rows_.size(); ++row)
      index_.emplace(rows_[row]->id, row);
  }
  const auto known = index_.find(id);
  return known == index_.end() ? std::nullopt : std::optional(known->second);
}

void JobList::append(std::vector<Row> rows) {
  if (rows.empty()) return;
  observer_.rowsWillBeAppended(rows.size());
  for (Row& row : rows) {
    if (!indexIsStale_) index_.emplace(row->id, rows_.size());
    count(*row);
    rows_.push_back(std::move(row));
  }
  observer_.rowsWereAppended();
}

void JobList::replace(std::size_t row, Job job) {
  const Row before = std::exchange(rows_[row], std::make_shared<const Job>(std::move(job)));
  discount(*before);
  count(*rows_[row]);
  observer_.rowWasReplaced(row, *before, *rows_[row]);
}

/// From the back, so that what has been removed never counts for the rows still to be looked at.
void JobList::removeAll(JobStatus status) {
  const auto goes = [status](const Row& job) { return job->status == status; };
  if (std::ranges::none_of(rows_, goes)) return;
  observer_.rowsWillBeRemoved(status);
  for (const Row& job : rows_)
    if (goes(job)) discount(*job);
  std::erase_if(rows_, goes);
  indexIsStale_ = true;
  observer_.rowsWereRemoved();
}

void JobList::count(const Job& job) {
  if (isTerminal(job.status)) return;
  ++activeCount_;
  ++activeClips_[job.sourceURL.native()];
}

void JobList::discount(const Job& job) {
  if (isTerminal(job.status)) return;
  --activeCount_;
  const auto clip = activeClips_.find(job.sourceURL.native());
  if (--clip->second == 0) activeClips_.erase(clip);
}

}  // namespace tq

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

std::vector<JobList::Row> JobList::removeAll(JobStatus status) {
  const auto stays = [status](const Row& job) { return job->status != status; };
  if (std::ranges::all_of(rows_, stays)) return {};
  observer_.rowsWillBeRemoved(status);
  const auto gone = std::ranges::stable_partition(rows_, stays);
  std::vector<Row> removed(std::make_move_iterator(gone.begin()), std::make_move_iterator(gone.end()));
  rows_.erase(gone.begin(), gone.end());
  for (const Row& job : removed)
    discount(*job);
  indexIsStale_ = true;
  observer_.rowsWereRemoved();
  return removed;
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

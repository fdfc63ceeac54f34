#pragma once

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "TQCore/Models/Job.hpp"

namespace tq {

/// The queue as it is shown: jobs in order of entry, found by id. A row is an immutable job that whoever copied it may
/// keep; a change replaces it. Tells an observer the smallest change each time.
///
/// Lives on one thread.
class JobList {
 public:
  using Row = std::shared_ptr<const Job>;

  /// What a view of the list has to know. Called while the list is whole: before a change with the old rows, after it
  /// with the new ones. An observer reads the list, and never changes it.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void rowsWillBeAppended(std::size_t /*count*/) {}
    virtual void rowsWereAppended() {}
    /// All rows of that status, of which there is one at least. The other rows keep their order.
    virtual void rowsWillBeRemoved(JobStatus /*status*/) {}
    virtual void rowsWereRemoved() {}
    virtual void rowWasReplaced(std::size_t /*row*/, const Job& /*before*/, const Job& /*after*/) {}
  };

  /// `observer` outlives the list.
  explicit JobList(Observer& observer) : observer_(observer) {}
  JobList(const JobList&) = delete;
  JobList& operator=(const JobList&) = delete;

  const std::vector<Row>& rows() const { return rows_; }
  std::size_t size() const { return rows_.size(); }
  bool empty() const { return rows_.empty(); }
  const Job& operator[](std::size_t row) const { return *rows_[row]; }

  /// The first row of that job.
  std::optional<std::size_t> rowOf(const UUID& id) const;

  /// The jobs that have not come to an end.
  std::size_t activeCount() const { return activeCount_; }

  /// True when a job that has not come to an end works on that clip. Paths are compared as they are spelled.
  bool isActive(const std::filesystem::path& clip) const { return activeClips_.contains(clip.native()); }

  void append(std::vector<Row> rows);
  void replace(std::size_t row, Job job);

  /// Removes all jobs of that status and gives them back; the others keep their order.
  std::vector<Row> removeAll(JobStatus status);

 private:
  void count(const Job& job);
  void discount(const Job& job);

  Observer& observer_;
  std::vector<Row> rows_;
  mutable std::unordered_map<UUID, std::size_t> index_;
  mutable bool indexIsStale_ = false;  // a removal moves rows; they are numbered anew when somebody asks
  std::unordered_map<std::string, std::size_t> activeClips_;
  std::size_t activeCount_ = 0;
};

}  // namespace tq

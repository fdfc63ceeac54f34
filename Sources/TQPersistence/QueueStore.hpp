#pragma once

#include <filesystem>
#include <memory>
#include <span>
#include <vector>

#include "TQCore/Models/Job.hpp"

namespace tq {

/// Keeps the work queue from one run of the program to the next: what is needed to do a job again, never what a run has
/// produced. Keeps no state and takes no lock: a save replaces the whole file in one step.
struct QueueStore {
  std::filesystem::path url;  ///< the file; that of the user is `AppSupportPaths::queueURL`

  /// Keeps the jobs that are not `done` or `cancelled`, in their order. Gives the file mode 0600 where the file system
  /// can. Throws `SystemError` when it cannot be written and `JSONError` when a value has no JSON form; the old file is
  /// whole then. No job is a null pointer. Several saves at once leave one whole queue, that of the last one.
  void save(std::span<const std::shared_ptr<const Job>> jobs) const;

  /// The jobs in the file, in its order. Interrupted work is waiting again, and only a failed job has an error. Clips
  /// are not looked for. Gives no jobs when the file is missing or cannot be used for any reason, one unreadable entry
  /// included. Never fails.
  std::vector<Job> load() const;

  bool operator==(const QueueStore&) const = default;
};

}  // namespace tq

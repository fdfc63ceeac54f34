#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "TQCore/Models/Job.hpp"
#include "TQPersistence/QueueStore.hpp"
#include "TQPlatform/Concurrency/Executor.hpp"
#include "TQPlatform/Concurrency/SerialQueue.hpp"

namespace tq {

/// Keeps the queue's file up to date without holding up the thread that owns the queue. There is never more than one
/// write under way; what changes meanwhile is written by the next one, so the newest state wins and none is written
/// twice.
///
/// Lives on the owner's thread: all operations are called there, and so are both callbacks.
class QueueWriter {
 public:
  /// The jobs as they are now, in order of the queue. Copied are references: a job is immutable.
  using Jobs = std::vector<std::shared_ptr<const Job>>;

  /// `owner` runs items on the owner's thread. `current` is asked when a write begins; `onFailure` hears, in words for
  /// a user, that one failed.
  QueueWriter(QueueStore store, Executor owner, std::function<Jobs()> current,
              std::function<void(const std::string& problem)> onFailure);

  /// As `finish`.
  ~QueueWriter();
  QueueWriter(const QueueWriter&) = delete;
  QueueWriter& operator=(const QueueWriter&) = delete;

  /// The queue has changed and is to be written. Returns at once.
  void noteChange();

  /// Holds writes back until `release`, as often as `hold` was called. Changes are remembered.
  void hold() { ++holds_; }
  void release();

  /// Blocks until the file holds the newest state, or could not be written. While writes are held back it only waits
  /// for the one under way.
  void finish();

 private:
  void beginWrite();
  void endWrite(const std::string& problem);
  std::string write(const Jobs& jobs) const;

  const QueueStore store_;
  const OwnerCalls owner_;
  const std::function<Jobs()> current_;
  const std::function<void(const std::string&)> onFailure_;
  bool isWriting_ = false;
  bool isChanged_ = false;
  int holds_ = 0;
  std::shared_ptr<std::string> outcome_;  ///< of the write under way
  SerialQueue thread_;                    // last: its items use all of the above
};

}  // namespace tq

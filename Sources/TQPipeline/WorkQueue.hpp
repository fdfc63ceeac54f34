#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/Job.hpp"
#include "TQCore/Models/RerateCandidate.hpp"
#include "TQPersistence/QueueStore.hpp"
#include "TQPersistence/QueueWriter.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPipeline/FrameBudget.hpp"
#include "TQPipeline/JobList.hpp"
#include "TQPipeline/JobOrchestrator.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPipeline/JobUpdates.hpp"
#include "TQPlatform/Concurrency/Executor.hpp"
#include "TQPlatform/Concurrency/SerialQueue.hpp"

namespace tq {

/// What a work queue is made of.
struct WorkQueueParts {
  AppSettings settings;
  std::shared_ptr<const SecretsStore> secrets;
  JobStages stages;
  std::optional<QueueStore> store;  ///< absent: the queue ends with the program
  std::size_t frameBudget = 0;      ///< bytes of frames that finished jobs may keep for display
};

/// The queue as its user has it: takes clips in, has the engine work on them, shows how far each job is, and is there
/// again after a restart. The window and the headless runner both stand on it.
///
/// Lives on one thread, the owner's: every operation is called there and every observation arrives there. None of them
/// waits for a disk, a lock of the engine or the end of a job; whatever concerns thousands of jobs comes in slices, so
/// that the owner's event loop stays responsive. Folders are walked and the file is written on other threads.
class WorkQueue {
 public:
  /// What there is to know beside the rows of the list.
  class Observer {
   public:
    virtual ~Observer() = default;
    virtual void selectionChanged() {}
    virtual void activeCountChanged() {}
    /// The queue could not be written; it goes on in memory. `message` is for the user.
    virtual void queueWasNotSaved(const std::string& /*message*/) {}
  };

  /// `owner` runs items on the owner's thread. `view` and `observer` outlive the queue.
  WorkQueue(WorkQueueParts parts, Executor owner, JobList::Observer& view, Observer& observer);

  /// As `finish`; then stops all runs and waits for them.
  ~WorkQueue();
  WorkQueue(const WorkQueue&) = delete;
  WorkQueue& operator=(const WorkQueue&) = delete;

  const JobList& jobs() const { return jobs_; }

  /// True when nothing is being taken in and every job has ended.
  bool isIdle() const { return takingIn_ == 0 && jobs_.activeCount() == 0; }

  const std::optional<UUID>& selectedJobID() const { return selectedJobID_; }

  /// Replaces the settings in force, for the engine too.
  void updateSettings(AppSettings settings);

  /// Brings the jobs of the file back and starts those that wait. To be called once, before anything is taken in; the
  /// file is not written before it has been read.
  void restore();

  /// Takes in the clips that `urls` stand for, see `expandToVideos`. Nothing usable: no job and no message.
  void enqueue(std::vector<std::filesystem::path> urls);

  /// Takes these clips in as they are, without a look at the disk.
  void enqueueClips(std::vector<std::filesystem::path> clips);

  /// Takes in a clip that a watched folder reported, unless it is described already or an active job works on it.
  void handleWatchedFile(std::filesystem::path url);

  /// Describes these clips again, in place of their old description whatever the settings say.
  void enqueueRerate(const std::vector<RerateCandidate>& candidates);

  /// Has a job run again, from the start. Its row stays where it is. Unknown ids are ignored.
  void retry(const UUID& id) { retry(std::vector{id}); }
  void retry(const std::vector<UUID>& ids);

  /// Every failed and cancelled job, in slices.
  void retryAll();

  /// Asks the engine to cancel; the row changes when the news of it arrives.
  void cancel(const UUID& id) { cancel(std::vector{id}); }
  void cancel(std::vector<UUID> ids);

  /// Every job that has not ended.
  void cancelAll();

  /// Removes the jobs that are done from the list. A selection stays, and may then name no job.
  void removeCompleted();

  void select(std::optional<UUID> id);

  /// Applies all news that has arrived, and blocks until the file holds the newest state or could not be written. To be
  /// called before the program ends.
  void finish();

 private:
  using Rows = std::vector<JobList::Row>;

  void takeInBy(std::function<void()> work);
  void makeJobs(std::function<std::vector<std::filesystem::path>()> clips, std::optional<OutputConfig> outputOverride);
  void takeIn(Rows rows);
  void applyUpdates();
  void applyUpdates(std::size_t most);
  bool applyJobUpdate(Job job);
  void trimFrames();
  void persistQueue();
  void noteActiveCount();
  template <class Wanted>
  std::vector<UUID> idsOf(Wanted wanted) const;

  const std::shared_ptr<const Clock> clock_;
  const OwnerCalls owner_;
  Observer& observer_;
  AppSettings settings_;
  JobList jobs_;
  FrameBudget frames_;
  std::optional<UUID> selectedJobID_;
  std::size_t shownActiveCount_ = 0;
  std::size_t takingIn_ = 0;  ///< pieces of work for the intake whose jobs are not all here yet
  const std::optional<QueueStore> store_;
  std::unique_ptr<QueueWriter> writer_;  ///< absent without a store
  JobUpdates updates_;

  JobOrchestrator orchestrator_;
  SerialQueue engineCalls_;  // last: their items use all of the above
  SerialQueue intake_;
};

}  // namespace tq

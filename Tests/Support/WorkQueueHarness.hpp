#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Support/PipelineHarness.hpp"
#include "TQPersistence/QueueStore.hpp"
#include "TQPipeline/WorkQueue.hpp"
#include "TQPlatform/Concurrency/EventLoop.hpp"

namespace tq::test {

/// What a view of a work queue was told, and the list that it would show if it believed every word.
class QueueView : public JobList::Observer, public WorkQueue::Observer {
 public:
  void rowsWillBeAppended(std::size_t count) override;
  void rowsWereAppended() override;
  void rowsWillBeRemoved(JobStatus status) override;
  void rowsWereRemoved() override;
  void rowWasReplaced(std::size_t row, const Job& before, const Job& after) override;
  void selectionChanged() override { ++selectionChanges; }
  void activeCountChanged() override { ++activeCountChanges; }
  void queueWasNotSaved(const std::string& message) override { problems.push_back(message); }

  const JobList* list = nullptr;  ///< what is looked at; set before anything happens
  std::vector<Job> shown;
  std::vector<std::size_t> arrivals;  ///< how many rows came at a time
  std::vector<JobStatus> statuses;    ///< of all replaced rows, changes only
  std::vector<std::string> problems;
  int selectionChanges = 0;
  int activeCountChanges = 0;

 private:
  std::size_t announced_ = 0;
};

/// A work queue over the stages of a `PipelineHarness`, with an event loop that the test turns. Change `engine` and
/// `store`, then call `start()`.
class WorkQueueHarness {
 public:
  WorkQueueHarness();
  ~WorkQueueHarness();

  WorkQueue& start();
  WorkQueue& queue() { return *queue_; }

  /// Ends the queue as a program that quits does.
  void quit() { queue_.reset(); }

  /// Turns the loop until that is so; fails the test when it never is.
  void runUntil(const std::function<bool()>& reached);
  void runUntilIdle();  ///< until all jobs have ended
  void runUntilSize(std::size_t count);

  /// Runs what has been posted by now, and what that posts.
  void runPosted();

  const Job& job(std::size_t row) const { return queue_->jobs()[row]; }
  std::vector<JobStatus> statuses() const;
  std::vector<std::string> names() const;  ///< of the clips, in order of the queue

  /// A clip-like file in the folder.
  std::filesystem::path clip(const std::string& name) const { return engine.folder.write(name, "clip"); }

  std::vector<Job> stored() const { return store->load(); }

  PipelineHarness engine;
  std::optional<QueueStore> store;
  std::size_t frameBudget = 512'000'000;
  QueueView view;
  EventLoop loop;

 private:
  std::unique_ptr<WorkQueue> queue_;
};

}  // namespace tq::test

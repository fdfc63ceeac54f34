#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <vector>

#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPipeline/WorkQueue.hpp"
#include "TQPlatform/Concurrency/EventLoop.hpp"
#include "Tools/Describe/ProgressDisplay.hpp"
#include "Tools/Describe/Worklist.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::describe {

using tools::ExitStatus;
using enum tools::ExitStatus;

/// Describes clips from start to end on the work queue that the window uses too, and shows how it goes. Its queue ends
/// with it: what a stopped run leaves undone is known by the descriptions that are missing.
class Runner : private JobList::Observer, private WorkQueue::Observer {
 public:
  /// `isOutputAbandoned` tells, once `out` has failed, whether anybody may still read there. A run that nobody follows
  /// any more is cancelled without a word, as a program in a pipe ends with its reader.
  Runner(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages, std::ostream& out,
         std::optional<int> terminalColumns, std::function<bool()> isOutputAbandoned);

  /// Blocks until every clip has ended. Neither this nor `watch` is to be called twice.
  ExitStatus describe(const Worklist& work);

  /// Watches the folders, describes what `findWork` gives once they are watched, and then what comes in, until it is
  /// interrupted.
  ExitStatus watch(std::vector<std::filesystem::path> folders, const std::function<Worklist()>& findWork);

  /// Cancels what has not ended, soon; from any thread.
  void interrupt();

 private:
  void rowsWereAppended() override;
  void rowWasReplaced(std::size_t row, const Job& before, const Job& after) override;

  void recordOutputs();
  void take(const Worklist& work);
  void noteInterrupt();
  void noteAbandonment();
  /// Returns when nothing works on any clip any more, which may be a while after the last one was cancelled.
  ExitStatus finish();
  void turnLoopWhile(const std::function<bool()>& isToGoOn);
  std::vector<std::filesystem::path> outputsOf(const std::filesystem::path& clip);

  const AppSettings settings_;
  const std::shared_ptr<const SecretsStore> secrets_;
  JobStages stages_;
  std::ostream& out_;
  const std::function<bool()> isOutputAbandoned_;
  ProgressDisplay display_;
  EventLoop loop_;
  std::unique_ptr<WorkQueue> queue_;
  bool wasInterrupted_ = false;
  bool wasAbandoned_ = false;
  bool hasFailed_ = false;
  bool hasCancelled_ = false;
  std::mutex outputsMutex_;
  std::map<std::filesystem::path, std::vector<std::filesystem::path>> outputs_;
};

}  // namespace tq::describe

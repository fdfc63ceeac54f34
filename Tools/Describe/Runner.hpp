#pragma once

#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <variant>
#include <vector>

#include "TQCore/Models/Job.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPipeline/JobStages.hpp"
#include "Tools/Describe/Mailbox.hpp"
#include "Tools/Describe/ProgressDisplay.hpp"

namespace tq::describe {

/// The exit statuses of the program.
enum ExitStatus : int { allDone = 0, notAllDone = 1, wrongUsage = 2, interrupted = 130 };

/// Describes clips from start to end on the engine that the window uses too, and shows how it goes.
class Runner {
 public:
  Runner(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages, std::ostream& out,
         std::optional<int> terminalColumns);

  /// Blocks until every clip has ended. Not to be called twice.
  ExitStatus describe(const std::vector<std::filesystem::path>& clips);

  /// Cancels what has not ended, soon; from any thread.
  void interrupt() { mailbox_.send(Interrupt{}); }

 private:
  struct Interrupt {};
  using Message = std::variant<Job, Interrupt>;

  void recordOutputs();
  /// Returns when nothing works on any clip any more, which may be a while after the last one was cancelled.
  ExitStatus run(const std::vector<std::filesystem::path>& clips, ProgressDisplay& display);
  std::vector<std::filesystem::path> outputsOf(const std::filesystem::path& clip);

  const AppSettings settings_;
  const std::shared_ptr<const SecretsStore> secrets_;
  JobStages stages_;
  std::ostream& out_;
  const std::optional<int> terminalColumns_;
  Mailbox<Message> mailbox_;
  std::mutex outputsMutex_;
  std::map<std::filesystem::path, std::vector<std::filesystem::path>> outputs_;
};

}  // namespace tq::describe

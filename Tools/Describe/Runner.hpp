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

namespace tq::describe {

/// The exit statuses of the program.
enum ExitStatus : int { allDone = 0, notAllDone = 1, wrongUsage = 2, interrupted = 130 };

/// Describes clips from start to end on the engine that the window uses too, and shows how it goes.
class Runner {
 public:
  Runner(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages, std::ostream& out,
         std::optional<int> terminalColumns);

  /// Blocks until every clip has ended.
  ExitStatus describe(const std::vector<std::filesystem::path>& clips);

  /// Cancels what has not ended, soon; from any thread.
  void interrupt() { mailbox_.send(Interrupt{}); }

 private:
  struct Interrupt {};
  using Message = std::variant<Job, Interrupt>;

  void recordOutputs();
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

#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Support/Gate.hpp"
#include "Support/ManualClock.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPipeline/JobOrchestrator.hpp"

namespace tq::test {

/// Every update in the order of reporting.
class UpdateLog {
 public:
  void add(const Job& job);

  /// Blocks until the job's latest update has that status, and gives that update.
  Job waitFor(const UUID& id, JobStatus status);

  /// Blocks until the job has come to an end of any kind, and gives that update.
  Job waitForEnd(const UUID& id);

  /// Blocks until anything was reported of the job.
  void waitForAny(const UUID& id);

  std::vector<Job> all() const;
  std::vector<Job> of(const UUID& id) const;
  std::vector<JobStatus> statusesOf(const UUID& id) const;  ///< changes of status only

 private:
  Job waitUntil(const UUID& id, const std::function<bool(const Job& latest)>& reached, const std::string& what);

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<Job> updates_;
};

/// A model whose answers a test writes.
class ScriptedProvider final : public VisionProvider {
 public:
  using Answer = std::function<VisionResponse(const VisionRequest& request, std::stop_token stop)>;

  ScriptedProvider(std::string modelId, Answer answer) : modelId_(std::move(modelId)), answer_(std::move(answer)) {}

  const std::string& providerId() const override { return providerId_; }
  const std::string& modelId() const override { return modelId_; }
  VisionResponse describe(const VisionRequest& request, std::stop_token stop) const override {
    return answer_(request, std::move(stop));
  }

 private:
  std::string providerId_ = "scripted";
  std::string modelId_;
  Answer answer_;
};

/// An answer that parses, validates and has content.
std::string goodAnswer();

/// An orchestrator whose stages a test writes. As it comes, every clip gives `frameCount` frames, the model (reached as
/// a local OpenAI-shaped server without a key) gives `goodAnswer()`, and the real writer writes into the test's folder.
/// Change `settings` and `stages`, then call `start()`.
class PipelineHarness {
 public:
  PipelineHarness();

  /// Makes the orchestrator from what the members hold now.
  JobOrchestrator& start();
  JobOrchestrator& orchestrator() { return *orchestrator_; }
  void discard() { orchestrator_.reset(); }

  /// A queued job on a new small file in the folder.
  Job makeJob(const std::string& name);

  /// Adds the job, waits for that end and gives the last update.
  Job runToEnd(const Job& job, JobStatus end);

  static std::vector<ExtractedFrame> frames(std::size_t count);

  TemporaryFolder folder;
  AppSettings settings;
  JobStages stages;
  UpdateLog log;
  std::size_t frameCount = 2;
  std::optional<GPS> gps;
  ScriptedProvider::Answer answer;
  std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>();
  std::shared_ptr<SecretsStore> secrets;

 private:
  std::unique_ptr<JobOrchestrator> orchestrator_;
};

}  // namespace tq::test

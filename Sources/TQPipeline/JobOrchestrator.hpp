#pragma once

#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "TQCore/Models/Job.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPipeline/JobStages.hpp"
#include "TQPipeline/WaitingList.hpp"
#include "TQPlatform/Concurrency/Monitor.hpp"
#include "TQPlatform/Concurrency/SerialQueue.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"

namespace tq {

/// The scheduler: owns the jobs that wait, runs each as a task up to the configured limit, cancels on request and
/// reports every change of a job. Nothing else starts a job.
///
/// A serial object: its operations never overlap, and those of a run interleave with them only where the run waits for
/// frames, detection, a place name, audio, a transcript or a model. Hashing a large clip and writing sidecars hold up
/// the other operations, so a thread that must stay responsive posts its calls instead of making them itself.
class JobOrchestrator {
 public:
  /// Called for every reported change, while the orchestrator is held: it passes the job on without blocking, calls no
  /// operation of the orchestrator and does not throw.
  using UpdateHandler = std::function<void(const Job& job)>;

  /// Nothing runs until `add`.
  JobOrchestrator(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages,
                  UpdateHandler onUpdate);

  /// Asks all runs to stop and waits until they have ended. Nothing is reported from here on.
  ~JobOrchestrator();

  JobOrchestrator(const JobOrchestrator&) = delete;
  JobOrchestrator& operator=(const JobOrchestrator&) = delete;

  /// Replaces the settings in force. A raised limit takes effect at the next `add` or end of a job; a running job sees
  /// the change in its later stages.
  void updateSettings(AppSettings settings);

  /// Appends the jobs to those that wait, in order, and starts what the limit allows. A job with a known id is a retry.
  void add(std::vector<Job> jobs);

  /// Makes a job that has not ended `cancelled` at once, with one update. A run in progress is asked to stop; its slot
  /// is free when it has really ended.
  void cancel(const UUID& jobID);

  /// Notes how far a job is, from 0 to 1, as given: neither compared with what was reported before nor with the status.
  /// Dropped when the job's cancellation was requested, also after its run has ended.
  void report(double progress, const UUID& jobID);

 private:
  using RunNumber = std::uint64_t;

  struct Run {
    RunNumber number;
    std::stop_source stopSource;
  };

  using FaceMap = std::map<std::int64_t, std::vector<FaceBox>>;
  using TextMap = std::map<std::int64_t, std::vector<std::string>>;
  using Frames = Shared<std::vector<ExtractedFrame>>;

  // All of these are called while the monitor is held; those that get `held` wait in between.
  void drain();
  void publish(const Job& job);
  void remember(const Job& job);
  void endRun(const UUID& jobID, RunNumber number);
  void recordFailure(Job job, const std::exception& error, const std::stop_token& stop);

  void run(Job job, RunNumber number, const std::stop_token& stop);
  void perform(Job& job, Monitor::Held& held, const std::stop_token& stop);
  Extraction sampleFrames(const Job& job, Monitor::Held& held, const std::stop_token& stop);
  FaceMap runFaceDetection(const Frames& frames, Monitor::Held& held, const std::stop_token& stop);
  TextMap runOCR(const Frames& frames, Monitor::Held& held, const std::stop_token& stop);
  SourceMetadata describeSource(const std::filesystem::path& sourceURL, const VideoMetadata& meta, Monitor::Held& held,
                                const std::stop_token& stop);
  std::optional<std::string> findPlaceName(const GPS& gps, Monitor::Held& held, const std::stop_token& stop);
  std::optional<TranscriptInfo> runTranscription(const std::filesystem::path& sourceURL, Monitor::Held& held,
                                                 const std::stop_token& stop);
  std::unique_ptr<VisionProvider> buildProvider() const;
  std::string keyFor(const std::string& account) const;
  void finish(Job& job, const VisionResponse& response, const std::string& providerId, SourceMetadata source,
              std::optional<TranscriptInfo> transcript, const FaceMap& faces, const TextMap& texts);

  Monitor monitor_;
  AppSettings settings_;
  const std::shared_ptr<const SecretsStore> secrets_;
  const JobStages stages_;
  const UpdateHandler onUpdate_;
  WaitingList pending_;
  std::unordered_map<UUID, Run> inFlight_;
  std::unordered_map<UUID, Job> current_;
  std::unordered_set<UUID> cancelled_;
  RunNumber lastRun_ = 0;
  bool discarded_ = false;

  TaskScope tasks_;
  SerialQueue progressQueue_;  // last: its items use all of the above
};

}  // namespace tq

#include "TQPipeline/JobOrchestrator.hpp"

#include <algorithm>
#include <system_error>
#include <utility>

namespace tq {

namespace {

constexpr const char* cancelledText = "Cancelled";

}  // namespace

JobOrchestrator::JobOrchestrator(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages,
                                 UpdateHandler onUpdate)
    : settings_(std::move(settings)),
      secrets_(std::move(secrets)),
      stages_(std::move(stages)),
      onUpdate_(std::move(onUpdate)) {}

JobOrchestrator::~JobOrchestrator() {
  {
    const auto held = monitor_.enter();
    discarded_ = true;
  }
  tasks_.stopAndWait();
}

void JobOrchestrator::updateSettings(AppSettings settings) {
  const auto held = monitor_.enter();
  settings_ = std::move(settings);
}

void JobOrchestrator::add(std::vector<Job> jobs) {
  const auto held = monitor_.enter();
  for (Job& job : jobs) {
    remember(job);
    pending_.append(std::move(job));
  }
  drain();
}

void JobOrchestrator::cancel(const UUID& jobID) {
  const auto held = monitor_.enter();
  const auto known = current_.find(jobID);
  if (known != current_.end() && isTerminal(known->second.status)) return;
  cancelled_.insert(jobID);
  if (const auto running = inFlight_.find(jobID); running != inFlight_.end()) running->second.stopSource.request_stop();
  pending_.remove(jobID);
  if (known == current_.end()) return;
  Job job = known->second;
  job.status = JobStatus::cancelled;
  job.error = cancelledText;
  publish(job);
}

void JobOrchestrator::report(double progress, const UUID& jobID) {
  const auto held = monitor_.enter();
  if (cancelled_.contains(jobID)) return;
  const auto known = current_.find(jobID);
  if (known == current_.end()) return;
  // A run that has unwound has taken its id out of the set; what it told last may still be on its way.
  if (known->second.status == JobStatus::cancelled) return;
  Job job = known->second;
  job.progress = progress;
  publish(job);
}

void JobOrchestrator::drain() {
  if (discarded_) return;
  const auto limit = static_cast<std::size_t>(std::max<std::int64_t>(settings_.maxConcurrentJobs, 1));
  while (inFlight_.size() < limit && !pending_.empty()) {
    const Job& next = pending_.front();
    const RunNumber number = ++lastRun_;
    try {
      auto stopSource = tasks_.start(
          [this, job = next, number](const std::stop_token& stop) mutable { run(std::move(job), number, stop); });
      inFlight_.insert_or_assign(next.id, Run{number, std::move(stopSource)});
    } catch (const std::system_error& error) {
      // The machine gives no more threads. The end of another job will try again; without one, nobody would.
      if (!inFlight_.empty()) return;
      recordFailure(next, error, {});
    }
    pending_.removeFront();
  }
}

void JobOrchestrator::publish(const Job& job) {
  remember(job);
  if (!discarded_) onUpdate_(job);
}

/// Of a job that has ended no operation needs the large parts again, so they are let go here: a run of thousands of
/// clips keeps one small record each.
void JobOrchestrator::remember(const Job& job) {
  Job& kept = current_.insert_or_assign(job.id, job).first->second;
  if (!isTerminal(job.status)) return;
  kept.frames = {};
  kept.rawResponse = {};
  kept.result = {};
}

/// The one place where a slot becomes free. A job that was cancelled and retried while its first run was unwinding has
/// a newer run, whose slot this end leaves alone.
void JobOrchestrator::endRun(const UUID& jobID, RunNumber number) {
  if (const auto own = inFlight_.find(jobID); own != inFlight_.end() && own->second.number == number)
    inFlight_.erase(own);
  cancelled_.erase(jobID);
  drain();
}

}  // namespace tq

#include "Tools/Describe/Runner.hpp"

#include <algorithm>
#include <chrono>
#include <utility>

#include "TQPipeline/JobOrchestrator.hpp"

namespace tq::describe {

namespace {

constexpr std::chrono::milliseconds betweenTicks{500};

std::vector<Job> jobsFor(const std::vector<std::filesystem::path>& clips, Date now) {
  std::vector<Job> jobs;
  jobs.reserve(clips.size());
  for (const auto& clip : clips) {
    Job& job = jobs.emplace_back();
    job.id = UUID::random();
    job.sourceURL = clip;
    job.createdAt = now;
  }
  return jobs;
}

}  // namespace

Runner::Runner(AppSettings settings, std::shared_ptr<const SecretsStore> secrets, JobStages stages, std::ostream& out,
               std::optional<int> terminalColumns)
    : settings_(std::move(settings)),
      secrets_(std::move(secrets)),
      stages_(std::move(stages)),
      out_(out),
      terminalColumns_(terminalColumns) {
  recordOutputs();
}

/// The engine tells of jobs, not of files; whoever composes it listens at the two stages that write.
void Runner::recordOutputs() {
  const auto record = [this](const std::filesystem::path& clip, const std::vector<std::filesystem::path>& files) {
    std::lock_guard lock(outputsMutex_);
    auto& known = outputs_[clip];
    known.insert(known.end(), files.begin(), files.end());
  };
  stages_.writeDescription = [record, write = std::move(stages_.writeDescription)](const DescriptionResult& result,
                                                                                   const std::filesystem::path& clip,
                                                                                   const OutputConfig& config) {
    auto files = write(result, clip, config);
    record(clip, files);
    return files;
  };
  stages_.writePoster = [record, write = std::move(stages_.writePoster)](
                            ByteView jpegData, const std::filesystem::path& clip, const OutputConfig& config) {
    auto file = write(jpegData, clip, config);
    if (file) record(clip, {*file});
    return file;
  };
}

std::vector<std::filesystem::path> Runner::outputsOf(const std::filesystem::path& clip) {
  std::lock_guard lock(outputsMutex_);
  const auto known = outputs_.extract(clip);
  return known ? known.mapped() : std::vector<std::filesystem::path>{};
}

ExitStatus Runner::describe(const std::vector<std::filesystem::path>& clips) {
  ProgressDisplay display(out_, terminalColumns_, *stages_.clock, clips.size());
  const ExitStatus status = run(clips, display);
  display.finish();
  return status;
}

ExitStatus Runner::run(const std::vector<std::filesystem::path>& clips, ProgressDisplay& display) {
  JobOrchestrator orchestrator(settings_, secrets_, stages_, [this](const Job& job) { mailbox_.send(job); });
  const std::vector<Job> jobs = jobsFor(clips, stages_.clock->now());
  orchestrator.add(jobs);

  std::size_t open = jobs.size();
  bool failed = false;
  bool wasInterrupted = false;
  while (open > 0) {
    const auto message = mailbox_.receive(betweenTicks);
    if (!message) {
      display.tick();
    } else if (const Job* job = std::get_if<Job>(&*message)) {
      if (isTerminal(job->status)) --open;
      failed = failed || job->status == JobStatus::failed;
      display.show(*job,
                   job->status == JobStatus::done ? outputsOf(job->sourceURL) : std::vector<std::filesystem::path>{});
    } else if (!std::exchange(wasInterrupted, true)) {
      display.say("Cancelling. Ctrl-C again leaves at once.");
      // From the back, so that no end of a running job starts one that is about to be cancelled.
      std::for_each(jobs.rbegin(), jobs.rend(), [&](const Job& waiting) { orchestrator.cancel(waiting.id); });
    }
  }
  if (wasInterrupted) return interrupted;
  return failed ? notAllDone : allDone;
}

}  // namespace tq::describe

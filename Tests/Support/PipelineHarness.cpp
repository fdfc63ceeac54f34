#include "Support/PipelineHarness.hpp"

#include <stdexcept>

namespace tq::test {

namespace {

/// Nothing waits so long unless it hangs.
constexpr std::chrono::seconds patience{60};

}  // namespace

void UpdateLog::add(const Job& job) {
  std::lock_guard lock(mutex_);
  updates_.push_back(job);
  changed_.notify_all();
}

Job UpdateLog::waitFor(const UUID& id, JobStatus status) {
  return waitUntil(
      id, [&](const Job& latest) { return latest.status == status; }, "became " + std::string(rawValue(status)));
}

Job UpdateLog::waitForEnd(const UUID& id) {
  return waitUntil(
      id, [](const Job& latest) { return isTerminal(latest.status); }, "ended");
}

void UpdateLog::waitForAny(const UUID& id) {
  waitUntil(
      id, [](const Job&) { return true; }, "was reported");
}

Job UpdateLog::waitUntil(const UUID& id, const std::function<bool(const Job&)>& reached, const std::string& what) {
  std::unique_lock lock(mutex_);
  const Job* found = nullptr;
  const bool arrived = changed_.wait_for(lock, patience, [&] {
    found = nullptr;
    for (const Job& job : updates_)
      if (job.id == id) found = &job;
    return found && reached(*found);
  });
  if (!arrived) throw std::runtime_error("the job never " + what + (found && found->error ? ": " + *found->error : ""));
  return *found;
}

std::vector<Job> UpdateLog::all() const {
  std::lock_guard lock(mutex_);
  return updates_;
}

std::vector<Job> UpdateLog::of(const UUID& id) const {
  std::vector<Job> updates = all();
  std::erase_if(updates, [&](const Job& job) { return job.id != id; });
  return updates;
}

std::vector<JobStatus> UpdateLog::statusesOf(const UUID& id) const {
  std::vector<JobStatus> statuses;
  for (const Job& job : of(id))
    if (statuses.empty() || statuses.back() != job.status) statuses.push_back(job.status);
  return statuses;
}

std::string goodAnswer() {
  return R"({"schema_version": "1.0", "summary": "A quiet harbour at dawn.",
             "shots": [{"shot_type": "wide"}, {"shot_type": "close"}], "global": {"themes": ["harbour"]}})";
}

PipelineHarness::PipelineHarness() {
  settings.providerId = "openai";
  settings.modelId = "configured-model";
  settings.openaiBaseURL = "http://localhost:1";
  answer = [](const VisionRequest&, const std::stop_token&) {
    return VisionResponse{.rawText = goodAnswer(), .modelId = "answering-model", .inputTokens = {}, .outputTokens = {}};
  };
  stages = standardJobStages(nullptr);  // the providers are replaced below
  stages.clock = clock;
  stages.processorCount = 4;
  stages.extractFrames = [this](const std::filesystem::path&, const SamplingConfig&, const ExtractionProgress&,
                                const std::stop_token&) {
    return Extraction{.frames = frames(frameCount),
                      .meta = {.duration = 12.5,
                               .width = 640,
                               .height = 360,
                               .frameRate = 25,
                               .codec = "avc1",
                               .fileSize = 4,
                               .gps = gps}};
  };
  stages.providers = ProviderFactory({.anthropic = {}, .openAI = [this](const HTTPProviderConfig& config) {
                                        return std::make_unique<ScriptedProvider>(
                                            config.modelId, [this](const VisionRequest& request, std::stop_token stop) {
                                              return answer(request, std::move(stop));
                                            });
                                      }});
  secrets =
      std::make_shared<SecretsStore>(folder.path() / "private" / "secrets.json", std::make_shared<FileLockRegistry>());
}

JobOrchestrator& PipelineHarness::start() {
  orchestrator_ =
      std::make_unique<JobOrchestrator>(settings, secrets, stages, [this](const Job& job) { log.add(job); });
  return *orchestrator_;
}

Job PipelineHarness::makeJob(const std::string& name) {
  Job job;
  job.id = UUID::random();
  job.sourceURL = folder.write(name, "clip");
  job.createdAt = clock->now();
  return job;
}

Job PipelineHarness::runToEnd(const Job& job, JobStatus end) {
  if (!orchestrator_) start();
  orchestrator_->add({job});
  return log.waitFor(job.id, end);
}

std::vector<ExtractedFrame> PipelineHarness::frames(std::size_t count) {
  std::vector<ExtractedFrame> result(count);
  for (std::size_t index = 0; index < count; ++index) {
    const std::string content = "jpeg-" + std::to_string(index);
    result[index] = {.timecode = {static_cast<double>(index)},
                     .jpegData = {content.begin(), content.end()},
                     .width = 64,
                     .height = 36};
  }
  return result;
}

}  // namespace tq::test

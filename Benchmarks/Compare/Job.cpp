#include "Benchmarks/Compare/Job.hpp"

#include <future>
#include <stdexcept>

#include "TQCore/FileHash.hpp"
#include "TQDescription/DescriptionBuilder.hpp"
#include "TQDescription/DescriptionWriter.hpp"
#include "TQFrames/FrameExtractor.hpp"
#include "TQPersistence/SecretsStore.hpp"
#include "TQPipeline/JobOrchestrator.hpp"
#include "TQVision/MockProvider.hpp"
#include "TQVision/PromptBuilder.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

OutputConfig outputIn(const fs::path& folder) {
  return {.conflictPolicy = ConflictPolicy::overwrite, .sidecarDirectory = folder};
}

}  // namespace

void wholeJob(const fs::path& clip, const fs::path& folder) {
  AppSettings settings;
  settings.providerId = "mock";
  settings.output = outputIn(folder);
  std::promise<Job> ended;
  const auto secrets = std::make_shared<SecretsStore>(folder / "secrets.json", std::make_shared<FileLockRegistry>());
  JobOrchestrator orchestrator(settings, secrets, standardJobStages(nullptr), [&](const Job& job) {
    if (isTerminal(job.status)) ended.set_value(job);
  });
  Job job;
  job.id = UUID::random();
  job.sourceURL = clip;
  orchestrator.add({job});
  const Job last = ended.get_future().get();
  if (last.status != JobStatus::done) throw std::runtime_error(last.error.value_or("the job did not end well"));
}

void partsOfJob(const fs::path& clip, const fs::path& folder) {
  const SamplingConfig sampling;
  Extraction extraction = FrameExtractor().extract(clip, sampling);
  const std::string middle(textOf(extraction.frames[extraction.frames.size() / 2].jpegData));
  SourceMetadata source{.filename = clip.filename().string(),
                        .durationSeconds = extraction.meta.duration,
                        .resolution = "1920x1080",
                        .frameRate = extraction.meta.frameRate,
                        .codec = extraction.meta.codec,
                        .fileSizeBytes = extraction.meta.fileSize,
                        .sha256 = FileHash::sha256Hex(clip, 1 << 20)};
  const VisionRequest request{.systemPrompt = PromptBuilder::systemPrompt({}),
                              .userPrompt = PromptBuilder::userPrompt(extraction.frames.size(), source, std::nullopt),
                              .frames = Shared<std::vector<ExtractedFrame>>(std::move(extraction.frames)),
                              .sourceContext = source,
                              .samplingStrategy = sampling.strategy,
                              .maxTokens = 4096,
                              .temperature = 0.2};
  const VisionResponse response = MockProvider("mock", "mock-v1").describe(request, {});
  const DescriptionResult result = DescriptionBuilder::build(response.rawText, std::move(source), {}, std::nullopt);
  const DescriptionWriter writer;
  writer.write(result, clip, outputIn(folder));
  writer.writePoster(viewOf(middle), clip, outputIn(folder));
}

}  // namespace tq::compare

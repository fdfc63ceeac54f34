#include "TQPipeline/JobStages.hpp"

#include <algorithm>
#include <thread>
#include <utility>

#include "TQDescription/DescriptionWriter.hpp"

namespace tq {

JobStages standardJobStages(std::shared_ptr<URLSession> session) {
  JobStages stages;
  stages.clock = std::make_shared<SystemClock>();
  stages.processorCount = std::max(1u, std::thread::hardware_concurrency());
  stages.extractFrames = [](const std::filesystem::path& clip, const SamplingConfig& config,
                            const ExtractionProgress& progress, std::stop_token stop) {
    return FrameExtractor().extract(clip, config, progress, std::move(stop));
  };
  stages.providers = ProviderFactory(std::move(session), stages.clock);
  stages.writeDescription = [](const DescriptionResult& result, const std::filesystem::path& clip,
                               const OutputConfig& config) { return DescriptionWriter().write(result, clip, config); };
  stages.writePoster = [](ByteView jpegData, const std::filesystem::path& clip, const OutputConfig& config) {
    return DescriptionWriter().writePoster(jpegData, clip, config);
  };
  return stages;
}

}  // namespace tq

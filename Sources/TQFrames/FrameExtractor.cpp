#include "TQFrames/FrameExtractor.hpp"

#include <thread>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQCore/VideoExtensions.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQFrames/FFmpegRouter.hpp"
#include "TQFrames/PlatformDecoding.hpp"
#include "TQFrames/PlatformMetadata.hpp"
#include "TQFrames/SamplingTimes.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

FrameBridge bridgeOver(const fs::path& ffmpeg, const fs::path& ffprobe) {
  const FFmpegBridge bridge(ffmpeg, ffprobe, FFmpegBridge::standardTimeout);
  return {.probe = [bridge](const fs::path& url) { return bridge.probe(url); },
          .extractFrame = [bridge](double seconds, const fs::path& url) { return bridge.extractFrame(seconds, url); }};
}

std::vector<double> required(std::vector<double> times) {
  if (times.empty()) throw TQError::noFramesExtracted();
  return times;
}

}  // namespace

FrameExtractorHost::FrameExtractorHost()
    : locate([](std::string_view binary) { return FFmpegBridge::locate(binary); }),
      makeBridge(bridgeOver),
      processorCount(std::thread::hardware_concurrency()) {}

Extraction FrameExtractor::extract(const fs::path& url, const SamplingConfig& config,
                                   const ExtractionProgress& progress, std::stop_token stop) const {
  throwIfStopped(stop);
  return FFmpegRouter::requiresFFmpeg(url) ? extractThroughBridge(url, config, progress, stop)
                                           : extractOnPlatform(url, config, progress, stop);
}

FrameBridge FrameExtractor::makeFFmpegBridge(const fs::path& url) const {
  const auto ffmpeg = host_.locate("ffmpeg");
  const auto ffprobe = host_.locate("ffprobe");
  if (!ffmpeg || !ffprobe) throw TQError::ffmpegMissing("." + lowercasedExtension(url));
  return host_.makeBridge(*ffmpeg, *ffprobe);
}

Extraction FrameExtractor::extractThroughBridge(const fs::path& url, const SamplingConfig& config,
                                                const ExtractionProgress& progress, const std::stop_token& stop) const {
  const FrameBridge bridge = makeFFmpegBridge(url);
  VideoMetadata meta = bridge.probe(url);
  const FrameAt frameAt = [&](double seconds, const std::stop_token& taskStop) {
    throwIfStopped(taskStop);
    return bridge.extractFrame(seconds, url);
  };
  const auto times = required(sampleTimes(meta.duration, config, frameAt, stop));
  auto frames = extractFramesFFmpegBatch(frameAt, times, {config.maxEdgePixels, config.jpegQuality},
                                         ffmpegWindow(host_.processorCount), progress, stop);
  return {std::move(frames), std::move(meta)};
}

Extraction FrameExtractor::extractOnPlatform(const fs::path& url, const SamplingConfig& config,
                                             const ExtractionProgress& progress, const std::stop_token& stop) const {
  MediaAsset asset(url, stop);
  VideoMetadata meta = loadMetadataPlatform(asset, url);
  const auto times = required(samplePlatformTimes(asset, meta.duration, config, host_.processorCount, stop));
  auto frames = extractPlatformFrames(asset, times, {config.maxEdgePixels, config.jpegQuality}, host_.processorCount,
                                      progress, stop);
  return {std::move(frames), std::move(meta)};
}

}  // namespace tq

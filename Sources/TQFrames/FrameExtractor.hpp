#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQCore/Models/SamplingConfig.hpp"
#include "TQFrames/FrameBatches.hpp"
#include "TQFrames/VideoMetadata.hpp"

namespace tq {

/// What an extraction asks of the ffmpeg tools. Both may be called from several threads at once.
struct FrameBridge {
  std::function<VideoMetadata(const std::filesystem::path& url)> probe;
  std::function<Image(double seconds, const std::filesystem::path& url)> extractFrame;
};

/// What the frame extraction gets from its host; the defaults are the real machine.
struct FrameExtractorHost {
  /// Where a command-line tool lies; absent when it is not installed.
  std::function<std::optional<std::filesystem::path>(std::string_view binary)> locate;
  /// The bridge over the tools that were found.
  std::function<FrameBridge(const std::filesystem::path& ffmpeg, const std::filesystem::path& ffprobe)> makeBridge;
  std::size_t processorCount;

  FrameExtractorHost();
};

struct Extraction {
  std::vector<ExtractedFrame> frames;  ///< in order of time
  VideoMetadata meta;
};

/// Samples a clip: chooses times, decodes the pictures there and encodes them as JPEGs. The file's extension alone
/// decides whether the decoder in this program or the ffmpeg tools do the work; neither steps in for the other. Keeps
/// nothing between calls.
class FrameExtractor {
 public:
  explicit FrameExtractor(FrameExtractorHost host = {}) : host_(std::move(host)) {}

  /// Blocks until the clip is done. Throws `TQError`, `SystemError` or `MediaError` when the clip or a frame cannot be
  /// read, and `Cancelled` on a stop request; an ffmpeg process that runs by then is awaited, and none is started any
  /// more.
  Extraction extract(const std::filesystem::path& url, const SamplingConfig& config,
                     const ExtractionProgress& progress = nullptr, std::stop_token stop = {}) const;

 private:
  FrameBridge makeFFmpegBridge(const std::filesystem::path& url) const;
  Extraction extractThroughBridge(const std::filesystem::path& url, const SamplingConfig& config,
                                  const ExtractionProgress& progress, const std::stop_token& stop) const;
  Extraction extractOnPlatform(const std::filesystem::path& url, const SamplingConfig& config,
                               const ExtractionProgress& progress, const std::stop_token& stop) const;

  FrameExtractorHost host_;
};

}  // namespace tq

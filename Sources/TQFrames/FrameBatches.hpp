#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQFrames/SamplingTimes.hpp"
#include "TQPlatform/Media/PictureRuns.hpp"

namespace tq {

/// Told the finished fraction of a batch, above 0 and up to 1, never falling. Called from the threads of the batch, one
/// at a time.
using ExtractionProgress = std::function<void(double fraction)>;

/// How the frames of a batch are encoded.
struct FrameEncoding {
  std::int64_t maxEdge;  ///< pixels of the longer side at most
  double quality;        ///< 0 to 1
};

/// How many ffmpeg processes work on one batch: half the processors, at least 2 and at most 4.
std::size_t ffmpegWindow(std::size_t processorCount);

/// One frame for each time, by `frameAt` called from up to `window` threads at once. The first error ends the batch: no
/// further frame is begun, those under way are awaited, and the error is thrown. A stop request does so with
/// `Cancelled`.
std::vector<ExtractedFrame> extractFramesFFmpegBatch(const FrameAt& frameAt, const std::vector<double>& times,
                                                     FrameEncoding encoding, std::size_t window,
                                                     const ExtractionProgress& progress, std::stop_token stop);

/// Gives what decodes a run of times: it is called for one after the other, on one thread.
using OpenRun = std::function<FrameAt(const PictureRun& run)>;

/// One frame for each time of all runs, up to `window` runs at once, begun in their order. Times are told apart to a
/// 600th of a second; of those that coincide only the last gets the frame, and the batch fails. A picture that cannot
/// be decoded fails the batch with `TQError::frameExtractionFailed`; of several the first in time. Throws `Cancelled`.
std::vector<ExtractedFrame> extractFramesPlatformBatch(const std::vector<PictureRun>& runs, const OpenRun& open,
                                                       std::size_t window, FrameEncoding encoding,
                                                       const ExtractionProgress& progress, std::stop_token stop);

/// The frames in order. Throws `TQError::frameExtractionFailed` for the first that is missing from `batch`.
std::vector<ExtractedFrame> assembleFrames(std::vector<std::optional<ExtractedFrame>> frames,
                                           const std::vector<double>& times, std::string_view batch);

}  // namespace tq

#pragma once

#include <cstddef>
#include <stop_token>
#include <vector>

#include "TQCore/Models/SamplingConfig.hpp"
#include "TQFrames/FrameBatches.hpp"
#include "TQPlatform/MediaAsset.hpp"

namespace tq {

// How the decoder in this program is used: one open asset, its times told beforehand, one picture after the other.

/// Threads of one decoder: as many as there are processors, up to 4. Several jobs at once share the machine well, since
/// a thread without work costs nothing and a decoder with two does the same work as one with a single.
int decoderThreads(std::size_t processorCount);

/// The times at which a clip of `duration` seconds is sampled, as `sampleTimes` has it. Pictures that serve for a hash
/// only are decoded roughly.
std::vector<double> samplePlatformTimes(MediaAsset& asset, double duration, const SamplingConfig& config, int threads,
                                        std::stop_token stop);

/// The frames at `times`, as `extractFramesPlatformBatch` has it.
std::vector<ExtractedFrame> extractPlatformFrames(MediaAsset& asset, const std::vector<double>& times,
                                                  FrameEncoding encoding, int threads,
                                                  const ExtractionProgress& progress, std::stop_token stop);

}  // namespace tq

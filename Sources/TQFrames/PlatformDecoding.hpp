#pragma once

#include <cstddef>
#include <cstdint>
#include <stop_token>
#include <vector>

#include "TQCore/Models/SamplingConfig.hpp"
#include "TQFrames/FrameBatches.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

// How the decoder in this program is used: its times told beforehand, and the groups of pictures shared out.

/// How the frames of a clip are decoded.
struct DecodingPlan {
  std::size_t readers;  ///< each on a thread of its own, with an open clip and a decoder of its own
  int threads;          ///< of one decoder

  bool operator==(const DecodingPlan&) const = default;
};

/// As much at once as there are processors, up to four: readers as far as there are runs for them, since they wait for
/// nobody, and then threads of one decoder. Of 4K so few that each may keep all the pictures that a codec allows. A
/// clip of pictures beyond 4K is decoded one after the other: each further thread holds more of them. `pixels`: of one
/// picture.
DecodingPlan decodingPlan(std::size_t processorCount, std::size_t runs, std::int64_t pixels);

/// Pixels of a picture of the first video track, as the tables have it; 0 without one.
std::int64_t pictureSize(const MediaAsset& asset);

/// The times at which a clip of `duration` seconds is sampled, as `sampleTimes` has it. Pictures that serve for a hash
/// only are decoded roughly.
std::vector<double> samplePlatformTimes(MediaAsset& asset, double duration, const SamplingConfig& config,
                                        std::size_t processorCount, std::stop_token stop);

/// The frames at `times`, as `extractFramesPlatformBatch` has it.
std::vector<ExtractedFrame> extractPlatformFrames(MediaAsset& asset, const std::vector<double>& times,
                                                  FrameEncoding encoding, std::size_t processorCount,
                                                  const ExtractionProgress& progress, std::stop_token stop);

}  // namespace tq

#pragma once

#include <cstddef>
#include <functional>
#include <stop_token>
#include <vector>

#include "TQCore/Models/SamplingConfig.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq {

/// Decodes the picture at a time in seconds. Throws when there is none, and `Cancelled`.
using FrameAt = std::function<Image(double seconds, std::stop_token stop)>;

/// However many frames the settings ask for and however long a clip claims to be, no more than these are taken: each
/// one is held in memory as a JPEG.
inline constexpr std::size_t mostSamplingTimes = 4096;

/// The times, ascending and in seconds, at which a clip of `duration` seconds is sampled. Only the adaptive strategy
/// looks at pictures. A duration of 0, or none, gives the single time 0. Empty only for an adaptive budget below 1
/// frame. Throws `Cancelled`.
std::vector<double> sampleTimes(double duration, const SamplingConfig& config, const FrameAt& frameAt,
                                std::stop_token stop);

}  // namespace tq

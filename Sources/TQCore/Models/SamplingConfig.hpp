#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "TQCore/RawValue.hpp"
#include "TQCore/RecordJSON.hpp"

namespace tq {

enum class SamplingStrategy { fixedInterval, evenDistribution, adaptive };

template <>
inline constexpr auto rawValues<SamplingStrategy> = std::to_array<std::string_view>({"fixed-interval",
                                                                                     "even-distribution", "adaptive"});

/// How many frames of a clip are taken, where, and how they are encoded. The record holds any values; only the sampling
/// bounds them.
struct SamplingConfig {
  SamplingStrategy strategy = SamplingStrategy::adaptive;
  double intervalSeconds = 5.0;     ///< for `fixedInterval`; below 0.5 counts as 0.5
  std::int64_t evenFrameCount = 8;  ///< for `evenDistribution`, at most `maxFrames`
  std::int64_t maxFrames = 12;
  std::int64_t maxEdgePixels = 1568;  ///< of a frame's longer side
  double jpegQuality = 0.85;          ///< 0 to 1

  bool operator==(const SamplingConfig&) const = default;
};
TQ_RECORD(SamplingConfig);

}  // namespace tq

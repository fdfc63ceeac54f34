#pragma once

#include <cstdint>
#include <stop_token>
#include <vector>

#include "TQFrames/SamplingTimes.hpp"

namespace tq {

/// The hash of the picture at a time.
struct HashedTime {
  double time;  ///< seconds
  std::uint64_t hash;

  bool operator==(const HashedTime&) const = default;
};

/// An even grid of times over a clip: one a second, or 60 in all for clips beyond a minute. None for half a second or
/// less.
std::vector<double> candidateTimes(double duration);

/// Keeps the pictures that differ by at least 12 bits from the last one kept, and brings their number to `maxFrames` by
/// thinning or by adding quiet ones. `hashed` is in order of time; so are the times returned.
std::vector<double> selectByChange(const std::vector<HashedTime>& hashed, std::int64_t maxFrames);

/// The times at which a clip of `duration` seconds (above 0) shows something new, at most `maxFrames`. Pictures are
/// decoded one after the other, at most about 60, and none when the grid fits the budget; one that cannot be decoded is
/// left out, and without any the middle of the clip is all. Throws `Cancelled`.
std::vector<double> adaptiveSample(double duration, std::int64_t maxFrames, const FrameAt& frameAt,
                                   std::stop_token stop);

}  // namespace tq

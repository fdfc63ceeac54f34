#pragma once

#include <stop_token>
#include <vector>

#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

/// Times in seconds, rising, that one generator serves best: what it decodes for one may serve the next.
using PictureRun = std::vector<double>;

/// Divides rising times into runs of which each can be left to a generator of its own: no two of them decode the same
/// group of pictures, and no picture lies within the tolerance of times of both. It depends on nothing but the clip's
/// tables, so the pictures are the same however many generators share the runs. A clip whose tables are so large that
/// they should not be held twice is one run. Throws `MediaError` when it takes too
/// long, and `Cancelled`.
std::vector<PictureRun> pictureRuns(MediaAsset& asset, const std::vector<double>& times, double tolerance,
                                    std::stop_token stop);

}  // namespace tq

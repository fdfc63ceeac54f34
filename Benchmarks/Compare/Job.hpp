#pragma once

#include <filesystem>

namespace tq::compare {

/// A whole run of a job with the mock model, from the clip to sidecars in `folder`. Throws when it does not end well.
void wholeJob(const std::filesystem::path& clip, const std::filesystem::path& folder);

/// What such a run consists of, one call after the other.
void partsOfJob(const std::filesystem::path& clip, const std::filesystem::path& folder);

}  // namespace tq::compare

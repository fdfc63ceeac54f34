#pragma once

#include <filesystem>
#include <vector>

#include "Benchmarks/Shared/Measure.hpp"

namespace tq::compare {

/// All that is compared, on the clips that make-clips put into `folder`. A place for sidecars is made there too.
std::vector<Contest> allContests(const std::filesystem::path& folder);

}  // namespace tq::compare

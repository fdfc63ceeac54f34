#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "TQCore/Models/OutputConfig.hpp"

namespace tq::describe {

/// What there is to do for the files and folders that a user named.
struct Worklist {
  std::vector<std::filesystem::path> clips;  ///< to be described, in order
  std::size_t upToDate = 0;                  ///< clips in folders whose description is as new as they are
};

/// What a user reads about the clips that are up to date; empty when there are none.
std::string upToDateText(const Worklist& work);

/// True when the clip has the sidecar that such a run writes last, and is not newer than it.
bool isDescribed(const std::filesystem::path& clip, const OutputConfig& output);

/// A clip that was named itself is always to be described; one found in a folder when it is not described yet, or
/// `again` says so.
Worklist makeWorklist(const std::vector<std::filesystem::path>& inputs, const OutputConfig& output, bool again);

}  // namespace tq::describe

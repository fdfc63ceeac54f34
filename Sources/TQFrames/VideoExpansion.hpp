#pragma once

#include <filesystem>
#include <vector>

namespace tq {

/// The clips to work on for what a user dropped, opened or named: files and folders in any mix, as absolute paths.
///
/// A file counts by its extension alone (`VideoExtensions`), a link to one too. A folder gives all clips below it,
/// sorted by path, without hidden files and folders, without links, and never anything outside that folder. What does
/// not exist or cannot be read is skipped. The order is that of `urls`; a clip found twice, in whatever spelling, stays
/// at its first place.
std::vector<std::filesystem::path> expandToVideos(const std::vector<std::filesystem::path>& urls);

}  // namespace tq

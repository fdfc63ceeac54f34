#pragma once

#include <cstdint>
#include <optional>

#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/Media/MediaFile.hpp"

namespace tq::libav {

/// How many samples libavformat would pass, at most, to arrange a movie's tables by its edit lists (ISO/IEC 14496-12,
/// 8.6.6). It takes all samples for every edit, listens to nobody meanwhile, and a million edits are twelve megabytes.
/// Nothing when the tables are compressed, too large or not where they belong. Throws as `watch` says, and
/// `SystemError`.
///
/// The boxes are not followed: libavformat takes an edit list anywhere, so every place that spells one counts.
std::optional<std::int64_t> editingWork(const FileReader& file, const Watch& watch);

}  // namespace tq::libav

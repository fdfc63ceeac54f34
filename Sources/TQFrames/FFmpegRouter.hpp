#pragma once

#include <array>
#include <filesystem>
#include <string_view>

namespace tq::FFmpegRouter {

/// Containers that are read through the ffmpeg tools and not by the decoder in this program; lower case.
inline constexpr auto ffmpegOnlyExtensions = std::to_array<std::string_view>({"mkv", "webm", "avi", "mxf"});

/// True when the extension of `url`, in any case, is one of them. The file need not exist.
bool requiresFFmpeg(const std::filesystem::path& url);

}  // namespace tq::FFmpegRouter

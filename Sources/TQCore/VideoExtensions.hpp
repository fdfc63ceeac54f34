#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <string_view>

namespace tq {

/// The extension of the path's last component in lower case and without its point: "mov" for "Clip.MOV". Empty when
/// there is none, as for "clip", "clip." and ".mov".
std::string lowercasedExtension(const std::filesystem::path& url);

/// Which files count as clips, by their names alone.
struct VideoExtensions {
  static constexpr auto supported = std::to_array<std::string_view>({"mov", "mp4", "m4v", "mkv", "webm", "avi", "mxf"});

  /// True when the extension is a supported one in any case of letters. The file need not exist.
  static bool isVideo(const std::filesystem::path& url);
};

}  // namespace tq

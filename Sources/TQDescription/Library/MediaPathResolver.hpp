#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

namespace tq {

/// Finds the clip that a sidecar speaks of. The name in a sidecar is data from the disk and not trusted.
struct MediaPathResolver {
  /// The absolute path of `sourceFilename` in the sidecar's folder; absent when the name is empty, holds a slash or a
  /// zero byte, or leads out of that folder. A relative sidecar is taken from the current folder. Nothing is looked up
  /// on the disk: the clip may be missing, and "." gives the folder itself.
  static std::optional<std::filesystem::path> resolve(const std::filesystem::path& sidecarURL,
                                                      std::string_view sourceFilename);
};

}  // namespace tq

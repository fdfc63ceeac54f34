#pragma once

#include <filesystem>
#include <string>

#include "TQCore/Models/OutputConfig.hpp"

namespace tq {

/// The files that stand beside a clip. Their names are the only way from a clip to its description.
enum class SidecarKind { markdown, json, poster };

/// The last path component without its last extension: "clip.take2" for clip.take2.mov. A name such as ".mov" has no
/// extension and is its own stem.
std::string stemOf(const std::filesystem::path& file);

/// Where the sidecars of that clip are written: the configured folder, or the clip's own.
std::filesystem::path sidecarFolder(const std::filesystem::path& clip, const OutputConfig& config);

/// "<stem>.description.md", ".json" or ".jpg".
std::string sidecarName(const std::string& stem, SidecarKind kind);

/// "<stem>.description (<number>).md", ".json" or ".jpg".
std::string numberedSidecarName(const std::string& stem, int number, SidecarKind kind);

/// True when the last component is the unnumbered name of a JSON sidecar. Upper-case letters make another name.
bool isJSONSidecar(const std::filesystem::path& file);

}  // namespace tq

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "TQFrames/VideoMetadata.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

/// What an open clip tells about itself and its first video track. `url` is the clip's file. Throws
/// `TQError::frameExtractionFailed` when there is no video track.
VideoMetadata loadMetadataPlatform(const MediaAsset& asset, const std::filesystem::path& url);

/// The first place among the clip's metadata that can be read. Never throws.
std::optional<GPS> loadGPSPlatform(const MediaAsset& asset);

/// The four bytes as text, most significant first, when all are printable ASCII; else the number in decimal digits.
std::string fourCC(std::uint32_t code);

}  // namespace tq

#include "TQFrames/PlatformMetadata.hpp"

#include <algorithm>

#include "TQCore/TQError.hpp"
#include "TQFrames/ISO6709.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {

namespace {

std::int64_t fileSizeOrZero(const std::filesystem::path& url) try { return fileSize(url); } catch (const SystemError&) {
  return 0;
}

}  // namespace

VideoMetadata loadMetadataPlatform(const MediaAsset& asset, const std::filesystem::path& url) {
  const auto videos = asset.tracks(MediaType::video);
  if (videos.empty()) throw TQError::frameExtractionFailed("No video track in " + url.filename().string());
  const MediaTrack& track = videos.front();
  VideoMetadata metadata;
  metadata.duration = asset.duration();
  metadata.width = track.naturalWidth;
  metadata.height = track.naturalHeight;
  metadata.frameRate = static_cast<double>(track.nominalFrameRate);
  if (track.mediaSubtype) metadata.codec = fourCC(*track.mediaSubtype);
  metadata.fileSize = fileSizeOrZero(url);
  metadata.gps = loadGPSPlatform(asset);
  return metadata;
}

std::optional<GPS> loadGPSPlatform(const MediaAsset& asset) {
  for (const MetadataItem& item : asset.commonMetadata()) {
    if (item.commonKey != "location" && item.identifier.find("location") == std::string::npos) continue;
    if (auto place = parseISO6709(item.stringValue)) return place;
  }
  return std::nullopt;
}

std::string fourCC(std::uint32_t code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8)
    text.push_back(static_cast<char>(code >> shift & 0xFF));
  const bool printable = std::ranges::all_of(text, [](char letter) { return letter >= 32 && letter <= 126; });
  return printable ? text : std::to_string(code);
}

}  // namespace tq

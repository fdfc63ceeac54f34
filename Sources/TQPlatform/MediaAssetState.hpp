#pragma once

#include <optional>

#include "TQPlatform/Libav.hpp"
#include "TQPlatform/MediaAsset.hpp"
#include "TQPlatform/MediaFile.hpp"

namespace tq {

/// The inside of a `MediaAsset`. It never moves: libavformat keeps the address of the watch.
struct MediaAsset::State {
  State(const std::filesystem::path& path, const MediaLimits& bounds) : limits(bounds), file(path, watch) {}

  const MediaLimits limits;
  libav::Watch watch;
  libav::MediaFile file;
  libav::Owned<AVFormatContext> format;
  std::vector<MediaTrack> tracks;
  std::vector<int> streams;  ///< libavformat's stream of each track
  double origin = 0;         ///< seconds: the time stamp at which the presentation begins
  Seconds fruitless{0};      ///< spent on pictures that could not be had
};

}  // namespace tq

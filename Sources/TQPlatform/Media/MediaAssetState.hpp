#pragma once

#include <atomic>
#include <filesystem>
#include <memory>

#include "TQPlatform/Media/Libav.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"
#include "TQPlatform/Media/MediaFile.hpp"
#include "TQPlatform/Media/PictureMemory.hpp"

struct AVStream;

namespace tq {

/// What all assets share that read one open file, each on a thread of its own: the file, and what it may take.
struct MediaSource {
  MediaSource(const std::filesystem::path& path, const MediaLimits& bounds)
      : name(path.filename()),
        limits(bounds),
        reader(libav::openMediaFile(path)),
        memory(std::make_shared<libav::PictureMemory>(bounds.pictureBytes)) {}

  const std::filesystem::path name;
  const MediaLimits limits;
  const FileReader reader;
  const std::shared_ptr<libav::PictureMemory> memory;
  std::atomic<double> fruitless = 0;  ///< seconds spent on pictures that could not be had
};

/// The inside of a `MediaAsset`. It never moves: libavformat keeps the address of the watch.
struct MediaAsset::State {
  explicit State(std::shared_ptr<MediaSource> opened) : source(std::move(opened)), file(source->reader, watch) {}

  /// The track that pictures come from; null when there is none.
  AVStream* video() const;

  const std::shared_ptr<MediaSource> source;
  const MediaLimits& limits = source->limits;
  libav::Watch watch;
  libav::MediaFile file;
  libav::Owned<AVFormatContext> format;
  std::vector<MediaTrack> tracks;
  std::vector<int> streams;  ///< libavformat's stream of each track
  double origin = 0;         ///< seconds: the time stamp at which the presentation begins
};

}  // namespace tq

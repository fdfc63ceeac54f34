#pragma once

#include <cstdint>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// What one clip may take before it is refused. The defaults leave room for ten hours at 120 frames a second on a slow
/// network disk and for pictures of 8K; tests pass smaller ones.
struct MediaLimits {
  /// For reading the tables: as long as the ffprobe of the other containers gets.
  Seconds opening{300};

  /// For all the pictures together that could not be had: as long as one ffmpeg process gets. A picture that was had
  /// gives nothing back of it, and where it is used up none is tried any more.
  Seconds withoutPicture{300};

  /// Tracks of all kinds: more than any camera or editing program writes.
  int tracks = 256;

  /// Samples that the tables of all tracks list together; 40 bytes each while the clip is open.
  std::int64_t samples = std::int64_t{1} << 24;

  /// The same times the tracks: libavformat looks at every track for each sample that it passes over and listens to
  /// nobody meanwhile, which comes to seconds.
  std::int64_t samplesByTracks = std::int64_t{1} << 28;

  /// Samples passed to arrange the tables by edit lists, which takes five seconds; of a movie that asks for more only
  /// its first edit counts.
  std::int64_t editingWork = std::int64_t{1} << 25;

  /// Bytes of the pictures that the decoders of a clip hold at once: twenty of 8K with ten bits, and a decoder keeps
  /// seventeen.
  std::int64_t pictureBytes = std::int64_t{1} << 31;
};

}  // namespace tq

#pragma once

#include "TQPlatform/Libav.hpp"
#include "TQPlatform/MediaAsset.hpp"

namespace tq {

/// The inside of a `MediaAsset`. It never moves: libavformat keeps its address for the interrupt callback.
struct MediaAsset::State {
  std::stop_token stop;  ///< asked by every read
  libav::Owned<AVFormatContext> format;
  std::vector<MediaTrack> tracks;
  std::vector<int> streams;  ///< libavformat's stream of each track
  double origin = 0;         ///< seconds: the time stamp at which the presentation begins

  /// Makes `token` the one that reads listen to, for the scope of the returned guard.
  struct Listening {
    Listening(State& state, std::stop_token token) : state_(state) { state_.stop = std::move(token); }
    ~Listening() { state_.stop = {}; }
    Listening(const Listening&) = delete;
    Listening& operator=(const Listening&) = delete;

   private:
    State& state_;
  };
};

}  // namespace tq

#include "TQPlatform/Media/PictureRuns.hpp"

#include <cstdint>
#include <optional>
#include <utility>

#include "TQPlatform/Media/MediaAssetState.hpp"
#include "TQPlatform/Media/TrackIndex.hpp"

extern "C" {
#include <libavformat/avformat.h>
}

namespace tq {

namespace {

/// 40 bytes each, for every time that the clip is open: two hours at 60 frames a second with their sound.
constexpr std::int64_t mostSamples = std::int64_t{1} << 20;

}  // namespace

std::vector<PictureRun> pictureRuns(MediaAsset& asset, const std::vector<double>& times, double tolerance,
                                    std::stop_token stop) {
  if (times.empty()) return {};
  MediaAsset::State& state = asset.state();
  AVStream* video = state.video();
  if (!video) return {times};
  const libav::Watch::Scope scope(state.watch, std::move(stop), state.limits.opening);
  libav::TrackIndex index(*state.format, *video, state.origin);
  index.limit(avio_size(state.format->pb));
  if (index.isIncomplete() || libav::listedSamples(*state.format) > mostSamples) return {times};
  std::vector<PictureRun> runs;
  std::optional<libav::KeyFrame> last;
  for (const double time : times) {
    state.watch.check();
    const auto key = index.keyFor(time, tolerance);
    if (runs.empty() || (key != last && time - runs.back().back() > 2 * tolerance)) runs.emplace_back();
    runs.back().push_back(time);
    last = key;
  }
  return runs;
}

}  // namespace tq

#include "TQFrames/PlatformDecoding.hpp"

#include <algorithm>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "TQFrames/AdaptiveSampling.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"
#include "TQPlatform/Media/PictureRuns.hpp"

namespace tq {

namespace {

constexpr double tolerance = 0.2;  // seconds

/// The clip as often as it is open: once for each reader at work.
class OpenClips {
 public:
  explicit OpenClips(MediaAsset& first) : first_(first), idle_{&first} {}

  MediaAsset& take(const std::stop_token& stop) {
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        MediaAsset* clip = idle_.back();
        idle_.pop_back();
        return *clip;
      }
    }
    MediaAsset clip = first_.another(stop);
    const std::lock_guard lock(mutex_);
    return others_.emplace_back(std::move(clip));
  }

  void giveBack(MediaAsset& clip) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(&clip);
  }

 private:
  const MediaAsset& first_;
  std::mutex mutex_;
  std::list<MediaAsset> others_;
  std::vector<MediaAsset*> idle_;
};

/// A generator on a clip that is open anyway, or is opened for it.
class Reader {
 public:
  Reader(OpenClips& clips, const PictureRun& run, int threads, const std::stop_token& stop)
      : clips_(clips), clip_(clips.take(stop)), generator_(std::in_place, clip_, tolerance, threads) {
    generator_->expect(run);
  }

  ~Reader() {
    generator_.reset();
    clips_.giveBack(clip_);
  }

  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  Image image(double seconds, const std::stop_token& stop) { return generator_->image(seconds, stop); }

 private:
  OpenClips& clips_;
  MediaAsset& clip_;
  std::optional<ImageGenerator> generator_;
};

/// Opens with the first picture, so that a clip that cannot be opened again fails that one.
FrameAt picturesOf(OpenClips& clips, const PictureRun& run, int threads) {
  const auto reader = std::make_shared<std::optional<Reader>>();
  return [&clips, &run, threads, reader](double seconds, const std::stop_token& stop) {
    if (!*reader) reader->emplace(clips, run, threads, stop);
    return (*reader)->image(seconds, stop);
  };
}

}  // namespace

DecodingPlan decodingPlan(std::size_t processorCount, std::size_t runs, std::int64_t pixels) {
  constexpr std::int64_t fullHD = 1920 * 1080, fourK = 4096 * 2304;
  if (pixels > fourK) return {1, 1};
  const std::size_t atOnce = std::clamp(processorCount, std::size_t{1}, std::size_t{4});
  constexpr std::int64_t picturesHeld = 17, bytesOfAPixel = 6;  // at most, of a decoder
  const std::int64_t fitting = MediaLimits().pictureBytes / (picturesHeld * bytesOfAPixel * std::max(pixels, fullHD));
  const std::size_t readers = std::clamp(runs, std::size_t{1}, std::min(atOnce, static_cast<std::size_t>(fitting)));
  return {readers, static_cast<int>(atOnce / readers)};
}

std::int64_t pictureSize(const MediaAsset& asset) {
  const auto videos = asset.tracks(MediaType::video);
  return videos.empty() ? 0 : std::int64_t{videos.front().naturalWidth} * videos.front().naturalHeight;
}

std::vector<double> samplePlatformTimes(MediaAsset& asset, double duration, const SamplingConfig& config,
                                        std::size_t processorCount, std::stop_token stop) {
  const DecodingPlan plan = decodingPlan(processorCount, 1, pictureSize(asset));
  ImageGenerator generator(asset, tolerance, plan.threads, Fidelity::approximate);
  generator.expect(candidateTimes(duration));
  const FrameAt frameAt = [&](double seconds, const std::stop_token& itsStop) {
    return generator.image(seconds, itsStop);
  };
  return sampleTimes(duration, config, frameAt, std::move(stop));
}

std::vector<ExtractedFrame> extractPlatformFrames(MediaAsset& asset, const std::vector<double>& times,
                                                  FrameEncoding encoding, std::size_t processorCount,
                                                  const ExtractionProgress& progress, std::stop_token stop) {
  const std::vector<PictureRun> runs = pictureRuns(asset, times, tolerance, stop);
  const DecodingPlan plan = decodingPlan(processorCount, runs.size(), pictureSize(asset));
  OpenClips clips(asset);
  const OpenRun open = [&](const PictureRun& run) { return picturesOf(clips, run, plan.threads); };
  return extractFramesPlatformBatch(runs, open, plan.readers, encoding, progress, std::move(stop));
}

}  // namespace tq

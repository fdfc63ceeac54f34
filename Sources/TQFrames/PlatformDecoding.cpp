#include "TQFrames/PlatformDecoding.hpp"

#include <algorithm>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "TQFrames/AdaptiveSampling.hpp"
#include "TQPlatform/ImageGenerator.hpp"
#include "TQPlatform/PictureRuns.hpp"

namespace tq {

namespace {

constexpr double tolerance = 0.2;  // seconds

/// The clip as often as it is open, each time with a decoder.
class Readers {
 public:
  struct Reader {
    Reader(MediaAsset& clip, int threads) : generator(clip, tolerance, threads) {}
    Reader(MediaAsset&& another, int threads) : own(std::move(another)), generator(*own, tolerance, threads) {}

    std::optional<MediaAsset> own;
    ImageGenerator generator;
  };

  Readers(MediaAsset& first, int threads) : first_(first), threads_(threads) {
    idle_.push_back(&readers_.emplace_back(first, threads));
  }

  Reader& take(const std::stop_token& stop) {
    {
      const std::lock_guard lock(mutex_);
      if (!idle_.empty()) {
        Reader* reader = idle_.back();
        idle_.pop_back();
        return *reader;
      }
    }
    MediaAsset another = first_.another(stop);
    const std::lock_guard lock(mutex_);
    return readers_.emplace_back(std::move(another), threads_);
  }

  void giveBack(Reader& reader) {
    const std::lock_guard lock(mutex_);
    idle_.push_back(&reader);
  }

 private:
  const MediaAsset& first_;
  const int threads_;
  std::mutex mutex_;
  std::list<Reader> readers_;
  std::vector<Reader*> idle_;
};

/// A reader at work on a run.
class Reading {
 public:
  Reading(Readers& readers, const PictureRun& run, const std::stop_token& stop)
      : readers_(readers), reader_(readers.take(stop)) {
    reader_.generator.startAnew(run);
  }

  ~Reading() { readers_.giveBack(reader_); }

  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

  Image image(double seconds, const std::stop_token& stop) { return reader_.generator.image(seconds, stop); }

 private:
  Readers& readers_;
  Readers::Reader& reader_;
};

/// Opens with the first picture, so that a clip that cannot be opened again fails that one.
FrameAt picturesOf(Readers& readers, const PictureRun& run) {
  const auto reading = std::make_shared<std::optional<Reading>>();
  return [&readers, &run, reading](double seconds, const std::stop_token& stop) {
    if (!*reading) reading->emplace(readers, run, stop);
    return (*reading)->image(seconds, stop);
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
  Readers readers(asset, plan.threads);
  const OpenRun open = [&](const PictureRun& run) { return picturesOf(readers, run); };
  return extractFramesPlatformBatch(runs, open, plan.readers, encoding, progress, std::move(stop));
}

}  // namespace tq

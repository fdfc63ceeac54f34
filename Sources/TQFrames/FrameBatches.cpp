#include "TQFrames/FrameBatches.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQFrames/FrameImages.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace {

/// All frames of a clip are held at once; no settings and no clip may make them fill the memory.
constexpr std::size_t mostBytes = std::size_t{2} << 30;

ExtractedFrame encoded(const Image& image, double time, FrameEncoding encoding) {
  const Image small = downscale(image, encoding.maxEdge);
  return {.timecode = {time},
          .jpegData = jpegData(small, encoding.quality),
          .width = small.width(),
          .height = small.height()};
}

/// The frames of a batch as they come in, from any thread.
class Collection {
 public:
  Collection(std::size_t count, const ExtractionProgress& progress) : frames_(count), progress_(progress) {}

  void store(std::size_t index, ExtractedFrame frame) {
    const std::lock_guard lock(mutex_);
    bytes_ += frame.jpegData.size();
    if (bytes_ > mostBytes) throw TQError::frameExtractionFailed("the frames would take too much memory");
    frames_[index] = std::move(frame);
    ++finished_;
    if (progress_) progress_(static_cast<double>(finished_) / static_cast<double>(frames_.size()));
  }

  std::vector<std::optional<ExtractedFrame>> take() { return std::move(frames_); }

 private:
  std::mutex mutex_;
  std::vector<std::optional<ExtractedFrame>> frames_;
  const ExtractionProgress& progress_;
  std::size_t finished_ = 0;
  std::size_t bytes_ = 0;
};

/// The failure of the earliest run. Runs begin in order, so all before it have begun and tell of theirs.
class FirstFailure {
 public:
  void note(std::size_t run, std::exception_ptr error) {
    const std::lock_guard lock(mutex_);
    if (run >= run_) return;
    run_ = run;
    error_ = std::move(error);
  }

  bool isBefore(std::size_t run) const {
    const std::lock_guard lock(mutex_);
    return run_ < run;
  }

  void rethrow() const {
    if (error_) std::rethrow_exception(error_);
  }

 private:
  mutable std::mutex mutex_;
  std::size_t run_ = SIZE_MAX;
  std::exception_ptr error_;
};

std::int64_t inSixHundredths(double time) {
  constexpr double limit = 9e15;
  return std::llround(std::clamp(time * 600, -limit, limit));
}

Image platformImage(const FrameAt& frameAt, double time, const std::stop_token& stop) try {
  return frameAt(time, stop);
} catch (const Cancelled&) {
  throw;
} catch (const std::exception& error) {
  throw TQError::frameExtractionFailed("could not extract frame at " + shortestText(time) +
                                       "s: " + userFacingDescription(error));
}

}  // namespace

std::size_t ffmpegWindow(std::size_t processorCount) {
  return std::max(std::size_t{2}, std::min(std::size_t{4}, processorCount / 2));
}

std::vector<ExtractedFrame> extractFramesFFmpegBatch(const FrameAt& frameAt, const std::vector<double>& times,
                                                     FrameEncoding encoding, std::size_t window,
                                                     const ExtractionProgress& progress, std::stop_token stop) {
  Collection collection(times.size(), progress);
  forEachWindowed(times.size(), window, stop, [&](std::size_t index, std::stop_token taskStop) {
    collection.store(index, encoded(frameAt(times[index], taskStop), times[index], encoding));
  });
  return assembleFrames(collection.take(), times, "ffmpeg batch");
}

std::vector<ExtractedFrame> extractFramesPlatformBatch(const std::vector<PictureRun>& runs, const OpenRun& open,
                                                       std::size_t window, FrameEncoding encoding,
                                                       const ExtractionProgress& progress, std::stop_token stop) {
  std::vector<double> times;
  for (const PictureRun& run : runs)
    times.insert(times.end(), run.begin(), run.end());
  std::map<std::int64_t, std::size_t> indexOf;
  for (std::size_t index = 0; index < times.size(); ++index)
    indexOf[inSixHundredths(times[index])] = index;
  Collection collection(times.size(), progress);
  FirstFailure failure;
  forEachWindowed(runs.size(), window, stop, [&](std::size_t run, const std::stop_token& runStop) {
    try {
      const FrameAt frameAt = open(runs[run]);
      for (const double requested : runs[run]) {
        if (failure.isBefore(run)) return;
        throwIfStopped(runStop);
        const std::size_t index = indexOf.at(inSixHundredths(requested));
        const Image image = platformImage(frameAt, times[index], runStop);
        collection.store(index, encoded(image, times[index], encoding));
      }
    } catch (const Cancelled&) {
      throw;
    } catch (...) {
      failure.note(run, std::current_exception());
    }
  });
  failure.rethrow();
  return assembleFrames(collection.take(), times, "AVFoundation batch");
}

std::vector<ExtractedFrame> assembleFrames(std::vector<std::optional<ExtractedFrame>> frames,
                                           const std::vector<double>& times, std::string_view batch) {
  std::vector<ExtractedFrame> assembled;
  assembled.reserve(frames.size());
  for (std::size_t index = 0; index < frames.size(); ++index) {
    if (!frames[index])
      throw TQError::frameExtractionFailed("frame " + std::to_string(index) + " at " + shortestText(times[index]) +
                                           "s missing from " + std::string(batch));
    assembled.push_back(std::move(*frames[index]));
  }
  return assembled;
}

}  // namespace tq

#include "TQFrames/PlatformDecoding.hpp"

#include <algorithm>

#include "TQFrames/AdaptiveSampling.hpp"
#include "TQPlatform/ImageGenerator.hpp"

namespace tq {

namespace {

constexpr double tolerance = 0.2;  // seconds

FrameAt picturesOf(ImageGenerator& generator, const std::vector<double>& times) {
  generator.expect(times);
  return [&generator](double seconds, const std::stop_token& stop) { return generator.image(seconds, stop); };
}

}  // namespace

int decoderThreads(std::size_t processorCount) {
  return static_cast<int>(std::clamp(processorCount, std::size_t{1}, std::size_t{4}));
}

std::vector<double> samplePlatformTimes(MediaAsset& asset, double duration, const SamplingConfig& config, int threads,
                                        std::stop_token stop) {
  ImageGenerator generator(asset, tolerance, threads, Fidelity::approximate);
  return sampleTimes(duration, config, picturesOf(generator, candidateTimes(duration)), std::move(stop));
}

std::vector<ExtractedFrame> extractPlatformFrames(MediaAsset& asset, const std::vector<double>& times,
                                                  FrameEncoding encoding, int threads,
                                                  const ExtractionProgress& progress, std::stop_token stop) {
  ImageGenerator generator(asset, tolerance, threads);
  return extractFramesPlatformBatch(picturesOf(generator, times), times, encoding, progress, std::move(stop));
}

}  // namespace tq

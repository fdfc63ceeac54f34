#include "TQFrames/SamplingTimes.hpp"

#include <algorithm>
#include <cmath>

#include "TQFrames/AdaptiveSampling.hpp"

namespace tq {

namespace {

std::vector<double> atFixedInterval(double duration, double interval, std::int64_t maxFrames) {
  constexpr double shortestInterval = 0.5;  // seconds
  const double step = interval > shortestInterval ? interval : shortestInterval;
  std::vector<double> times;
  for (double time = step / 2; time < duration && std::ssize(times) < maxFrames; time += step)
    times.push_back(time);
  if (times.empty()) times.push_back(duration / 2);
  return times;
}

std::vector<double> evenlyDistributed(double duration, std::int64_t count) {
  if (count <= 1) return {duration / 2};
  const double step = duration / static_cast<double>(count + 1);
  std::vector<double> times;
  for (std::int64_t index = 1; index <= count; ++index)
    times.push_back(step * static_cast<double>(index));
  return times;
}

}  // namespace

std::vector<double> sampleTimes(double duration, const SamplingConfig& config, const FrameAt& frameAt,
                                std::stop_token stop) {
  if (!(duration > 0) || !std::isfinite(duration)) return {0.0};
  const std::int64_t maxFrames = std::min(config.maxFrames, std::int64_t{mostSamplingTimes});
  switch (config.strategy) {
    case SamplingStrategy::fixedInterval: return atFixedInterval(duration, config.intervalSeconds, maxFrames);
    case SamplingStrategy::evenDistribution:
      return evenlyDistributed(duration, std::min(config.evenFrameCount, maxFrames));
    case SamplingStrategy::adaptive: return adaptiveSample(duration, maxFrames, frameAt, stop);
  }
  return {duration / 2};
}

}  // namespace tq

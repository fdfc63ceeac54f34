#include "TQFrames/AdaptiveSampling.hpp"

#include <algorithm>
#include <exception>
#include <iterator>
#include <optional>

#include "TQFrames/EvenlySpacedSubset.hpp"
#include "TQFrames/PerceptualHash.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {

namespace {

constexpr int changeBits = 12;

std::vector<HashedTime> changes(const std::vector<HashedTime>& hashed) {
  std::vector<HashedTime> kept{hashed.front()};
  for (const HashedTime& entry : hashed)
    if (hammingDistance(entry.hash, kept.back().hash) >= changeBits) kept.push_back(entry);
  return kept;
}

/// Adds entries of `hashed` that are not kept yet, spread over the clip, until `wanted` are there.
void fillUp(std::vector<HashedTime>& kept, const std::vector<HashedTime>& hashed, std::size_t wanted,
            std::int64_t maxFrames) {
  std::vector<HashedTime> remaining;
  std::ranges::copy_if(hashed, std::back_inserter(remaining), [&](const HashedTime& entry) {
    return std::ranges::find(kept, entry.time, &HashedTime::time) == kept.end();
  });
  const std::size_t need = wanted - kept.size();
  const std::size_t stride = need <= remaining.size() ? remaining.size() / need : 1;
  for (std::size_t index = 0; index < remaining.size() && std::ssize(kept) < maxFrames; index += stride)
    kept.push_back(remaining[index]);
}

std::optional<std::uint64_t> hashAt(double time, const FrameAt& frameAt, const std::stop_token& stop) {
  throwIfStopped(stop);
  try {
    return perceptualHash(frameAt(time, stop));
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

std::vector<double> candidateTimes(double duration) {
  const double step = std::max(duration / 60, 1.0);
  std::vector<double> times;
  for (double time = step / 2; time < duration; time += step)
    times.push_back(time);
  return times;
}

std::vector<double> selectByChange(const std::vector<HashedTime>& hashed, std::int64_t maxFrames) {
  if (hashed.empty()) return {};
  std::vector<HashedTime> kept = changes(hashed);
  if (std::ssize(kept) > maxFrames) {
    kept = evenlySpacedSubset(kept, maxFrames);
  } else if (const auto wanted = static_cast<std::size_t>(std::min<std::int64_t>(std::ssize(hashed), maxFrames));
             kept.size() < wanted) {
    fillUp(kept, hashed, wanted, maxFrames);
  }
  std::vector<double> times;
  std::ranges::transform(kept, std::back_inserter(times), &HashedTime::time);
  std::ranges::sort(times);
  return times;
}

std::vector<double> adaptiveSample(double duration, std::int64_t maxFrames, const FrameAt& frameAt,
                                   std::stop_token stop) {
  const std::vector<double> middle{duration / 2};
  const std::vector<double> candidates = candidateTimes(duration);
  if (candidates.empty()) return middle;
  if (std::ssize(candidates) <= maxFrames) return candidates;
  std::vector<HashedTime> hashed;
  for (const double time : candidates)
    if (const auto hash = hashAt(time, frameAt, stop)) hashed.push_back({time, *hash});
  return hashed.empty() ? middle : selectByChange(hashed, maxFrames);
}

}  // namespace tq

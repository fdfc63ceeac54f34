#include "Benchmarks/Compare/Memory.hpp"

#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>

#include "Benchmarks/Compare/Floor.hpp"
#include "TQFrames/PlatformDecoding.hpp"
#include "TQPlatform/Media/MediaAssetState.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

constexpr const char* names[] = {"--report-peak", "--report-floor-peak"};
constexpr SamplingConfig twelveFrames{.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 12};

/// "VmHWM": the largest resident set so far, in bytes (proc(5)).
double peakOfThisProcess() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) * 1024;
  throw std::runtime_error("no VmHWM");
}

/// Bytes of the pictures held at once.
std::int64_t extractAsTheProduct(const fs::path& clip) {
  MediaAsset asset(clip);
  extractPlatformFrames(asset, sampleTimes(asset.duration(), twelveFrames, nullptr, {}),
                        {twelveFrames.maxEdgePixels, twelveFrames.jpegQuality}, std::thread::hardware_concurrency(),
                        nullptr, {});
  return asset.state().source->memory->peak();
}

std::int64_t extractAsTheFloor(const fs::path& clip) {
  floorFrames(clip, sampleTimes(MediaAsset(clip).duration(), twelveFrames, nullptr, {}),
              static_cast<int>(twelveFrames.maxEdgePixels), static_cast<int>(100 * twelveFrames.jpegQuality), 1, 1);
  return 0;
}

}  // namespace

bool reportPeak(const std::string& who, const fs::path& clip) {
  if (who != names[0] && who != names[1]) return false;
  const double before = peakOfThisProcess();
  const std::int64_t held = who == names[0] ? extractAsTheProduct(clip) : extractAsTheFloor(clip);
  std::cout << static_cast<std::int64_t>(peakOfThisProcess() - before) << " " << held << "\n";
  return true;
}

Peak peakInPictures(const fs::path& clip, Extractor extractor) {
  const ChildResult result = runChild("/proc/self/exe", {names[static_cast<std::size_t>(extractor)], clip.string()},
                                      {.time = std::chrono::minutes(5)});
  if (result.timedOut || result.status != 0) throw std::runtime_error("the extraction failed");
  const MediaTrack track = MediaAsset(clip).tracks(MediaType::video).at(0);
  const double picture = 1.5 * track.naturalWidth * track.naturalHeight;
  std::istringstream figures{std::string(textOf(result.output))};
  Peak peak;
  figures >> peak.resident >> peak.held;
  return {peak.resident / picture, peak.held / picture};
}

}  // namespace tq::compare

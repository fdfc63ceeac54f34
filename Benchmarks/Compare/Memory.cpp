#include "Benchmarks/Compare/Memory.hpp"

#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>

#include "TQFrames/FrameExtractor.hpp"
#include "TQPlatform/ChildProcess.hpp"
#include "TQPlatform/MediaAsset.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

/// "VmHWM": the largest resident set so far, in bytes (proc(5)).
double peakOfThisProcess() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);)
    if (line.starts_with("VmHWM:")) return std::stod(line.substr(6)) * 1024;
  throw std::runtime_error("no VmHWM");
}

}  // namespace

void extractAndReportPeak(const fs::path& clip) {
  const double before = peakOfThisProcess();
  FrameExtractor().extract(clip, {.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 12});
  std::cout << static_cast<std::int64_t>(peakOfThisProcess() - before) << "\n";
}

double peakInPictures(const fs::path& clip) {
  const ChildResult result =
      runChild("/proc/self/exe", {"--report-peak", clip.string()}, {.time = std::chrono::minutes(5)});
  if (result.timedOut || result.status != 0) throw std::runtime_error("the extraction failed");
  const MediaTrack track = MediaAsset(clip).tracks(MediaType::video).at(0);
  return std::stod(std::string(textOf(result.output))) / (1.5 * track.naturalWidth * track.naturalHeight);
}

}  // namespace tq::compare

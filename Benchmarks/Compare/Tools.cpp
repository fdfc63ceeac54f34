#include "Benchmarks/Compare/Tools.hpp"

#include <stdexcept>
#include <string>

#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

Bytes outputOf(const fs::path& tool, const std::vector<std::string>& arguments) {
  ChildResult result = runChild(tool, arguments, {.time = std::chrono::minutes(30)});
  if (result.timedOut || result.status != 0) throw std::runtime_error(tool.filename().string() + " failed");
  return std::move(result.output);
}

Bytes ffmpeg(const std::vector<std::string>& arguments) {
  return outputOf("/usr/bin/ffmpeg", arguments);
}

}  // namespace

void ffmpegFrames(const fs::path& clip, const std::vector<double>& times, std::size_t width) {
  forEachWindowed(times.size(), width, {}, [&](std::size_t index, const std::stop_token&) {
    const Bytes jpeg = ffmpeg({"-v", "error", "-ss", std::to_string(times[index]), "-i", clip.string(), "-frames:v",
                               "1", "-f", "image2pipe", "-vcodec", "mjpeg", "-q:v", "2", "-"});
    if (jpeg.empty()) throw std::runtime_error("ffmpeg gave no frame");
  });
}

void ffmpegScenes(const fs::path& clip) {
  ffmpeg({"-v", "error", "-i", clip.string(), "-an", "-vf", "select='gt(scene,0.3)'", "-f", "null", "-"});
}

void opensslDigest(const fs::path& file) {
  outputOf("/usr/bin/openssl", {"dgst", "-sha256", file.string()});
}

}  // namespace tq::compare

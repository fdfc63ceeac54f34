#include "Benchmarks/Compare/Contests.hpp"

#include <stdexcept>
#include <string>
#include <thread>

#include "Benchmarks/Compare/Floor.hpp"
#include "Benchmarks/Compare/Job.hpp"
#include "Benchmarks/Compare/Tools.hpp"
#include "TQCore/FileHash.hpp"
#include "TQFrames/AdaptiveSampling.hpp"
#include "TQFrames/FrameExtractor.hpp"
#include "TQFrames/PlatformDecoding.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"
#include "TQPlatform/Media/PictureRuns.hpp"

namespace tq::compare {

namespace fs = std::filesystem;

namespace {

constexpr double floorGoal = 1.1, digestGoal = 1.05;
constexpr SamplingConfig twelveFrames{.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 12};

/// A kind of clip, and how many times faster than ffmpeg the product shall be on the long one.
struct Subject {
  std::string name;
  std::string file;
  std::optional<double> framesGoal;
  std::optional<double> passGoal;
  std::optional<double> scenesGoal;
};

DecodingPlan planFor(const fs::path& clip, const std::vector<double>& times) {
  MediaAsset asset(clip);
  return decodingPlan(std::thread::hardware_concurrency(), pictureRuns(asset, times, 0.2, {}).size(),
                      pictureSize(asset));
}

DecodingPlan planForPass(const fs::path& clip) {
  return decodingPlan(std::thread::hardware_concurrency(), 1, pictureSize(MediaAsset(clip)));
}

std::vector<double> twelveTimes(const fs::path& clip) {
  return sampleTimes(MediaAsset(clip).duration(), twelveFrames, nullptr, {});
}

std::vector<Bytes> ourFrames(const fs::path& clip) {
  std::vector<Bytes> jpegs;
  for (auto& frame : FrameExtractor().extract(clip, twelveFrames).frames)
    jpegs.push_back(std::move(frame.jpegData));
  return jpegs;
}

/// With as many readers and threads as the product has.
std::vector<Bytes> floorsFrames(const fs::path& clip) {
  const std::vector<double> times = twelveTimes(clip);
  const auto [readers, threads] = planFor(clip, times);
  return floorFrames(clip, times, static_cast<int>(twelveFrames.maxEdgePixels),
                     static_cast<int>(100 * twelveFrames.jpegQuality), readers, threads);
}

std::vector<double> ourChoice(const fs::path& clip) {
  MediaAsset asset(clip);
  return samplePlatformTimes(asset, asset.duration(), {}, std::thread::hardware_concurrency(), {});
}

std::vector<double> floorsChoice(const fs::path& clip) {
  const std::vector<double> times = candidateTimes(MediaAsset(clip).duration());
  const std::vector<std::uint64_t> hashes = floorHashes(clip, times, planForPass(clip).threads);
  std::vector<HashedTime> hashed;
  for (std::size_t index = 0; index < times.size(); ++index)
    hashed.push_back({times[index], hashes[index]});
  return selectByChange(hashed, SamplingConfig().maxFrames);
}

/// Only a floor that gives the very same does the same work.
void require(bool same) {
  if (!same) throw std::runtime_error("the floor gives something else");
}

Contest frames(const Subject& subject, const std::string& length, const fs::path& clip,
               const std::optional<double>& goal) {
  return {.subject = "12 frames, " + subject.name + ", " + length,
          .check = [clip] { require(ourFrames(clip) == floorsFrames(clip)); },
          .ours = [clip] { ourFrames(clip); },
          .opponents = {{"12 ffmpeg processes, one after the other",
                         [clip] { ffmpegFrames(clip, twelveTimes(clip), 1); }, Reading::timesFaster, goal},
                        {"the floor on libav", [clip] { floorsFrames(clip); }, Reading::timesTheTime, floorGoal}}};
}

Contest adaptivePass(const Subject& subject, const fs::path& clip) {
  const auto processes = [clip] { ffmpegFrames(clip, candidateTimes(MediaAsset(clip).duration()), 2); };
  return {.subject = "adaptive pass, " + subject.name + ", 10 min",
          .check = [clip] { require(ourChoice(clip) == floorsChoice(clip)); },
          .ours = [clip] { ourChoice(clip); },
          .opponents = {{"60 ffmpeg processes, two at once", processes, Reading::timesFaster, subject.passGoal},
                        {"the floor on libav", [clip] { floorsChoice(clip); }, Reading::timesTheTime, floorGoal}}};
}

Contest wholeDecode(const Subject& subject, const fs::path& clip) {
  return {.subject = "adaptive pass in place of a full decode, " + subject.name + ", 10 min",
          .check = nullptr,
          .ours = [clip] { ourChoice(clip); },
          .opponents = {{"one full decode with ffmpeg's scene filter", [clip] { ffmpegScenes(clip); },
                         Reading::timesFaster, subject.scenesGoal}},
          .slow = true};
}

Contest digest(const fs::path& file) {
  return {.subject = "SHA-256 of " + std::to_string(fs::file_size(file) >> 20) + " MiB",
          .check = nullptr,
          .ours = [file] { FileHash::sha256Hex(file, 1 << 20); },
          .opponents = {{"openssl dgst", [file] { opensslDigest(file); }, Reading::timesTheTime, digestGoal}}};
}

Contest job(const fs::path& clip, const fs::path& folder) {
  return {.subject = "whole job with the mock model, 10 min",
          .check = nullptr,
          .ours = [=] { wholeJob(clip, folder); },
          .opponents = {{"its parts, one call after the other", [=] { partsOfJob(clip, folder); },
                         Reading::timesTheTime, std::nullopt}}};
}

}  // namespace

std::vector<Contest> allContests(const fs::path& folder) {
  const std::vector<Subject> subjects{{"1080p H.264, key frame every 30", "h264-30", 7.0, 3.0, 10.0},
                                      {"1080p H.264, key frame every 250", "h264-250", 2.3, std::nullopt, 2.0},
                                      {"2160p HEVC, key frame every 60", "hevc-2160p", {}, {}, {}}};
  std::vector<Contest> contests;
  for (const Subject& subject : subjects) {
    contests.push_back(frames(subject, "10 min", folder / (subject.file + "-10min.mp4"), subject.framesGoal));
    contests.push_back(frames(subject, "10 s", folder / (subject.file + "-10s.mp4"), std::nullopt));
  }
  for (const Subject& subject : subjects)
    contests.push_back(adaptivePass(subject, folder / (subject.file + "-10min.mp4")));
  const fs::path large = folder / "h264-30-10min.mp4";
  contests.push_back(digest(large));
  contests.push_back(job(large, folder / "sidecars"));
  for (const Subject& subject : subjects)
    if (subject.scenesGoal) contests.push_back(wholeDecode(subject, folder / (subject.file + "-10min.mp4")));
  return contests;
}

}  // namespace tq::compare

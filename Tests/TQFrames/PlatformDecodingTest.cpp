#include <gmock/gmock.h>

#include "Support/ClipMaker.hpp"
#include "TQFrames/PlatformDecoding.hpp"
#include "TQPlatform/Cancelled.hpp"
#include "TQPlatform/ImageGenerator.hpp"

namespace tq::test {
namespace {

TEST(DecoderThreads, AreThoseOfTheMachineUpToFour) {
  EXPECT_EQ(decoderThreads(0), 1) << "an unknown number";
  EXPECT_EQ(decoderThreads(1), 1);
  EXPECT_EQ(decoderThreads(2), 2);
  EXPECT_EQ(decoderThreads(4), 4);
  EXPECT_EQ(decoderThreads(128), 4);
}

/// Four scenes of five seconds each, with smooth pictures whose blocks a codec has to hide.
std::filesystem::path fourScenes() {
  return makeVideo(
      "mandelbrot=s=320x192:r=10,crop=160:96:x='160*mod(floor(t/5),2)':y='96*floor(t/10)',trim=duration=20",
      h264({"-preset", "veryfast", "-crf", "30", "-g", "40"}), "mp4");
}

TEST(SamplePlatformTimes, RoughPicturesLeadToTheTimesOfExactOnes) {
  MediaAsset asset(fourScenes());
  ImageGenerator exact(asset);
  const FrameAt exactly = [&](double seconds, const std::stop_token&) { return exact.image(seconds); };
  for (const std::int64_t count : {2, 4, 8}) {
    const SamplingConfig config{.maxFrames = count};
    EXPECT_EQ(samplePlatformTimes(asset, asset.duration(), config, 2, {}),
              sampleTimes(asset.duration(), config, exactly, {}));
  }
}

TEST(SamplePlatformTimes, OtherStrategiesOpenNoDecoder) {
  MediaAsset sound(makeClip({"-f", "lavfi", "-i", "sine=d=4", "-c:a", "aac"}, "mp4"));
  const SamplingConfig config{.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 3};
  EXPECT_THAT(samplePlatformTimes(sound, 40, config, 1, {}), testing::ElementsAre(10, 20, 30));
}

TEST(ExtractPlatformFrames, TheThreadsDoNotShowInTheFrames) {
  MediaAsset asset(fourScenes());
  const std::vector<double> times{1, 3, 3.5, 4.4, 11.2, 19};
  const auto frames = [&](int threads) {
    return extractPlatformFrames(asset, times, {.maxEdge = 100, .quality = 0.8}, threads, nullptr, {});
  };
  const auto alone = frames(1);
  ASSERT_EQ(alone.size(), times.size());
  EXPECT_EQ(frames(2), alone);
  EXPECT_EQ(frames(4), alone);
}

TEST(ExtractPlatformFrames, AStopRequestEndsTheBatch) {
  MediaAsset asset(fourScenes());
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(extractPlatformFrames(asset, {1, 2}, {100, 0.8}, 1, nullptr, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq::test

#include <gmock/gmock.h>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQFrames/PlatformDecoding.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"

namespace tq::test {
namespace {

constexpr std::int64_t fullHD = 1920 * 1080;

TEST(DecodingPlan, ReadersComeBeforeThreads) {
  EXPECT_EQ(decodingPlan(2, 12, fullHD), (DecodingPlan{2, 1}));
  EXPECT_EQ(decodingPlan(2, 1, fullHD), (DecodingPlan{1, 2}));
  EXPECT_EQ(decodingPlan(4, 2, fullHD), (DecodingPlan{2, 2}));
  EXPECT_EQ(decodingPlan(4, 3, fullHD), (DecodingPlan{3, 1}));
}

TEST(DecodingPlan, TakesTheMachineUpToFourProcessors) {
  EXPECT_EQ(decodingPlan(0, 12, fullHD), (DecodingPlan{1, 1})) << "an unknown number";
  EXPECT_EQ(decodingPlan(128, 12, fullHD), (DecodingPlan{4, 1}));
  EXPECT_EQ(decodingPlan(128, 0, fullHD), (DecodingPlan{1, 4}));
}

TEST(DecodingPlan, TheReadersOf4KMayAllBeFullOfPictures) {
  EXPECT_EQ(decodingPlan(2, 12, 4096 * 2304), (DecodingPlan{2, 1}));
  EXPECT_EQ(decodingPlan(4, 12, 4096 * 2304), (DecodingPlan{2, 2}));
  EXPECT_EQ(decodingPlan(4, 12, 2560 * 1440), (DecodingPlan{4, 1}));
  EXPECT_EQ(decodingPlan(4, 12, 0), (DecodingPlan{4, 1})) << "an unknown size";
}

TEST(DecodingPlan, PicturesBeyond4KAreDecodedOneAfterTheOther) {
  EXPECT_EQ(decodingPlan(4, 12, 7680 * 4320), (DecodingPlan{1, 1}));
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

TEST(ExtractPlatformFrames, HowManyReadersThereAreDoesNotShowInTheFrames) {
  MediaAsset asset(fourScenes());
  const std::vector<double> times{1, 3, 3.5, 3.9, 4.1, 4.4, 11.2, 15.9, 19};
  const auto frames = [&](std::size_t processors) {
    return extractPlatformFrames(asset, times, {.maxEdge = 100, .quality = 0.8}, processors, nullptr, {});
  };
  const auto alone = frames(1);
  ASSERT_EQ(alone.size(), times.size());
  EXPECT_EQ(frames(2), alone);
  EXPECT_EQ(frames(4), alone);
}

TEST(ExtractPlatformFrames, AllReadersReadTheFileThatWasOpened) {
  const TemporaryFolder folder;
  const auto clip = folder.path() / "clip.mp4";
  std::filesystem::copy_file(fourScenes(), clip);
  MediaAsset asset(clip);
  const auto frames = [&] { return extractPlatformFrames(asset, {1, 6, 11, 16}, {100, 0.8}, 4, nullptr, {}); };
  const auto before = frames();
  std::filesystem::remove(clip);
  EXPECT_EQ(frames(), before) << "it has no name any more";
}

TEST(ExtractPlatformFrames, AStopRequestEndsTheBatch) {
  MediaAsset asset(fourScenes());
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(extractPlatformFrames(asset, {1, 2}, {100, 0.8}, 1, nullptr, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq::test

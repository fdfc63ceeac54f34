#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <gmock/gmock.h>
#include <limits>
#include <mutex>
#include <stdexcept>
#include <tuple>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/FrameExtractor.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr SamplingConfig threeFrames{.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 3};

std::vector<double> timesOf(const Extraction& extraction) {
  std::vector<double> times;
  for (const auto& frame : extraction.frames)
    times.push_back(frame.timecode.seconds);
  return times;
}

std::string failureOf(const fs::path& clip, const SamplingConfig& config = threeFrames,
                      const FrameExtractor& extractor = FrameExtractor()) try {
  extractor.extract(clip, config);
  return "no failure";
} catch (const std::exception& error) {
  return userFacingDescription(error);
}

/// Tools that answer from memory, and a record of what they were asked.
struct FakeTools {
  VideoMetadata meta{.duration = 40, .width = 64, .height = 48};
  std::function<Image(double)> picture = [](double) { return Image::fromRGB(64, 48, Bytes(64 * 48 * 3, 50)); };
  std::vector<double> asked;
  std::vector<fs::path> made;
  std::mutex mutex;

  FrameExtractor extractor(std::size_t processors = 2) {
    FrameExtractorHost host;
    host.locate = [](std::string_view binary) { return fs::path("/tools") / binary; };
    host.makeBridge = [this](const fs::path& ffmpeg, const fs::path& ffprobe) {
      made = {ffmpeg, ffprobe};
      return FrameBridge{.probe = [this](const fs::path&) { return meta; },
                         .extractFrame =
                             [this](double seconds, const fs::path&) {
                               {
                                 const std::lock_guard lock(mutex);
                                 asked.push_back(seconds);
                               }
                               return picture(seconds);
                             }};
    };
    host.processorCount = processors;
    return FrameExtractor(host);
  }
};

FrameExtractor withoutTool(std::string_view missing) {
  FrameExtractorHost host;
  host.locate = [missing](std::string_view binary) {
    return binary == missing ? std::nullopt : std::optional(fs::path("/tools") / binary);
  };
  return FrameExtractor(host);
}

TEST(FrameExtractor, SamplesAClipInThisProgram) {
  const auto clip = makeVideo(numberedPicture(8, 25), h264({"-g", "25"}), "mp4");
  std::vector<double> told;
  const Extraction extraction =
      FrameExtractor().extract(clip, threeFrames, [&](double fraction) { told.push_back(fraction); });
  EXPECT_THAT(timesOf(extraction), ElementsAre(2, 4, 6));
  EXPECT_EQ(extraction.meta.width, 192);
  EXPECT_EQ(extraction.meta.codec, "avc1");
  for (const auto& frame : extraction.frames) {
    const auto image = Image::decodeJPEG(frame.jpegData);
    ASSERT_TRUE(image);
    EXPECT_EQ(frame.width, image->width());
    EXPECT_NEAR(numberShown(*image) / 25.0, frame.timecode.seconds, 0.2 + 1e-6);
  }
  ASSERT_EQ(told.size(), 3u);
  EXPECT_DOUBLE_EQ(told.back(), 1);
}

TEST(FrameExtractor, FramesAreScaledToTheEdge) {
  const auto clip = makeVideo(movingPicture(1, 25, "640x360"), h264(), "mp4");
  SamplingConfig config = threeFrames;
  config.maxEdgePixels = 320;
  const Extraction extraction = FrameExtractor().extract(clip, config);
  for (const auto& frame : extraction.frames) {
    EXPECT_EQ(frame.width, 320);
    EXPECT_EQ(frame.height, 180);
  }
  EXPECT_EQ(extraction.meta.width, 640);
}

TEST(FrameExtractor, PortraitClipsGiveUprightFramesAndTheirStoredSize) {
  const TemporaryFolder folder;
  const Bytes stored = readClip(makeVideo(fourQuarters(), h264(), "mp4"));
  const fs::path clip = writeClip(folder / "portrait.mp4", withMatrix(stored, rotation(90)));
  SamplingConfig config = threeFrames;
  config.maxEdgePixels = 80;
  const Extraction extraction = FrameExtractor().extract(clip, config);
  EXPECT_EQ(extraction.meta.width, 160);
  EXPECT_EQ(extraction.meta.height, 120);
  EXPECT_EQ(extraction.frames.front().width, 60);
  EXPECT_EQ(extraction.frames.front().height, 80);
  EXPECT_EQ(cornersByBrightness(*Image::decodeJPEG(extraction.frames.front().jpegData)), "tr br tl bl");
}

TEST(FrameExtractor, AdaptiveFindsTheScenes) {
  // Two scenes that differ much, the second from 20 s on.
  const auto clip = makeVideo(
      "mandelbrot=s=160x120:r=4,trim=end_frame=1,loop=79:1[a];smptebars=s=160x120:r=4:d=10,format=bgr0[b];"
      "[a][b]concat,format=yuv420p",
      h264({"-g", "5"}), "mp4");
  const auto times = timesOf(FrameExtractor().extract(clip, {.maxFrames = 2}));
  EXPECT_THAT(times, ElementsAre(0.5, 20.5));
}

TEST(FrameExtractor, AdaptiveWithoutABudgetHasNoTimes) {
  const auto clip = makeVideo(movingPicture(2), h264(), "mp4");
  EXPECT_EQ(failureOf(clip, {.maxFrames = 0}), TQError::noFramesExtracted().description());
  EXPECT_EQ(failureOf(clip, {.maxFrames = std::numeric_limits<std::int64_t>::min()}),
            TQError::noFramesExtracted().description());
}

TEST(FrameExtractor, AdaptiveOnPicturesThatCannotBeDecodedFailsInTheBatch) {
  const auto clip =
      makeVideo(movingPicture(20),
                h264({"-encryption_scheme", "cenc-aes-ctr", "-encryption_key", "76a6c65c5ea762046bd749a2e632ccbb",
                      "-encryption_kid", "a7e61c373e219033c21091fa607bf3b8"}),
                "mp4");
  EXPECT_THAT(failureOf(clip, {}), HasSubstr("could not extract frame at 10.0s: the clip is encrypted"));
}

TEST(FrameExtractor, ADurationThatLiesFailsWithTheFirstTimeBeyondTheEnd) {
  const TemporaryFolder folder;
  const Bytes clip = readClip(makeVideo(numberedPicture(1, 25), h264(), "mp4"));
  const fs::path lying = writeClip(folder / "lying.mp4", withDuration(clip, 143'165'000));
  for (const auto& [strategy, time] : {std::pair{SamplingStrategy::fixedInterval, "2.5s"},
                                       {SamplingStrategy::evenDistribution, "23860.833333333332s"},
                                       {SamplingStrategy::adaptive, "71582.5s"}})
    EXPECT_EQ(failureOf(lying, {.strategy = strategy, .maxFrames = 5}),
              TQError::frameExtractionFailed("could not extract frame at " + std::string(time) +
                                             ": the clip ends before that")
                  .description());
}

TEST(FrameExtractor, TheAdaptiveStrategyLeavesOutWhatAClipThatWasCutOffHasLost) {
  const TemporaryFolder folder;
  Bytes bytes =
      readClip(makeVideo(numberedPicture(10, 25), h264({"-qp", "5", "-g", "25", "-movflags", "+faststart"}), "mp4"));
  bytes.resize(bytes.size() / 2);
  const fs::path clip = writeClip(folder / "cut.mp4", bytes);
  const Extraction extraction = FrameExtractor().extract(clip, {.maxFrames = 3});
  EXPECT_EQ(extraction.frames.size(), 3u);
  for (const auto& frame : extraction.frames)
    EXPECT_NEAR(numberShown(*Image::decodeJPEG(frame.jpegData)) / 25.0, frame.timecode.seconds, 0.2 + 1e-6);
  EXPECT_THAT(failureOf(clip), HasSubstr("could not extract frame at 5.0s: the clip ends before that"));
}

TEST(FrameExtractor, ADurationOfZeroGivesTheFirstFrameInThisProgram) {
  const TemporaryFolder folder;
  const Bytes clip = readClip(makeVideo(numberedPicture(1, 25), h264(), "mp4"));
  const fs::path lying = writeClip(folder / "lying.mp4", withDuration(clip, 0));
  for (const auto strategy :
       {SamplingStrategy::fixedInterval, SamplingStrategy::evenDistribution, SamplingStrategy::adaptive}) {
    const Extraction extraction = FrameExtractor().extract(lying, {.strategy = strategy});
    EXPECT_THAT(timesOf(extraction), ElementsAre(0.0));
    EXPECT_LE(numberShown(*Image::decodeJPEG(extraction.frames.front().jpegData)), 5);
  }
}

TEST(FrameExtractor, ADurationOfZeroGivesTheFirstFrame) {
  FakeTools tools;
  tools.meta.duration = 0;
  for (const auto strategy :
       {SamplingStrategy::fixedInterval, SamplingStrategy::evenDistribution, SamplingStrategy::adaptive})
    EXPECT_THAT(timesOf(tools.extractor().extract("/clips/a.mkv", {.strategy = strategy})), ElementsAre(0.0));
}

TEST(FrameExtractor, FilesThatAreNoClipsFailWithAReason) {
  const TemporaryFolder folder;
  EXPECT_THAT(failureOf(folder.write("empty.mp4", "")), HasSubstr("the file is empty"));
  EXPECT_THAT(failureOf(folder.write("text.mov", "no movie")), HasSubstr("damaged or in an unknown format"));
  EXPECT_THAT(failureOf(folder / "gone.m4v"), HasSubstr("No such file or directory"));
}

TEST(FrameExtractor, AClipWithoutVideoIsNamed) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac"}, "mp4");
  EXPECT_THAT(failureOf(clip), HasSubstr("No video track in " + clip.filename().string()));
}

TEST(FrameExtractor, AClipWithoutAudioIsFine) {
  EXPECT_EQ(FrameExtractor().extract(makeVideo(movingPicture(1), h264(), "mov"), threeFrames).frames.size(), 3u);
}

TEST(FrameExtractor, TheExtensionAloneChoosesTheTools) {
  FakeTools tools;
  for (const auto* name : {"/clips/a.mkv", "/clips/a.MKV", "/clips/a.webm", "/clips/a.avi", "/clips/a.Mxf"}) {
    tools.asked.clear();
    EXPECT_THAT(timesOf(tools.extractor().extract(name, threeFrames)), ElementsAre(10, 20, 30)) << name;
    EXPECT_EQ(tools.asked.size(), 3u) << name;
  }
  EXPECT_THAT(tools.made, ElementsAre(fs::path("/tools/ffmpeg"), fs::path("/tools/ffprobe")));
}

TEST(FrameExtractor, NoOtherClipReachesTheTools) {
  FakeTools tools;
  const TemporaryFolder folder;
  EXPECT_NE(failureOf(folder.write("matroska.mp4", "\x1A\x45\xDF\xA3 matroska"), threeFrames, tools.extractor()),
            "no failure");
  EXPECT_THAT(tools.made, IsEmpty());
}

TEST(FrameExtractor, AMissingToolNamesTheFormatThatNeedsIt) {
  for (const auto* missing : {"ffmpeg", "ffprobe"}) {
    EXPECT_EQ(failureOf("/clips/a.MKV", threeFrames, withoutTool(missing)),
              TQError::ffmpegMissing(".mkv").description());
    EXPECT_EQ(failureOf("/clips/a.webm", threeFrames, withoutTool(missing)),
              TQError::ffmpegMissing(".webm").description());
  }
}

TEST(FrameExtractor, ClipsInThisProgramNeedNoTools) {
  const auto clip = makeVideo(movingPicture(1), h264(), "mp4");
  EXPECT_EQ(withoutTool("ffmpeg").extract(clip, threeFrames).frames.size(), 3u);
}

TEST(FrameExtractor, TheRealToolsSampleAMatroskaClip) {
  const auto clip = makeVideo(numberedPicture(4, 10), h264(), "mkv");
  const Extraction extraction = FrameExtractor().extract(clip, threeFrames);
  EXPECT_EQ(extraction.meta.codec, "h264");
  ASSERT_EQ(extraction.frames.size(), 3u);
  for (const auto& frame : extraction.frames)
    EXPECT_NEAR(numberShown(*Image::decodeJPEG(frame.jpegData)) / 10.0, frame.timecode.seconds, 0.1 + 1e-6);
}

class EveryContainer : public testing::TestWithParam<std::tuple<const char*, const char*, Arguments>> {};

TEST_P(EveryContainer, IsSampledByTheRealTools) {
  const auto& [name, extension, encoding] = GetParam();
  const auto clip = makeVideo(numberedPicture(2, 10) + ",scale=384x256:flags=neighbor", encoding, extension);
  const Extraction extraction = FrameExtractor().extract(clip, threeFrames);
  EXPECT_EQ(extraction.meta.width, 384);
  EXPECT_NEAR(extraction.meta.duration, 2, 0.11);
  ASSERT_EQ(extraction.frames.size(), 3u);
  for (const auto& frame : extraction.frames)
    EXPECT_NEAR(numberShown(*Image::decodeJPEG(frame.jpegData)) / 10.0, frame.timecode.seconds, 0.1 + 1e-6);
}

INSTANTIATE_TEST_SUITE_P(
    FrameExtractor, EveryContainer,
    testing::Values(std::tuple{"H264InMkv", "mkv", h264({"-bf", "2"})}, std::tuple{"HEVCInMkv", "mkv", hevc()},
                    std::tuple{"FFV1In422InMkv", "mkv", Arguments{"-c:v", "ffv1", "-pix_fmt", "yuv422p"}},
                    std::tuple{"VP8InWebm", "webm", Arguments{"-c:v", "libvpx", "-deadline", "realtime"}},
                    std::tuple{"VP9In444InWebm", "webm",
                               Arguments{"-c:v", "libvpx-vp9", "-deadline", "realtime", "-pix_fmt", "yuv444p"}},
                    std::tuple{"AV1InWebm", "webm", Arguments{"-c:v", "libaom-av1", "-cpu-used", "8"}},
                    std::tuple{"MPEG4InAvi", "avi", Arguments{"-c:v", "mpeg4"}},
                    std::tuple{"MJPEGInAvi", "avi", Arguments{"-c:v", "mjpeg"}},
                    std::tuple{"RGBInAvi", "avi", Arguments{"-c:v", "huffyuv", "-pix_fmt", "rgb24"}},
                    std::tuple{"MPEG2InMxf", "mxf", Arguments{"-c:v", "mpeg2video", "-r", "25"}},
                    std::tuple{
                        "DNxHRInMxf", "mxf",
                        Arguments{"-c:v", "dnxhd", "-profile:v", "dnxhr_lb", "-pix_fmt", "yuv422p", "-r", "25"}}),
    [](const auto& container) { return std::string(std::get<0>(container.param)); });

TEST(FrameExtractor, ClipsOfAnyNameAreSampledOnBothWays) {
  const TemporaryFolder folder;
  for (const std::string extension : {".mp4", ".mkv"}) {
    const fs::path clip = makeVideo(movingPicture(1), h264(), extension.substr(1));
    const std::string longest(255 - extension.size(), 'n');
    for (const std::string& name :
         {std::string("two words"), std::string("it's \"quoted\""), std::string("-i"), std::string("line\nbreak"),
          std::string("\xF0\x9F\x8E\xAC"), std::string("http:%03d|b"), longest}) {
      fs::copy_file(clip, folder / (name + extension));
      EXPECT_EQ(failureOf(folder / (name + extension)), "no failure") << name;
    }
  }
}

TEST(FrameExtractor, FilesThatAreNoClipsFailThroughTheToolsWithTheirStatus) {
  const TemporaryFolder folder;
  for (const auto* name : {"empty.mkv", "empty.webm", "empty.avi", "empty.mxf"})
    EXPECT_EQ(failureOf(folder.write(name, "")), TQError::frameExtractionFailed("ffprobe exit status 1").description());
}

TEST(FrameExtractor, AClipWithoutVideoIsNamedByTheToolsToo) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac"}, "mkv");
  EXPECT_EQ(failureOf(clip),
            TQError::frameExtractionFailed("no video stream in " + clip.filename().string()).description());
}

TEST(FrameExtractor, SoundWithACoverHasAPictureAtItsStartOnly) {
  const auto cover = makeVideo("color=red:s=64x64:r=1:d=1", {"-frames:v", "1"}, "png");
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=4", "-c:a", "aac", "-attach", cover.string(),
                              "-metadata:s:t", "mimetype=image/png"},
                             "mkv");
  EXPECT_THAT(failureOf(clip), HasSubstr("ffmpeg frame extract at "));
}

TEST(FrameExtractor, AMatroskaClipThatWasCutOffGivesWhatIsLeftOrAReason) {
  const TemporaryFolder folder;
  Bytes bytes = readClip(makeVideo(numberedPicture(8, 25), h264({"-g", "25", "-qp", "5"}), "mkv"));
  bytes.resize(bytes.size() / 2);
  const fs::path clip = writeClip(folder / "cut.mkv", bytes);
  EXPECT_THAT(failureOf(clip), HasSubstr("ffmpeg frame extract at "));
  for (const auto& frame : FrameExtractor().extract(clip, {.maxFrames = 3}).frames)
    EXPECT_NEAR(numberShown(*Image::decodeJPEG(frame.jpegData)) / 25.0, frame.timecode.seconds, 0.04 + 1e-6);
}

TEST(FrameExtractor, AMatroskaDurationThatLiesFailsWithTheFirstTimeBeyondTheEnd) {
  const TemporaryFolder folder;
  Bytes bytes = readClip(makeVideo(movingPicture(1), h264(), "mkv"));
  // The element Duration (RFC 9559, 5.1.2.10): a double of 8 bytes, in milliseconds.
  constexpr std::array<std::uint8_t, 3> element{0x44, 0x89, 0x88};
  const auto at = std::ranges::search(bytes, element).end();
  ASSERT_LE(8, bytes.end() - at);
  const auto lie = std::bit_cast<std::uint64_t>(143'165'000.0);
  for (int byte = 0; byte < 8; ++byte)
    at[byte] = static_cast<std::uint8_t>(lie >> (56 - 8 * byte));
  const fs::path clip = writeClip(folder / "lying.mkv", bytes);
  EXPECT_THAT(failureOf(clip, {.strategy = SamplingStrategy::evenDistribution, .evenFrameCount = 1}),
              HasSubstr("ffmpeg frame extract at 71582.5s exit "));
}

TEST(FrameExtractor, WhenEveryCandidateLiesBeyondTheEndTheToolsAreAskedForTheMiddleOnceMore) {
  FakeTools tools;
  tools.meta.duration = 143'165;
  tools.picture = [](double seconds) -> Image {
    throw TQError::frameExtractionFailed("nothing at " + std::to_string(std::lround(seconds)));
  };
  EXPECT_EQ(failureOf("/clips/a.mkv", {}, tools.extractor()),
            TQError::frameExtractionFailed("nothing at 71583").description());
  EXPECT_LE(tools.asked.size(), 61u + 1u);
  EXPECT_EQ(tools.asked.back(), 143'165 / 2.0);
}

TEST(FrameExtractor, TheAdaptivePassThroughTheToolsIsOneByOneAndDecodedAgain) {
  FakeTools tools;
  EXPECT_EQ(tools.extractor().extract("/clips/a.mkv", {.maxFrames = 4}).frames.size(), 4u);
  EXPECT_EQ(tools.asked.size(), 40u + 4u);
}

TEST(FrameExtractor, AFailingToolFailsTheClipWithItsError) {
  FakeTools tools;
  tools.picture = [](double seconds) -> Image {
    if (seconds == 20) throw TQError::frameExtractionFailed("exit 1");
    return Image::fromRGB(1, 1, Bytes(3));
  };
  EXPECT_EQ(failureOf("/clips/a.mkv", threeFrames, tools.extractor()),
            TQError::frameExtractionFailed("exit 1").description());
}

TEST(FrameExtractor, AStopRequestDuringTheAdaptivePassIsNotSwallowed) {
  FakeTools tools;
  std::stop_source source;
  tools.picture = [&](double seconds) {
    if (seconds > 5) source.request_stop();
    return Image::fromRGB(1, 1, Bytes(3));
  };
  EXPECT_THROW(tools.extractor().extract("/clips/a.mkv", {.maxFrames = 4}, nullptr, source.get_token()), Cancelled);
  EXPECT_EQ(tools.asked.size(), 6u) << "no tool is started after the request";
}

TEST(FrameExtractor, AStopRequestEndsTheBatchInThisProgram) {
  const auto clip = makeVideo(movingPicture(2), h264(), "mp4");
  std::stop_source source;
  int finished = 0;
  const ExtractionProgress stopping = [&](double) {
    ++finished;
    source.request_stop();
  };
  EXPECT_THROW(FrameExtractor().extract(clip, threeFrames, stopping, source.get_token()), Cancelled);
  EXPECT_EQ(finished, 1);
}

TEST(FrameExtractor, ARequestBeforeTheStartTouchesNothing) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(FrameExtractor().extract("/no/such/clip.mp4", threeFrames, nullptr, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq::test

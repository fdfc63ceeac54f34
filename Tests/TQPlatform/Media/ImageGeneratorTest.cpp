#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Media/ShownPictures.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

TEST(ImageGenerator, FramesLieWithinTheToleranceInRisingOrder) {
  const auto clip = makeVideo(numberedPicture(8, 25), h264({"-preset", "medium", "-g", "50", "-bf", "3"}), "mp4");
  expectAccurate(clip, 25, rising(0, 7.9, 0.37));
  expectAccurate(clip, 25, rising(0, 7.9, 0.04));
}

TEST(ImageGenerator, FramesLieWithinTheToleranceInAnyOrder) {
  const auto clip = makeVideo(numberedPicture(8, 25), h264({"-preset", "medium", "-g", "50", "-bf", "3"}), "mp4");
  expectAccurate(clip, 25, {7.9, 0, 4, 3.9, 1.99, 2.01, 2.0, 7.5, 0.1, 6.3, 6.1, 5.9});
}

TEST(ImageGenerator, OpenGroupsOfPicturesAreAccurate) {
  const auto avc = makeVideo(numberedPicture(6, 25),
                             h264({"-preset", "medium", "-g", "25", "-bf", "3", "-x264-params", "open-gop=1"}), "mp4");
  expectAccurate(avc, 25, rising(0, 5.9, 0.23));
  const auto hvc =
      makeVideo(numberedPicture(6, 25),
                hevc({"-preset", "medium", "-x265-params", "log-level=none:open-gop=1:keyint=25:bframes=4"}), "mp4");
  expectAccurate(hvc, 25, rising(0, 5.9, 0.23));
}

TEST(ImageGenerator, AGapGivesTheNearestFrame) {
  // One frame every two seconds, with frames in between that nothing depends on.
  const auto clip = makeVideo(numberedPicture(16, 1) + ",setpts=2*PTS",
                              h264({"-preset", "medium", "-bf", "3", "-vsync", "0"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const double time : {0.9, 1.1, 2.9, 3.1, 4.5, 11.2, 12.9, 13.1, 29.0, 30.4, 6.9, 7.1, 0.2})
    EXPECT_LE(std::abs(numberShown(generator.image(time)) * 2 - time), 1.0 + 1e-6) << time;
}

TEST(ImageGenerator, VariableRatesGiveTheNearestFrame) {
  // Frames at 0, 0.1, 0.4, 0.9, 1.6, 2.5, ... of which number n is at n * n / 10.
  const auto clip =
      makeVideo(numberedPicture(10, 1) + ",settb=1/1000,setpts=N*N*100",
                h264({"-preset", "medium", "-bf", "2", "-vsync", "0", "-enc_time_base", "1/1000"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (double time = 0; time < 8; time += 0.33) {
    const int number = numberShown(generator.image(time));
    const auto miss = [time](int frame) { return std::abs(frame * frame / 10.0 - time); };
    int best = 0;
    for (int frame = 1; frame < 10; ++frame)
      if (miss(frame) < miss(best)) best = frame;
    EXPECT_LE(miss(number), std::max(tolerance, miss(best)) + 1e-6) << time << " gave frame " << number;
  }
}

TEST(ImageGenerator, AGapOfHalfAMinuteGivesTheFrameThatIsNearer) {
  // Frames 0 to 49 within the first two seconds, frame 50 at 32 s and the others after it.
  const auto clip =
      makeVideo(numberedPicture(8, 25) + ",settb=1/1000,setpts=N*40+if(gte(N\\,50)\\,30000\\,0)",
                h264({"-preset", "medium", "-bf", "3", "-vsync", "0", "-enc_time_base", "1/1000"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const auto& [time, number] : {std::pair{3.0, 49}, {16.9, 49}, {17.1, 50}, {31.0, 50}, {16.5, 49}, {30.0, 50}})
    EXPECT_EQ(numberShown(generator.image(time)), number) << time;
  EXPECT_NEAR(numberShown(generator.image(35)) / 25.0 + 30, 35, tolerance + rounding);
}

TEST(ImageGenerator, TimesBeforeTheStartGiveTheFirstFrame) {
  const auto clip = makeVideo(numberedPicture(4, 25), h264({"-preset", "medium", "-g", "25", "-bf", "3"}), "mp4");
  for (const double time : {-5.0, -1e300, std::nan(""), std::numeric_limits<double>::infinity()})
    EXPECT_LE(numberAt(clip, time), 5) << time;
}

TEST(ImageGenerator, TimesAfterTheEndAreRefused) {
  const auto clip = makeVideo(numberedPicture(4, 25), h264({"-preset", "medium", "-g", "25", "-bf", "3"}), "mp4");
  EXPECT_GE(numberAt(clip, 4.1), 98) << "within the tolerance";
  for (const double time : {4.5, 143'165.0, 1e9, 1e300})
    EXPECT_EQ(refusalAt(clip, time), "the clip ends before that") << time;
}

TEST(ImageGenerator, TheLastFrameStaysWhileTheSoundGoesOn) {
  const auto clip = makeClip({"-f", "lavfi", "-i", numberedPicture(1, 25), "-f", "lavfi", "-i", "sine=d=3", "-c:v",
                              "libx264", "-preset", "ultrafast", "-c:a", "aac"},
                             "mp4");
  EXPECT_EQ(numberAt(clip, 2.9), 24);
  EXPECT_EQ(refusalAt(clip, 3.5), "the clip ends before that");
}

TEST(ImageGenerator, AFrameStaysAsLongAsTheTablesSay) {
  const auto clip = makeVideo("testsrc2=s=64x48:r=1/60:d=120", h264(), "mp4");
  EXPECT_EQ(imageAt(clip, 119).width(), 64);
  EXPECT_EQ(refusalAt(clip, 121), "the clip ends before that");
}

TEST(ImageGenerator, APictureThatCannotBeDecodedGivesWayToItsNeighbour) {
  const TemporaryFolder folder;
  Bytes bytes = readClip(makeVideo(numberedPicture(4, 25), {"-c:v", "png"}, "mov"));
  constexpr std::array<std::uint8_t, 4> startOfImage{0x89, 'P', 'N', 'G'};
  auto at = bytes.begin();
  for (int frame = 0; frame <= 54; ++frame)
    at = std::search(at + 1, bytes.end(), startOfImage.begin(), startOfImage.end());
  ASSERT_LT(64, bytes.end() - at);
  std::fill_n(at, 64, std::uint8_t{0});
  const fs::path clip = writeClip(folder / "damaged.mov", bytes);
  MediaAsset asset(clip);
  for (const auto& expected : {std::vector<double>{}, std::vector<double>{2.16, 3}}) {
    ImageGenerator generator(asset, tolerance);
    generator.expect(expected);
    EXPECT_EQ(numberShown(generator.image(2.16)), 55) << "number 54 would be the nearest";
    EXPECT_NEAR(numberShown(generator.image(3)) / 25.0, 3, tolerance + rounding);
  }
}

TEST(ImageGenerator, EditListsShiftTheTimes) {
  const auto whole = makeVideo(numberedPicture(6, 25), h264({"-preset", "medium", "-g", "50", "-bf", "2"}), "mp4");
  // A copy that begins between two key frames keeps the frames before its start, and hides them.
  const auto cut = makeClip({"-ss", "3.2", "-i", whole.string(), "-c", "copy"}, "mp4");
  for (const double time : {0.0, 0.5, 1.5, 2.5})
    EXPECT_NEAR(numberAt(cut, time) / 25.0, time + 3.2, tolerance + 0.04);
}

TEST(ImageGenerator, AStartDelayedByTheEditListCounts) {
  const auto whole = makeVideo(numberedPicture(4, 25), h264({"-g", "25"}), "mp4");
  const auto late = makeClip({"-f", "lavfi", "-i", "sine=d=6", "-itsoffset", "2", "-i", whole.string(), "-map", "0",
                              "-map", "1", "-c:v", "copy", "-c:a", "aac"},
                             "mp4");
  EXPECT_LE(numberAt(late, 0), 0) << "nothing is shown yet: the first frame is the nearest";
  EXPECT_NEAR(numberAt(late, 3.5) / 25.0, 1.5, tolerance);
  const auto alone = makeClip({"-itsoffset", "2", "-i", whole.string(), "-c", "copy"}, "mp4");
  EXPECT_NEAR(numberAt(alone, 3.5) / 25.0, 1.5, tolerance);
}

TEST(ImageGenerator, ClipsWithoutEditListsStartAtTheirFirstFrame) {
  const auto clip = makeVideo(numberedPicture(4, 25),
                              h264({"-preset", "medium", "-g", "25", "-bf", "3", "-use_editlist", "0"}), "mp4");
  EXPECT_EQ(numberAt(clip, 0), 0);
  expectAccurate(clip, 25, rising(0, 4, 0.5));
}

TEST(ImageGenerator, FragmentsAreAccurate) {
  const auto clip =
      makeVideo(numberedPicture(6, 25), h264({"-g", "25", "-movflags", "frag_keyframe+empty_moov"}), "mp4");
  expectAccurate(clip, 25, {0, 5.5, 1.3, 1.9, 3.3});
}

TEST(ImageGenerator, FragmentsBehindAnIndexAreAccurate) {
  const auto clip =
      makeVideo(numberedPicture(20, 25),
                h264({"-g", "25", "-movflags", "frag_keyframe+empty_moov+global_sidx+default_base_moof"}), "mp4");
  expectAccurate(clip, 25, {0, 15.5, 1.3, 1.9, 19.3, 8.0});
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  generator.image(18.7);
  EXPECT_LE(generator.counts().framesDecoded, 50);
}

TEST(ImageGenerator, FragmentsThatStartLateOnTheirClockAreShifted) {
  const auto clip = makeVideo(numberedPicture(4, 25),
                              h264({"-g", "25", "-output_ts_offset", "1000", "-movflags",
                                    "frag_keyframe+empty_moov+default_base_moof+frag_discont"}),
                              "mp4");
  expectAccurate(clip, 25, {0, 1.5, 3.3});
}

struct Recipe {
  std::string name;
  Arguments encoding;
  std::string extension;
};

class EveryCodec : public testing::TestWithParam<Recipe> {};

TEST_P(EveryCodec, GivesFramesWithinTheTolerance) {
  const Recipe& recipe = GetParam();
  const auto clip =
      makeVideo(numberedPicture(2, 10) + ",scale=384x256:flags=neighbor", recipe.encoding, recipe.extension);
  expectAccurate(clip, 10, {0, 0.5, 1.0, 1.7, 0.3});
}

INSTANTIATE_TEST_SUITE_P(
    ImageGenerator, EveryCodec,
    testing::Values(Recipe{"H264", h264(), "mp4"}, Recipe{"H264InMov", h264(), "mov"},
                    Recipe{"H264InM4v", h264(), "m4v"}, Recipe{"HEVC", hevc(), "mp4"},
                    Recipe{"HEVC10Bit", hevc({"-pix_fmt", "yuv420p10le"}), "mov"},
                    Recipe{"AV1", {"-c:v", "libaom-av1", "-cpu-used", "8", "-crf", "40"}, "mp4"},
                    Recipe{"VP9", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8"}, "mp4"},
                    Recipe{"MPEG4", {"-c:v", "mpeg4", "-bf", "2"}, "mp4"}, Recipe{"MJPEG", {"-c:v", "mjpeg"}, "mov"},
                    Recipe{"ProRes422", {"-c:v", "prores", "-profile:v", "2"}, "mov"},
                    Recipe{
                        "ProRes4444", {"-c:v", "prores_ks", "-profile:v", "4444", "-pix_fmt", "yuva444p10le"}, "mov"},
                    Recipe{"DNxHR", {"-c:v", "dnxhd", "-profile:v", "dnxhr_lb", "-pix_fmt", "yuv422p"}, "mov"},
                    Recipe{"Animation", {"-c:v", "qtrle"}, "mov"}, Recipe{"PNG", {"-c:v", "png"}, "mov"},
                    Recipe{"Uncompressed", {"-c:v", "rawvideo", "-pix_fmt", "uyvy422"}, "mov"}),
    [](const auto& recipe) { return recipe.param.name; });

TEST(ImageGenerator, TheFirstOfTwoVideoTracksCounts) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "color=white:s=64x64:r=10:d=1", "-f", "lavfi", "-i",
                              "color=black:s=128x128:r=10:d=1", "-map", "0", "-map", "1", "-c:v", "mpeg4"},
                             "mp4");
  const Image image = imageAt(clip, 0.5);
  EXPECT_EQ(image.width(), 64);
  EXPECT_GT(image.luma(1, 1)[0], 250);
}

TEST(ImageGenerator, OneFrameIsGivenForEveryTimeOfItsClip) {
  const auto clip = makeVideo(numberedPicture(1, 1), h264({"-frames:v", "1"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const double time : {0.0, 0.5, 1.1, 0.1})
    EXPECT_EQ(numberShown(generator.image(time)), 0);
}

TEST(ImageGenerator, VeryLargePicturesAreDecoded) {
  const auto clip = makeVideo(fourQuarters(1, "3840x2160"), h264({"-frames:v", "1"}), "mp4");
  const Image image = imageAt(clip, 0);
  EXPECT_EQ(image.width(), 7680);
  EXPECT_EQ(image.scaled(1568, 882).height(), 882);
  EXPECT_EQ(cornersByBrightness(image.scaled(1568, 882)), "tl tr bl br");
  const Bytes luma = image.luma(2, 2);
  for (const std::size_t quarter : {0, 1, 2, 3})
    EXPECT_NEAR(luma[quarter], 0x20 + 0x40 * static_cast<int>(quarter), 3);
}

TEST(ImageGenerator, AClipWithoutVideoHasNoPicture) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac"}, "mp4");
  EXPECT_THROW(imageAt(clip, 0), MediaError);
}

TEST(ImageGenerator, AClipCutOffEndsWhereItWasCut) {
  const TemporaryFolder folder;
  Bytes bytes =
      readClip(makeVideo(numberedPicture(10, 25), h264({"-qp", "5", "-g", "25", "-movflags", "+faststart"}), "mp4"));
  bytes.resize(bytes.size() / 2);
  const fs::path clip = writeClip(folder / "cut.mp4", bytes);
  EXPECT_NEAR(numberAt(clip, 1.5) / 25.0, 1.5, tolerance);
  EXPECT_NEAR(numberAt(clip, 2.5) / 25.0, 2.5, tolerance);
  EXPECT_EQ(refusalAt(clip, 9.5), "the clip ends before that");
}

TEST(ImageGenerator, EncryptedClipsAreRefused) {
  const auto clip =
      makeVideo(movingPicture(1),
                h264({"-encryption_scheme", "cenc-aes-ctr", "-encryption_key", "76a6c65c5ea762046bd749a2e632ccbb",
                      "-encryption_kid", "a7e61c373e219033c21091fa607bf3b8"}),
                "mp4");
  EXPECT_EQ(refusalAt(clip, 0.5), "the clip is encrypted");
}

TEST(ImageGenerator, PicturesOfNoiseGiveAnErrorAndNoHang) {
  const TemporaryFolder folder;
  Bytes bytes = readClip(makeVideo(movingPicture(4, 100), {"-c:v", "prores", "-profile:v", "0"}, "mov"));
  constexpr std::string_view tables = "moov";
  const auto end = std::search(bytes.begin(), bytes.end(), tables.begin(), tables.end()) - 8;
  std::uint32_t noise = 1;
  for (auto byte = bytes.begin() + 64; byte < end; ++byte) {
    noise = noise * 1664525 + 1013904223;
    *byte = static_cast<std::uint8_t>(noise >> 24);
  }
  const fs::path clip = writeClip(folder / "noise.mov", bytes);
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const double time : {0.0, 2.0, 3.9})
    EXPECT_THROW(generator.image(time), MediaError) << time;
}

TEST(ImageGenerator, DamagedClipsNeverCrash) {
  const TemporaryFolder folder;
  const Bytes whole = readClip(makeVideo(movingPicture(1), h264({"-bf", "2"}), "mp4"));
  std::uint32_t noise = 7;
  for (int round = 0; round < 60; ++round) {
    Bytes bytes = whole;
    for (int change = 0; change < 20; ++change) {
      noise = noise * 1664525 + 1013904223;
      bytes[(noise >> 4) % bytes.size()] = static_cast<std::uint8_t>(noise >> 20);
    }
    try {
      MediaAsset asset(writeClip(folder / "damaged.mp4", bytes));
      ImageGenerator generator(asset, tolerance);
      for (const double time : {0.0, 0.5, 5.0})
        EXPECT_FALSE(generator.image(time).luma(9, 8).empty());
    } catch (const MediaError&) {
    } catch (const ImageError&) {
    }
  }
}

TEST(ImageGenerator, AStopRequestEndsTheDecoding) {
  const auto clip = makeVideo(movingPicture(2), h264(), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(generator.image(1, source.get_token()), Cancelled);
  EXPECT_EQ(generator.counts().framesDecoded, 0);
  EXPECT_EQ(generator.image(1).width(), 160) << "the generator still works for another caller";
}

}  // namespace
}  // namespace tq::test

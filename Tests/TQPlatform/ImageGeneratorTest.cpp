#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Cancelled.hpp"
#include "TQPlatform/ImageGenerator.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

constexpr double tolerance = 0.2;
constexpr double rounding = 1e-6;

Image imageAt(const fs::path& clip, double seconds) {
  MediaAsset asset(clip);
  return ImageGenerator(asset, tolerance).image(seconds);
}

int numberAt(const fs::path& clip, double seconds) {
  return numberShown(imageAt(clip, seconds));
}

/// Why there is no picture at that time.
std::string refusalAt(const fs::path& clip, double seconds) try {
  imageAt(clip, seconds);
  return "none";
} catch (const MediaError& error) {
  return error.what();
}

void expectShown(ImageGenerator& generator, int framesPerSecond, const std::vector<double>& times,
                 const std::string& how) {
  for (const double time : times) {
    const double shown = numberShown(generator.image(time)) / static_cast<double>(framesPerSecond);
    EXPECT_NEAR(shown, time, tolerance + rounding) << "asked for " << time << ", " << how;
  }
}

/// Every time asked, in the given order, gives a frame within the tolerance, whatever the generator knows of the
/// others.
void expectAccurate(const fs::path& clip, int framesPerSecond, const std::vector<double>& times) {
  MediaAsset asset(clip);
  for (const int threads : {1, 3}) {
    ImageGenerator surprised(asset, tolerance, threads);
    expectShown(surprised, framesPerSecond, times, "out of the blue");
    ImageGenerator prepared(asset, tolerance, threads, Fidelity::approximate);
    prepared.expect(times);
    expectShown(prepared, framesPerSecond, times, "as expected");
    expectShown(prepared, framesPerSecond, times, "once more");
    ImageGenerator misled(asset, tolerance, threads);
    misled.expect({0.7, 3.1, 1e9});
    expectShown(misled, framesPerSecond, times, "though others were expected");
  }
}

std::vector<double> rising(double from, double to, double step) {
  std::vector<double> times;
  for (double time = from; time < to; time += step)
    times.push_back(time);
  return times;
}

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

TEST(ImageGenerator, TheEndIsDecodedOnceHoweverOftenItIsAskedFor) {
  const auto clip = makeVideo(numberedPicture(4, 25), h264({"-g", "25"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_THROW(generator.image(1000), MediaError);
  const auto decoded = generator.counts().framesDecoded;
  EXPECT_LE(decoded, 25);
  for (const double time : {2000.0, 3000.0, 143'165.0})
    EXPECT_THROW(generator.image(time), MediaError);
  EXPECT_EQ(generator.counts().framesDecoded, decoded);
  EXPECT_NEAR(numberShown(generator.image(1)) / 25.0, 1, tolerance + rounding);
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

TEST(ImageGenerator, OneFrameNearTheEndDecodesOneGroupOfPicturesAtMost) {
  const auto clip = makeVideo(numberedPicture(60, 25), h264({"-preset", "medium", "-g", "25", "-bf", "2"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_NEAR(numberShown(generator.image(58.6)) / 25.0, 58.6, tolerance + rounding);
  EXPECT_LE(generator.counts().framesDecoded, 25);
  EXPECT_LE(generator.counts().packetsRead, 30);
  EXPECT_EQ(generator.counts().seeks, 1);
}

TEST(ImageGenerator, NeighboursInOneGroupOfPicturesAreNotDecodedTwice) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-preset", "medium", "-g", "250", "-bf", "2"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const double time : rising(0, 10, 0.5))
    generator.image(time);
  EXPECT_LE(generator.counts().packetsRead, 250);
  EXPECT_EQ(generator.counts().seeks, 1);
}

TEST(ImageGenerator, NothingOfAGroupIsReadBehindTheLastPictureThatIsExpectedOfIt) {
  const auto clip = makeVideo(
      numberedPicture(20, 25),
      h264({"-preset", "medium", "-g", "50", "-bf", "3", "-b_strategy", "0", "-x264-params", "b-pyramid=none"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  generator.expect({5, 9, 9.5, 13});
  // Frames come in groups of one that others depend on and the three before it: 100, 104, 101, 102, 103, 108 ...
  EXPECT_EQ(numberShown(generator.image(5)), 120);
  EXPECT_EQ(generator.counts().packetsRead, 18);
  EXPECT_EQ(generator.counts().seeks, 1);
  generator.image(9);
  const auto read = generator.counts().packetsRead;
  EXPECT_EQ(numberShown(generator.image(9.5)), 236);
  EXPECT_LE(generator.counts().packetsRead, read + 14) << "the group was still open";
  EXPECT_EQ(generator.counts().seeks, 2);
  generator.image(13);
  EXPECT_EQ(generator.counts().seeks, 3);
}

TEST(ImageGenerator, AKeyFrameIsFoundThoughItIsShownLaterThanDecoded) {
  // With three pictures held back a key frame's decoding time lies 0.3 s before its display.
  const auto clip = makeVideo(numberedPicture(20, 10),
                              h264({"-preset", "medium", "-g", "50", "-bf", "3", "-b_strategy", "0"}), "mp4");
  for (const double time : {4.85, 5.15, 9.81, 10.19}) {
    MediaAsset asset(clip);
    ImageGenerator generator(asset, tolerance);
    generator.expect({time});
    EXPECT_EQ(numberShown(generator.image(time)), time < 7 ? 50 : 100) << time;
    EXPECT_EQ(generator.counts().packetsRead, 1) << time;
  }
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_NEAR(numberShown(generator.image(4.78)) / 10.0, 4.78, tolerance + rounding);
  EXPECT_EQ(generator.counts().seeks, 1) << "the key frame is decoded within the tolerance, but shown behind it";
}

TEST(ImageGenerator, KeyFramesOfOpenGroupsAreShownLaterThanTheFirstOfAll) {
  const auto clip = makeVideo(
      numberedPicture(20, 10),
      hevc({"-preset", "medium", "-x265-params", "log-level=none:open-gop=1:keyint=40:bframes=4:scenecut=0"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  // A key frame at 4 s is decoded before 3.7 s, and shown too late for 3.78 s.
  generator.expect({4.1, 7.78, 11.78, 15.78});
  for (const double time : {4.1, 7.78, 11.78, 15.78})
    EXPECT_NEAR(numberShown(generator.image(time)) / 10.0, time, tolerance + rounding) << time;
  EXPECT_EQ(generator.counts().seeks, 4) << "none in vain";
}

TEST(ImageGenerator, WhatLiesBetweenTwoPicturesIsLookedForAfterTheGroupWasLeft) {
  const auto clip = makeVideo(
      numberedPicture(16, 1),
      h264({"-preset", "medium", "-g", "16", "-bf", "3", "-b_strategy", "0", "-x264-params", "b-pyramid=none"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  generator.expect({8});
  EXPECT_EQ(numberShown(generator.image(8)), 8);
  for (const int time : {6, 7, 5, 9})
    EXPECT_EQ(numberShown(generator.image(time)), time) << "nobody expected that";
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

TEST(ImageGenerator, ApproximatePicturesAreAlikeToTheEye) {
  const auto clip = makeVideo("mandelbrot=s=320x192:r=25,trim=end_frame=100",
                              h264({"-preset", "veryfast", "-g", "100", "-crf", "30"}), "mp4");
  const auto lumaAt = [&](Fidelity fidelity) {
    MediaAsset asset(clip);
    return ImageGenerator(asset, tolerance, 1, fidelity).image(3).luma(320, 192);
  };
  const Bytes exact = lumaAt(Fidelity::exact), approximate = lumaAt(Fidelity::approximate);
  EXPECT_NE(exact, approximate) << "nothing was spared";
  double squares = 0;
  for (std::size_t pixel = 0; pixel < exact.size(); ++pixel)
    squares += std::pow(exact[pixel] - approximate[pixel], 2);
  EXPECT_LE(std::sqrt(squares / static_cast<double>(exact.size())), 8);
}

TEST(ImageGenerator, AKeyFrameWithinTheToleranceIsAllThatIsDecoded) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-g", "25"}), "mp4");
  for (const double time : {5.0, 5.15, 4.85}) {
    MediaAsset asset(clip);
    ImageGenerator generator(asset, tolerance);
    EXPECT_EQ(numberShown(generator.image(time)), 125) << time;
    EXPECT_LE(generator.counts().framesDecoded, 1) << time;
  }
}

TEST(ImageGenerator, InfiniteToleranceTakesTheKeyFrameBefore) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-g", "50"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, std::numeric_limits<double>::infinity());
  EXPECT_EQ(numberShown(generator.image(5.9)), 100);
  EXPECT_LE(generator.counts().framesDecoded, 1);
}

TEST(ImageGenerator, FramesNothingDependsOnArePassedOver) {
  const auto clip = makeVideo(
      numberedPicture(10, 25),
      h264({"-preset", "medium", "-g", "250", "-bf", "3", "-b_strategy", "0", "-x264-params", "b-pyramid=none"}),
      "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_NEAR(numberShown(generator.image(8)) / 25.0, 8, tolerance + rounding);
  EXPECT_GE(generator.counts().packetsRead, 190);
  EXPECT_LE(generator.counts().framesDecoded, 100);
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

struct Turn {
  std::string name;
  std::array<std::int32_t, 9> matrix;
  std::string corners;  // from the darkest to the brightest, stored as tl tr bl br
  bool onItsSide;
};

class EveryOrientation : public testing::TestWithParam<Turn> {};

constexpr std::int32_t one = 1 << 16, unit = 1 << 30;

TEST_P(EveryOrientation, GivesTheUprightPicture) {
  const TemporaryFolder folder;
  const Turn& turn = GetParam();
  const Bytes stored = readClip(makeVideo(fourQuarters(), h264(), "mp4"));
  const Image image = imageAt(writeClip(folder / "turned.mp4", withMatrix(stored, turn.matrix)), 0.5);
  EXPECT_EQ(image.width(), turn.onItsSide ? 120 : 160);
  EXPECT_EQ(image.height(), turn.onItsSide ? 160 : 120);
  EXPECT_EQ(cornersByBrightness(image), turn.corners);
  const Image small = image.scaled(image.width() / 2, image.height() / 2);
  EXPECT_EQ(small.width(), image.width() / 2);
  EXPECT_EQ(cornersByBrightness(small), turn.corners);
  const auto decoded = Image::decodeJPEG(image.jpeg(0.9));
  ASSERT_TRUE(decoded);
  EXPECT_EQ(decoded->width(), image.width());
  EXPECT_EQ(cornersByBrightness(*decoded), turn.corners);
}

INSTANTIATE_TEST_SUITE_P(
    ImageGenerator, EveryOrientation,
    testing::Values(Turn{"Upright", rotation(0), "tl tr bl br", false},
                    Turn{"Clockwise90", rotation(90), "tr br tl bl", true},
                    Turn{"Clockwise180", rotation(180), "br bl tr tl", false},
                    Turn{"Clockwise270", rotation(270), "bl tl br tr", true},
                    Turn{"MirroredSideways", {-one, 0, 0, 0, one, 0, 0, 0, unit}, "tr tl br bl", false},
                    Turn{"MirroredUpsideDown", {one, 0, 0, 0, -one, 0, 0, 0, unit}, "bl br tl tr", false},
                    Turn{"Transposed", {0, one, 0, one, 0, 0, 0, 0, unit}, "tl bl tr br", true},
                    Turn{"TransposedTheOtherWay", {0, -one, 0, -one, 0, 0, 0, 0, unit}, "br tr bl tl", true},
                    Turn{"MatrixOfZeros", {}, "tl tr bl br", false}),
    [](const auto& turn) { return turn.param.name; });

TEST(ImageGenerator, RotationsWrittenByOthersAreUnderstood) {
  const auto stored = makeVideo(fourQuarters(), h264(), "mp4");
  // The tag counts counter-clockwise.
  const auto tagged = makeClip({"-i", stored.string(), "-c", "copy", "-metadata:s:v", "rotate=90"}, "mp4");
  EXPECT_EQ(cornersByBrightness(imageAt(tagged, 0.5)), "bl tl br tr");
}

TEST(ImageGenerator, OddSizesTurnCleanly) {
  const TemporaryFolder folder;
  const auto clip = makeVideo("color=red:s=161x121:r=10:d=0.5,format=yuv444p", {"-c:v", "libx264", "-qp", "1"}, "mp4");
  for (const int degrees : {0, 90, 180, 270}) {
    const Image image = imageAt(writeClip(folder / "odd.mp4", withMatrix(readClip(clip), rotation(degrees))), 0);
    const bool onItsSide = degrees % 180 != 0;
    EXPECT_EQ(image.width(), onItsSide ? 121 : 161);
    const Bytes jpeg = image.jpeg(1);
    for (const int x : {0, image.width() - 1})
      for (const int y : {0, image.height() - 1})
        EXPECT_LE(distance(colourAt(jpeg, x, y), {254, 0, 0}), 6) << degrees << " at " << x << "," << y;
  }
}

TEST(ImageGenerator, OddSizesWithHalvedColoursKeepTheirEdges) {
  const Arguments vp9{"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-crf", "10"};
  for (const Arguments& encoding : {Arguments{"-c:v", "mpeg4", "-q:v", "1"}, vp9}) {
    const Image image =
        imageAt(makeVideo("color=red:s=322x242:r=10:d=0.5,format=yuv420p,scale=161:121", encoding, "mp4"), 0);
    EXPECT_EQ(image.width(), 161);
    EXPECT_EQ(image.height(), 121);
    const Bytes jpeg = image.jpeg(1);
    for (const int x : {0, 160})
      for (const int y : {0, 120})
        EXPECT_LE(distance(colourAt(jpeg, x, y), {254, 0, 0}), 6) << encoding[1] << " at " << x << "," << y;
  }
}

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

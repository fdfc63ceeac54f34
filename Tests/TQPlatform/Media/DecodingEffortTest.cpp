#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "TQPlatform/Media/ShownPictures.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

/// Ten seconds of one group of pictures: one that others depend on, which is decoded first, and the three before it:
/// 0, 4, 1, 2, 3, 8, 5 ...
fs::path oneGroup() {
  return makeVideo(
      numberedPicture(10, 25),
      h264({"-preset", "medium", "-g", "250", "-bf", "3", "-b_strategy", "0", "-x264-params", "b-pyramid=none"}),
      "mp4");
}

TEST(DecodingEffort, TheEndIsDecodedOnceHoweverOftenItIsAskedFor) {
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

TEST(DecodingEffort, OneFrameNearTheEndDecodesOneGroupOfPicturesAtMost) {
  const auto clip = makeVideo(numberedPicture(60, 25), h264({"-preset", "medium", "-g", "25", "-bf", "2"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_NEAR(numberShown(generator.image(58.6)) / 25.0, 58.6, tolerance + rounding);
  EXPECT_LE(generator.counts().framesDecoded, 25);
  EXPECT_LE(generator.counts().packetsRead, 30);
  EXPECT_EQ(generator.counts().seeks, 1);
}

TEST(DecodingEffort, NeighboursInOneGroupOfPicturesAreNotDecodedTwice) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-preset", "medium", "-g", "250", "-bf", "2"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  for (const double time : rising(0, 10, 0.5))
    generator.image(time);
  EXPECT_LE(generator.counts().packetsRead, 250);
  EXPECT_EQ(generator.counts().seeks, 1);
}

TEST(DecodingEffort, NothingOfAGroupIsReadBehindTheLastPictureThatIsExpectedOfIt) {
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

TEST(DecodingEffort, AKeyFrameIsFoundThoughItIsShownLaterThanDecoded) {
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

TEST(DecodingEffort, KeyFramesOfOpenGroupsAreShownLaterThanTheFirstOfAll) {
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

TEST(DecodingEffort, WhatLiesBetweenTwoPicturesIsLookedForAfterTheGroupWasLeft) {
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

TEST(DecodingEffort, ApproximatePicturesAreAlikeToTheEye) {
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

TEST(DecodingEffort, AKeyFrameWithinTheToleranceIsAllThatIsDecoded) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-g", "25"}), "mp4");
  for (const double time : {5.0, 5.15, 4.85}) {
    MediaAsset asset(clip);
    ImageGenerator generator(asset, tolerance);
    EXPECT_EQ(numberShown(generator.image(time)), 125) << time;
    EXPECT_LE(generator.counts().framesDecoded, 1) << time;
  }
}

TEST(DecodingEffort, InfiniteToleranceTakesTheKeyFrameBefore) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-g", "50"}), "mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset, std::numeric_limits<double>::infinity());
  EXPECT_EQ(numberShown(generator.image(5.9)), 100);
  EXPECT_LE(generator.counts().framesDecoded, 1);
}

TEST(DecodingEffort, FramesNothingDependsOnArePassedOver) {
  const auto clip = oneGroup();
  MediaAsset asset(clip);
  ImageGenerator generator(asset, tolerance);
  EXPECT_NEAR(numberShown(generator.image(8)) / 25.0, 8, tolerance + rounding);
  EXPECT_GE(generator.counts().packetsRead, 190);
  EXPECT_LE(generator.counts().framesDecoded, 100);
}

TEST(DecodingEffort, APictureRightAfterAWantedOneIsNeverSkipped) {
  MediaAsset asset(oneGroup());
  ImageGenerator generator(asset, tolerance);
  generator.expect({5, 8});
  EXPECT_EQ(numberShown(generator.image(5)), 120);
  EXPECT_EQ(numberShown(generator.image(8)), 196) << "the first in the order of decoding";
  // 0, 4 ... 120 and on to 196, and behind 120, where a second field would lie, number 117, which nothing depends on.
  EXPECT_EQ(generator.counts().framesDecoded, 31 + 19 + 1);
}

TEST(DecodingEffort, AWantedTimeRightBehindAnotherHasItsPictureAtOnce) {
  constexpr double exactly = 0.01;
  const auto clip = oneGroup();
  for (const int threads : {1, 3})  // which read ahead
    for (const int first : {4, 5, 6, 7, 120, 121, 122, 123}) {
      MediaAsset asset(clip);
      ImageGenerator generator(asset, exactly, threads);
      generator.expect({first / 25.0, (first + 1) / 25.0});
      EXPECT_EQ(numberShown(generator.image(first / 25.0)), first);
      EXPECT_EQ(numberShown(generator.image((first + 1) / 25.0)), first + 1);
      EXPECT_EQ(generator.counts().seeks, 1) << first << " and the next one";
    }
}

TEST(DecodingEffort, WhereAllTimesAreWantedNothingIsSkippedOrDecodedTwice) {
  const auto clip = oneGroup();
  for (const int threads : {1, 3}) {
    MediaAsset asset(clip);
    ImageGenerator generator(asset, 0.01, threads);
    generator.expect(rising(0, 9.99, 0.04));
    for (int number = 0; number < 250; ++number)
      EXPECT_EQ(numberShown(generator.image(number / 25.0)), number);
    EXPECT_EQ(generator.counts().framesDecoded, 250);
  }
}

}  // namespace
}  // namespace tq::test

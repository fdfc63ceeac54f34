#include <future>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQFrames/VideoThumbnailer.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

constexpr double infinity = std::numeric_limits<double>::infinity();

/// The thumbnail as the library's grid asks for it; absent when there is none.
std::optional<Image> thumbnailOf(const fs::path& clip, double maxPixelSize = 320) {
  const auto jpeg = VideoThumbnailer::jpegThumbnail(clip, maxPixelSize, 0.8);
  return jpeg ? Image::decodeJPEG(*jpeg) : std::nullopt;
}

void expectSize(const std::optional<Image>& image, int width, int height) {
  ASSERT_TRUE(image);
  EXPECT_EQ(image->width(), width);
  EXPECT_EQ(image->height(), height);
}

/// Ten seconds of numbered pictures, each of which is a key frame: the cheapest one is the nearest one.
fs::path tenSeconds() {
  return makeVideo(numberedPicture(10, 10), h264({"-g", "1"}), "mp4");
}

TEST(VideoThumbnailer, AClipOfTenSecondsIsShownAtFive) {
  const auto thumbnail = thumbnailOf(tenSeconds());
  ASSERT_TRUE(thumbnail);
  EXPECT_NEAR(numberShown(*thumbnail), 50, 1);
  EXPECT_EQ(VideoThumbnailer::timeIn(10), 5);
}

TEST(VideoThumbnailer, AnIndefiniteDurationAsksForTheStart) {
  for (const double duration : {0.0, -1.0, infinity, -infinity, std::numeric_limits<double>::quiet_NaN()})
    EXPECT_EQ(VideoThumbnailer::timeIn(duration), 0) << duration;
  const TemporaryFolder folder;
  const auto thumbnail = thumbnailOf(writeClip(folder / "endless.mp4", withDuration(readClip(tenSeconds()), 0)));
  ASSERT_TRUE(thumbnail);
  EXPECT_EQ(numberShown(*thumbnail), 0);
}

TEST(VideoThumbnailer, ADurationThatLiesStillGivesAPicture) {
  const TemporaryFolder folder;
  const Bytes clip = withDuration(readClip(tenSeconds()), 143'165'000);
  EXPECT_TRUE(thumbnailOf(writeClip(folder / "lying.mp4", clip)));
}

TEST(VideoThumbnailer, TheCheapestPictureNearbyIsTheKeyFrame) {
  const auto clip = makeVideo(numberedPicture(10, 25), h264({"-g", "100", "-bf", "2"}), "mp4");
  const auto thumbnail = thumbnailOf(clip);
  ASSERT_TRUE(thumbnail);
  EXPECT_EQ(numberShown(*thumbnail), 100) << "the middle is frame 125";
}

TEST(VideoThumbnailer, FitsIntoTheSquareInProportion) {
  const auto wide = makeVideo(movingPicture(1, 25, "640x360"), h264(), "mp4");
  expectSize(thumbnailOf(wide, 320), 320, 180);
  expectSize(thumbnailOf(wide, 100.9), 100, 57);
  expectSize(thumbnailOf(makeVideo(movingPicture(1, 25, "360x640"), h264(), "mp4"), 320), 180, 320);
}

TEST(VideoThumbnailer, NeverEnlarges) {
  expectSize(thumbnailOf(tenSeconds(), 192), 192, 32);
  expectSize(thumbnailOf(tenSeconds(), 193), 192, 32);
  expectSize(thumbnailOf(tenSeconds(), 320), 192, 32);
  expectSize(thumbnailOf(tenSeconds(), 1e300), 192, 32);
  expectSize(thumbnailOf(tenSeconds(), infinity), 192, 32);
}

TEST(VideoThumbnailer, ASizeOfNothingSetsNoLimit) {
  for (const double size : {0.0, -5.0, -infinity, std::numeric_limits<double>::quiet_NaN()})
    expectSize(thumbnailOf(tenSeconds(), size), 192, 32);
}

TEST(VideoThumbnailer, TheShorterSideNeverVanishes) {
  expectSize(thumbnailOf(tenSeconds(), 2), 2, 1);
  expectSize(thumbnailOf(tenSeconds(), 0.3), 1, 1);
}

TEST(VideoThumbnailer, APortraitClipThatStoresARotationIsUpright) {
  const TemporaryFolder folder;
  const Bytes stored = readClip(makeVideo(fourQuarters(), h264(), "mp4"));
  const auto thumbnail = thumbnailOf(writeClip(folder / "portrait.mp4", withMatrix(stored, rotation(90))), 80);
  expectSize(thumbnail, 60, 80);
  EXPECT_EQ(cornersByBrightness(*thumbnail), "tr br tl bl");
}

TEST(VideoThumbnailer, TheQualityMovesTheSize) {
  const auto clip = makeVideo(movingPicture(1), h264(), "mp4");
  const auto bytes = [&](double quality) {
    return VideoThumbnailer::jpegThumbnail(clip, 160, quality).value_or(Bytes()).size();
  };
  EXPECT_GT(bytes(0.1), 0u);
  EXPECT_LT(bytes(0.1), bytes(0.8));
}

TEST(VideoThumbnailer, WhatIsNoFileHasNone) {
  const TemporaryFolder folder;
  EXPECT_FALSE(thumbnailOf(folder / "missing.mp4"));
  EXPECT_FALSE(thumbnailOf(folder.path()));
  EXPECT_FALSE(thumbnailOf(""));
}

TEST(VideoThumbnailer, FilesThatAreNoClipsHaveNone) {
  const TemporaryFolder folder;
  EXPECT_FALSE(thumbnailOf(folder.write("empty.mp4", "")));
  EXPECT_FALSE(thumbnailOf(folder.write("text.mov", "no movie")));
  Bytes bytes = readClip(tenSeconds());
  bytes.resize(bytes.size() / 2);
  EXPECT_FALSE(thumbnailOf(writeClip(folder / "without-tables.mp4", bytes)));
}

TEST(VideoThumbnailer, PicturesThatCannotBeDecodedHaveNone) {
  const auto encrypted =
      makeVideo(movingPicture(1),
                h264({"-encryption_scheme", "cenc-aes-ctr", "-encryption_key", "76a6c65c5ea762046bd749a2e632ccbb",
                      "-encryption_kid", "a7e61c373e219033c21091fa607bf3b8"}),
                "mp4");
  EXPECT_FALSE(thumbnailOf(encrypted));
  EXPECT_FALSE(thumbnailOf(makeClip({"-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac"}, "mp4")));
}

TEST(VideoThumbnailer, ClipsForTheToolsHaveNoneThoughTheyAreGood) {
  for (const auto* extension : {"mkv", "avi"})
    EXPECT_FALSE(thumbnailOf(makeVideo(movingPicture(1), h264(), extension))) << extension;
}

TEST(VideoThumbnailer, APictureThatCannotBeEncodedGivesNothing) {
  EXPECT_FALSE(VideoThumbnailer::encodeJPEG(Image::fromRGB(66'000, 1, Bytes(3 * 66'000)), 0.8));
  const auto jpeg = VideoThumbnailer::encodeJPEG(Image::fromRGB(20, 10, Bytes(3 * 200)), 0.8);
  ASSERT_TRUE(jpeg);
  expectSize(Image::decodeJPEG(*jpeg), 20, 10);
}

TEST(VideoThumbnailer, AStopRequestGivesNothing) {
  std::stop_source source;
  source.request_stop();
  EXPECT_FALSE(VideoThumbnailer::jpegThumbnail(tenSeconds(), 320, 0.8, source.get_token()));
}

TEST(VideoThumbnailer, CallsRunSideBySide) {
  const auto clip = tenSeconds();
  const auto expected = VideoThumbnailer::jpegThumbnail(clip, 96, 0.8);
  ASSERT_TRUE(expected);
  std::vector<std::future<std::optional<Bytes>>> calls;
  for (int call = 0; call < 8; ++call)
    calls.push_back(std::async(std::launch::async, [&] { return VideoThumbnailer::jpegThumbnail(clip, 96, 0.8); }));
  for (auto& call : calls)
    EXPECT_EQ(call.get(), expected);
}

}  // namespace
}  // namespace tq::test

#include <gtest/gtest.h>
#include <limits>

#include "Support/ClipMaker.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/FrameImages.hpp"

namespace tq::test {
namespace {

Image picture(int width, int height) {
  return Image::fromRGB(width, height,
                        Bytes(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3, 90));
}

void expectSize(const Image& image, int width, int height) {
  EXPECT_EQ(image.width(), width);
  EXPECT_EQ(image.height(), height);
}

TEST(Downscale, BringsTheLongerSideToTheEdge) {
  expectSize(downscale(picture(1920, 1080), 1568), 1568, 882);
  expectSize(downscale(picture(1080, 1920), 1568), 882, 1568);
}

TEST(Downscale, RoundsTheShorterSide) {
  expectSize(downscale(picture(161, 121), 80), 80, 60);
  expectSize(downscale(picture(300, 101), 150), 150, 51);  // 50.5 goes up
}

TEST(Downscale, SmallPicturesStayAsTheyAre) {
  const Image image = picture(100, 50);
  EXPECT_EQ(&downscale(image, 100).storage(), &image.storage());
  EXPECT_EQ(&downscale(image, std::numeric_limits<std::int64_t>::max()).storage(), &image.storage());
}

TEST(Downscale, WhatCannotBeScaledStaysAsItIs) {
  const Image image = picture(100, 50);
  for (const auto edge : {std::int64_t{0}, std::int64_t{-7}, std::numeric_limits<std::int64_t>::min()})
    EXPECT_EQ(&downscale(image, edge).storage(), &image.storage()) << edge;
  const Image line = picture(1000, 1);
  EXPECT_EQ(&downscale(line, 100).storage(), &line.storage()) << "its height would vanish";
}

TEST(JPEGData, IsAPictureOfThatSize) {
  const auto decoded = Image::decodeJPEG(jpegData(picture(33, 17), 0.85));
  ASSERT_TRUE(decoded);
  expectSize(*decoded, 33, 17);
}

TEST(JPEGData, AFailureIsAnErrorOfTheExtraction) {
  try {
    jpegData(picture(66'000, 1), 0.5);
    FAIL();
  } catch (const TQError& error) {
    EXPECT_EQ(error, TQError::frameExtractionFailed("JPEG encoding failed"));
  }
}

}  // namespace
}  // namespace tq::test

#include <gtest/gtest.h>

#include "Support/ClipMaker.hpp"
#include "TQFrames/PerceptualHash.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"

namespace tq::test {
namespace {

/// A picture of 9 x 8 blocks of 8 x 8 pixels whose grey is `level(row, column)`.
template <class Level>
Image blocks(Level level) {
  Bytes pixels;
  for (int y = 0; y < 64; ++y)
    for (int x = 0; x < 72; ++x)
      pixels.insert(pixels.end(), 3, static_cast<std::uint8_t>(level(y / 8, x / 8)));
  return Image::fromRGB(72, 64, pixels);
}

TEST(PerceptualHash, BrighterLeftNeighboursAreOnes) {
  EXPECT_EQ(perceptualHash(blocks([](int, int column) { return 250 - 25 * column; })), ~std::uint64_t{0});
  EXPECT_EQ(perceptualHash(blocks([](int, int column) { return 25 * column; })), 0u);
}

TEST(PerceptualHash, EqualNeighboursAreZeros) {
  EXPECT_EQ(perceptualHash(blocks([](int, int) { return 128; })), 0u);
}

TEST(PerceptualHash, TheFirstComparisonIsTheTopmostBit) {
  EXPECT_EQ(perceptualHash(blocks([](int row, int column) { return row == 0 && column == 0 ? 200 : 100; })),
            std::uint64_t{1} << 63);
}

TEST(PerceptualHash, RowsFollowEachOtherFromTheTop) {
  const auto hash = perceptualHash(blocks([](int row, int column) { return row == 7 && column == 8 ? 50 : 100; }));
  EXPECT_EQ(hash, 1u);
  EXPECT_EQ(perceptualHash(blocks([](int row, int column) { return row == 1 ? 250 - 25 * column : 0; })),
            std::uint64_t{0xFF} << 48);
}

TEST(PerceptualHash, LikePicturesAreNearAndOtherOnesFar) {
  MediaAsset asset(makeVideo("mandelbrot=s=320x240:r=10", h264({"-t", "4"}), "mp4"));
  ImageGenerator generator(asset);
  const auto first = perceptualHash(generator.image(2));
  const Image same = generator.image(2.1).scaled(160, 120);
  EXPECT_LT(hammingDistance(first, perceptualHash(same)), 12);
  MediaAsset other(makeVideo(movingPicture(1), h264(), "mp4"));
  EXPECT_GE(hammingDistance(first, perceptualHash(ImageGenerator(other).image(0))), 12);
}

TEST(HammingDistance, CountsTheBitsThatDiffer) {
  EXPECT_EQ(hammingDistance(0, 0), 0);
  EXPECT_EQ(hammingDistance(0, ~std::uint64_t{0}), 64);
  EXPECT_EQ(hammingDistance(0b1010, 0b0110), 2);
}

}  // namespace
}  // namespace tq::test

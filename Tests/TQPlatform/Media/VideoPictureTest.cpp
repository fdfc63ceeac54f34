#include <algorithm>
#include <array>
#include <cstring>
#include <gtest/gtest.h>
#include <vector>

#include "Support/ClipMaker.hpp"
#include "TQPlatform/Media/VideoPicture.hpp"

namespace tq::test {
namespace {

using Matrix = VideoPicture::Matrix;
using Transfer = VideoPicture::Transfer;
using Plane = std::vector<std::uint8_t>;

/// How far libswscale is off with its quick arithmetic.
constexpr int tolerance = 4;

/// A picture of one colour, with rows that are longer than they have pixels, as decoders keep them.
class PlainPicture {
 public:
  PlainPicture(const char* format, int width, int height, std::vector<Plane> samples, int rowsShift = 1)
      : width_(width), height_(height) {
    picture = {.format = format, .width = width, .height = height};
    for (std::size_t plane = 0; plane < samples.size(); ++plane) {
      const auto rows = static_cast<std::size_t>(plane == 0 ? height : (height + rowsShift) >> rowsShift);
      Plane& pixels = planes_.emplace_back();
      while (pixels.size() < stride * rows + 64)
        pixels.insert(pixels.end(), samples[plane].begin(), samples[plane].end());
    }
    for (std::size_t plane = 0; plane < planes_.size(); ++plane) {
      picture.planes.at(plane) = planes_[plane].data();
      picture.strides.at(plane) = static_cast<int>(stride);
    }
  }

  PlainPicture(const PlainPicture&) = delete;
  PlainPicture& operator=(const PlainPicture&) = delete;

  /// The right half gets that first sample.
  void setRightHalf(std::uint8_t level) {
    for (int row = 0; row < height_; ++row)
      std::memset(planes_[0].data() + stride * static_cast<std::size_t>(row) + width_ / 2, level,
                  static_cast<std::size_t>(width_ - width_ / 2));
  }

  VideoPicture picture;

 private:
  static constexpr std::size_t stride = 1024;
  int width_, height_;
  std::vector<Plane> planes_;
};

/// 0xffRRGGBB each, and what nobody may write behind each row.
class Screen {
 public:
  Screen(int width, int height) : width_(width), height_(height), pixels_(stride() * height_, untouched) {}

  ScreenPixels pixels() {
    return {.first = reinterpret_cast<std::uint8_t*>(pixels_.data()),
            .stride = static_cast<std::ptrdiff_t>(stride() * sizeof(std::uint32_t)),
            .width = width_,
            .height = height_};
  }

  Colour at(int x, int y) const {
    const std::uint32_t pixel = pixels_.at(stride() * static_cast<std::size_t>(y) + static_cast<std::size_t>(x));
    EXPECT_EQ(pixel >> 24, 0xffU) << "at " << x << ", " << y;
    return {static_cast<int>(pixel >> 16 & 0xff), static_cast<int>(pixel >> 8 & 0xff), static_cast<int>(pixel & 0xff)};
  }

  bool isCleanBehindRows() const {
    for (std::size_t row = 0; row < static_cast<std::size_t>(height_); ++row)
      for (std::size_t column = static_cast<std::size_t>(width_); column < stride(); ++column)
        if (pixels_[stride() * row + column] != untouched) return false;
    return true;
  }

 private:
  static constexpr std::uint32_t untouched = 0x01020304;
  std::size_t stride() const { return static_cast<std::size_t>(width_) + 8; }

  int width_, height_;
  std::vector<std::uint32_t> pixels_;
};

Colour shown(const VideoPicture& picture, int width = 40, int height = 30) {
  VideoScaler scaler;
  Screen screen(width, height);
  EXPECT_TRUE(scaler.draw(picture, screen.pixels()));
  EXPECT_TRUE(screen.isCleanBehindRows());
  EXPECT_LE(distance(screen.at(0, 0), screen.at(width - 1, height - 1)), tolerance);
  return screen.at(width / 2, height / 2);
}

TEST(VideoPicture, IsShownInTheColoursThatItsMatrixAndRangeMean) {
  struct Red {
    Matrix matrix;
    bool fullRange;
    std::array<std::uint8_t, 3> samples;
  };
  // ITU-R BT.601, BT.709 and BT.2020: the red that a display has
  for (const Red& red : {Red{Matrix::bt601, false, {81, 90, 240}}, Red{Matrix::bt601, true, {76, 85, 255}},
                         Red{Matrix::bt709, false, {63, 102, 240}}, Red{Matrix::bt709, true, {54, 99, 255}},
                         Red{Matrix::bt2020, false, {74, 97, 240}}, Red{Matrix::unknown, false, {81, 90, 240}}}) {
    PlainPicture plain("yuv420p", 80, 60, {{red.samples[0]}, {red.samples[1]}, {red.samples[2]}});
    plain.picture.matrix = red.matrix;
    plain.picture.fullRange = red.fullRange;
    EXPECT_LE(distance(shown(plain.picture), {255, 0, 0}), tolerance)
        << static_cast<int>(red.matrix) << (red.fullRange ? " full" : "");
  }
}

TEST(VideoPicture, UntaggedPicturesOfHighDefinitionAreBT709) {
  const PlainPicture plain("yuv420p", 640, 720, {{63}, {102}, {240}});
  EXPECT_LE(distance(shown(plain.picture), {255, 0, 0}), tolerance);
}

TEST(VideoPicture, EveryWayToStoreItLooksTheSame) {
  struct Stored {
    const char* format;
    std::vector<Plane> samples;
    int rowsShift = 1;
  };
  const std::vector<Stored> all{
      {"yuv420p", {{81}, {90}, {240}}},
      {"yuv422p", {{81}, {90}, {240}}, 0},
      {"nv12", {{81}, {90, 240}}},
      {"nv21", {{81}, {240, 90}}},
      {"yuyv422", {{81, 90, 81, 240}}},
      {"uyvy422", {{90, 81, 240, 81}}},
      {"yuv420p10le", {{0x44, 1}, {0x68, 1}, {0xc0, 3}}},
      {"p010le", {{0, 81}, {0, 90, 0, 240}}},
      {"p016le", {{0, 81}, {0, 90, 0, 240}}},
      {"0rgb", {{9, 255, 0, 0}}},
      {"bgr0", {{0, 0, 255, 9}}},
      {"0bgr", {{9, 0, 0, 255}}},
      {"rgb0", {{255, 0, 0, 9}}},
  };
  for (const Stored& stored : all) {
    const PlainPicture plain(stored.format, 80, 60, stored.samples, stored.rowsShift);
    EXPECT_LE(distance(shown(plain.picture), {255, 0, 0}), tolerance) << stored.format;
  }
  const PlainPicture grey("gray", 80, 60, {{126}});
  EXPECT_LE(distance(shown(grey.picture), {128, 128, 128}), 2);
}

TEST(VideoPicture, FillsTheSizeAskedForWhateverItIs) {
  PlainPicture halves("yuv420p", 80, 60, {{16}, {128}, {128}});
  halves.setRightHalf(235);
  VideoScaler scaler;
  for (const auto& [width, height] : {std::pair(80, 60), {40, 30}, {33, 17}, {201, 151}, {3, 1}, {500, 7}}) {
    Screen screen(width, height);
    ASSERT_TRUE(scaler.draw(halves.picture, screen.pixels()));
    EXPECT_TRUE(screen.isCleanBehindRows());
    for (const int row : {0, height - 1}) {
      EXPECT_LE(distance(screen.at(0, row), {0, 0, 0}), 8) << width << " x " << height;
      EXPECT_LE(distance(screen.at(width - 1, row), {255, 255, 255}), 8) << width << " x " << height;
    }
  }
}

TEST(VideoPicture, OneScalerDrawsPicturesOfAnyKindOneAfterTheOther) {
  VideoScaler scaler;
  const PlainPicture first("yuv420p", 80, 60, {{81}, {90}, {240}}), second("nv12", 64, 64, {{235}, {128, 128}}),
      third("bgr0", 20, 20, {{255, 0, 0, 0}});
  for (int round = 0; round < 2; ++round)
    for (const auto& [picture, colour] :
         {std::pair(&first, Colour{255, 0, 0}), {&second, Colour{255, 255, 255}}, {&third, Colour{0, 0, 255}}}) {
      Screen screen(30, 30);
      ASSERT_TRUE(scaler.draw(picture->picture, screen.pixels()));
      EXPECT_LE(distance(screen.at(15, 15), colour), 4) << picture->picture.format;
    }
}

TEST(VideoPicture, WhatIsBrighterThanADisplayIsToneMapped) {
  // 203 cd/m2, which is white in ordinary video (ITU-R BT.2408), in ten bits of video range
  PlainPicture white("yuv420p10le", 80, 60, {{0x3d, 2}, {0, 2}, {0, 2}});
  white.picture.matrix = Matrix::bt2020;
  white.picture.transfer = Transfer::pq;
  const Colour asPQ = shown(white.picture);
  EXPECT_LE(distance(asPQ, {191, 191, 191}), 4);
  white.picture.transfer = Transfer::hlg;
  EXPECT_GT(distance(shown(white.picture), asPQ), 4);
}

TEST(VideoPicture, WhatCannotBeDrawnIsRefused) {
  VideoScaler scaler;
  Screen screen(40, 30);
  const PlainPicture good("yuv420p", 80, 60, {{81}, {90}, {240}});
  const auto refuses = [&](auto change) {
    VideoPicture picture = good.picture;
    change(picture);
    return !scaler.draw(picture, screen.pixels());
  };
  EXPECT_FALSE(refuses([](VideoPicture&) {}));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.format = ""; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.format = "no such format"; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.format = "vaapi"; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.planes[2] = nullptr; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.strides[1] = 0; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.width = 0; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.height = -60; }));
  EXPECT_TRUE(refuses([](VideoPicture& picture) { picture.width = picture.height = 1 << 20; }));
  ScreenPixels nothing = screen.pixels();
  nothing.height = 0;
  EXPECT_FALSE(scaler.draw(good.picture, nothing));
}

}  // namespace
}  // namespace tq::test

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <gtest/gtest.h>

#include "TQPlatform/Media/JPEGColours.hpp"
#include "TQPlatform/Media/Libav.hpp"

extern "C" {
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace tq::test {
namespace {

using Numbers = std::array<double, 3>;

libav::Owned<AVFrame> makePlanes(int width, int height, AVPixelFormat format) {
  auto frame = libav::makeFrame();
  frame->width = width;
  frame->height = height;
  frame->format = format;
  EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
  return frame;
}

std::uint16_t& at(AVFrame& frame, int plane, int column, int row) {
  return reinterpret_cast<std::uint16_t*>(frame.data[plane] + std::ptrdiff_t{frame.linesize[plane]} * row)[column];
}

std::uint8_t seen(const AVFrame& frame, int plane, int column, int row) {
  return frame.data[plane][std::ptrdiff_t{frame.linesize[plane]} * row + column];
}

struct Standard {
  int matrix;
  double red, blue;
};

constexpr Standard bt709{SWS_CS_ITU709, 0.2126, 0.0722}, bt601{SWS_CS_ITU601, 0.299, 0.114},
    bt2020{SWS_CS_BT2020, 0.2627, 0.0593};

/// The long way: numbers of eight bits in the video's range to red, green and blue, and from there to those of a JPEG.
Numbers throughRGB(Numbers eight, const Standard& from, bool fullRange) {
  const double y = fullRange ? eight[0] / 255 : (eight[0] - 16) / 219;
  const double cb = (eight[1] - 128) / (fullRange ? 255 : 224), cr = (eight[2] - 128) / (fullRange ? 255 : 224);
  const double r = y + 2 * (1 - from.red) * cr, b = y + 2 * (1 - from.blue) * cb;
  const double g = (y - from.red * r - from.blue * b) / (1 - from.red - from.blue);
  const double luma = 0.299 * r + 0.587 * g + 0.114 * b;
  return {255 * luma, 128 + 255 * (b - luma) / 1.772, 128 + 255 * (r - luma) / 1.402};
}

void expectRounded(std::uint8_t got, double exact, const char* what) {
  // Only numbers that lie next to the middle between two may go either way.
  EXPECT_LE(std::abs(got - std::clamp(exact, 0.0, 255.0)), 0.53) << what << ": " << int{got} << " for " << exact;
}

TEST(JPEGColours, EveryColourBecomesTheNearestOne) {
  constexpr int step = 5, count = 256 / step + 1;
  for (const Standard& standard : {bt709, bt601, bt2020})
    for (const bool fullRange : {false, true}) {
      auto source = makePlanes(count * count, count, AV_PIX_FMT_YUV444P10);
      auto target = makePlanes(count * count, count, AV_PIX_FMT_YUV444P);
      for (int row = 0; row < count; ++row)
        for (int column = 0; column < count * count; ++column)
          for (const auto& [plane, value] : {std::pair{0, row}, {1, column % count}, {2, column / count}})
            at(*source, plane, column, row) = static_cast<std::uint16_t>(4 * step * value);
      toJPEGColours(*source, {.matrix = standard.matrix, .fullRange = fullRange, .depth = 8}, *target);
      for (int row = 0; row < count; ++row)
        for (int column = 0; column < count * count; ++column) {
          const Numbers exact =
              throughRGB({double(step * row), double(step * (column % count)), double(step * (column / count))},
                         standard, fullRange);
          for (const int plane : {0, 1, 2})
            expectRounded(seen(*target, plane, column, row), exact[static_cast<std::size_t>(plane)], "plane");
          if (HasFailure()) return;
        }
    }
}

TEST(JPEGColours, TenBitsKeepTheirHalfSteps) {
  auto source = makePlanes(1024, 1, AV_PIX_FMT_YUV444P10);
  auto target = makePlanes(1024, 1, AV_PIX_FMT_YUV444P);
  for (int code = 0; code < 1024; ++code) {
    at(*source, 0, code, 0) = static_cast<std::uint16_t>(code);
    at(*source, 1, code, 0) = at(*source, 2, code, 0) = 512;
  }
  toJPEGColours(*source, {.matrix = SWS_CS_ITU709, .fullRange = false, .depth = 10}, *target);
  for (int code = 0; code < 1024; ++code)
    expectRounded(seen(*target, 0, code, 0), 255.0 * (code - 64) / 876, "limited");
  toJPEGColours(*source, {.matrix = SWS_CS_ITU709, .fullRange = true, .depth = 10}, *target);
  for (int code = 0; code < 1024; ++code)
    expectRounded(seen(*target, 0, code, 0), 255.0 * code / 1023, "full");
}

/// The chroma number at a place of luma, as JPEG decoders fill it in: the nearest sample of each direction counts
/// three times as much as the next one.
double filledIn(AVFrame& frame, int plane, int x, int y) {
  const int width = (frame.width + 1) / 2, height = (frame.height + 1) / 2;
  const auto neighbour = [](int place, int count) {
    return std::clamp(place / 2 + (place % 2 != 0 ? 1 : -1), 0, count - 1);
  };
  const int nextX = neighbour(x, width), nextY = neighbour(y, height);
  const auto mixed = [&](int row) { return 0.75 * at(frame, plane, x / 2, row) + 0.25 * at(frame, plane, nextX, row); };
  return 0.75 * mixed(y / 2) + 0.25 * mixed(nextY);
}

TEST(JPEGColours, LumaBetweenChromaSamplesTakesWhatADecoderFillsIn) {
  for (const auto& [width, height] : {std::pair{16, 12}, {7, 5}, {1, 1}, {2, 1}, {1, 3}}) {
    auto source = makePlanes(width, height, AV_PIX_FMT_YUV420P10);
    auto target = makePlanes(width, height, AV_PIX_FMT_YUV420P);
    const int chromaWidth = (width + 1) / 2, chromaHeight = (height + 1) / 2;
    for (int row = 0; row < height; ++row)
      for (int column = 0; column < width; ++column)
        at(*source, 0, column, row) = static_cast<std::uint16_t>(400 + 13 * column + 7 * row);
    for (int row = 0; row < chromaHeight; ++row)
      for (int column = 0; column < chromaWidth; ++column) {
        at(*source, 1, column, row) = static_cast<std::uint16_t>((column + row) % 2 == 0 ? 300 : 700);
        at(*source, 2, column, row) = static_cast<std::uint16_t>(column % 3 == 0 ? 740 : 360);
      }
    toJPEGColours(*source, {.matrix = SWS_CS_ITU709, .fullRange = false, .depth = 8}, *target);
    for (int row = 0; row < height; ++row)
      for (int column = 0; column < width; ++column)
        expectRounded(seen(*target, 0, column, row),
                      throughRGB({at(*source, 0, column, row) / 4.0, filledIn(*source, 1, column, row) / 4,
                                  filledIn(*source, 2, column, row) / 4},
                                 bt709, false)[0],
                      "luma");
  }
}

TEST(JPEGColours, WhatOnlyTheRangeOfVideoHoldsBecomesTheNearestNumber) {
  auto source = makePlanes(2, 1, AV_PIX_FMT_YUV444P10);
  auto target = makePlanes(2, 1, AV_PIX_FMT_YUV444P);
  for (const int plane : {0, 1, 2}) {
    at(*source, plane, 0, 0) = plane == 0 ? 0 : 1023;
    at(*source, plane, 1, 0) = 1023;
  }
  toJPEGColours(*source, {.matrix = SWS_CS_ITU709, .fullRange = false, .depth = 8}, *target);
  EXPECT_EQ(seen(*target, 1, 0, 0), 255);
  EXPECT_EQ(seen(*target, 2, 0, 0), 255);
  EXPECT_EQ(seen(*target, 0, 1, 0), 255);
}

}  // namespace
}  // namespace tq::test

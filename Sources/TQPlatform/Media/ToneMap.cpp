#include "TQPlatform/Media/ToneMap.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

namespace tq {

namespace {

constexpr double diffuseWhite = 203;  // cd/m2, ITU-R BT.2408
constexpr double brightest = 1000;    // cd/m2, highlights above it are white
constexpr double top = brightest / diffuseWhite;
constexpr std::size_t tableSteps = 16384;

/// SMPTE ST 2084: signal to light, in cd/m2.
double lightOfPQ(double signal) {
  constexpr double m1 = 0.1593017578125, m2 = 78.84375, c1 = 0.8359375, c2 = 18.8515625, c3 = 18.6875;
  const double power = std::pow(signal, 1 / m2);
  return 10000 * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1 / m1);
}

/// ARIB STD-B67 with the system gamma of a 1000 cd/m2 display folded into each channel.
double lightOfHLG(double signal) {
  constexpr double a = 0.17883277, b = 0.28466892, c = 0.55991073;
  const double scene = signal <= 0.5 ? signal * signal / 3 : (std::exp((signal - c) / a) + b) / 12;
  return brightest * std::pow(scene, 1.2);
}

/// Extended Reinhard: light in units of diffuse white, of which the brightest highlight becomes 1.
double compressed(double light) {
  return light * (1 + light / (top * top)) / (1 + light);
}

/// IEC 61966-2-1.
double encodedSRGB(double value) {
  return value <= 0.0031308 ? 12.92 * value : 1.055 * std::pow(value, 1 / 2.4) - 0.055;
}

template <class Function>
std::vector<float> table(Function function) {
  std::vector<float> values(tableSteps + 1);
  for (std::size_t step = 0; step <= tableSteps; ++step)
    values[step] = static_cast<float>(function(static_cast<double>(step) / tableSteps));
  return values;
}

// BT.2020 to BT.709 primaries in linear light, ITU-R BT.2087.
constexpr std::array<std::array<float, 3>, 3> primaries{
    {{1.6605f, -0.5876f, -0.0728f}, {-0.1246f, 1.1329f, -0.0083f}, {-0.0182f, -0.1006f, 1.1187f}}};

}  // namespace

bool isHighDynamicRange(const AVFrame& frame) {
  return frame.color_trc == AVCOL_TRC_SMPTE2084 || frame.color_trc == AVCOL_TRC_ARIB_STD_B67;
}

void toneMap(const AVFrame& source, int transfer, AVFrame& target) {
  const auto linear = table([transfer](double signal) {
    return std::min((transfer == AVCOL_TRC_SMPTE2084 ? lightOfPQ(signal) : lightOfHLG(signal)) / diffuseWhite, top);
  });
  const auto display = table([](double step) { return 255 * encodedSRGB(compressed(step * top)); });
  for (int row = 0; row < source.height; ++row) {
    const auto* from =
        reinterpret_cast<const std::uint16_t*>(source.data[0] + std::ptrdiff_t{source.linesize[0]} * row);
    std::uint8_t* to = target.data[0] + std::ptrdiff_t{target.linesize[0]} * row;
    for (int column = 0; column < source.width; ++column, from += 3) {
      const std::array<float, 3> light{linear[from[0] >> 2], linear[from[1] >> 2], linear[from[2] >> 2]};
      for (const auto& weights : primaries) {
        const float value = weights[0] * light[0] + weights[1] * light[1] + weights[2] * light[2];
        const auto step =
            static_cast<std::size_t>(std::clamp(value / static_cast<float>(top), 0.0f, 1.0f) * tableSteps);
        *to++ = static_cast<std::uint8_t>(std::lround(display[step]));
      }
    }
  }
}

}  // namespace tq

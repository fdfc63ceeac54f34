#include "TQPlatform/Media/JPEGColours.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

namespace tq {

namespace {

using Vector = std::array<double, 3>;  // Y, Cb, Cr or R, G, B

/// The weights of red and blue in luma.
struct Weights {
  int matrix;
  double red, blue;
};

// ITU-R BT.601, BT.709 and BT.2020, FCC 73.682, SMPTE 240M; as in ITU-T H.273, table 4.
constexpr std::array weights{Weights{SWS_CS_ITU601, 0.299, 0.114}, Weights{SWS_CS_ITU709, 0.2126, 0.0722},
                             Weights{SWS_CS_BT2020, 0.2627, 0.0593}, Weights{SWS_CS_FCC, 0.30, 0.11},
                             Weights{SWS_CS_SMPTE240M, 0.212, 0.087}};

Weights weightsOf(int matrix) {
  const auto found = std::ranges::find(weights, matrix, &Weights::matrix);
  return found == weights.end() ? weights.front() : *found;
}

Vector rgbOf(const Vector& video, const Weights& from) {
  const double red = video[0] + 2 * (1 - from.red) * video[2];
  const double blue = video[0] + 2 * (1 - from.blue) * video[1];
  return {red, (video[0] - from.red * red - from.blue * blue) / (1 - from.red - from.blue), blue};
}

Vector videoOf(const Vector& rgb, const Weights& to) {
  const double luma = to.red * rgb[0] + (1 - to.red - to.blue) * rgb[1] + to.blue * rgb[2];
  return {luma, (rgb[2] - luma) / (2 * (1 - to.blue)), (rgb[0] - luma) / (2 * (1 - to.red))};
}

constexpr int fraction = 16;  // bits behind the point
constexpr std::int32_t half = 1 << (fraction - 1);
constexpr std::int32_t centre = 512;  // of chroma, in ten bits

std::int32_t fixed(double value) {
  return static_cast<std::int32_t>(std::lround(value * (1 << fraction)));
}

std::uint8_t rounded(std::int32_t value) {
  return static_cast<std::uint8_t>(std::clamp((value + half) >> fraction, 0, 255));
}

/// The numbers by which planes of ten bits become planes of a JPEG.
struct Steps {
  std::int32_t black;                            // of luma, in ten bits
  std::int32_t luma, lumaOfBlue, lumaOfRed;      // luma of luma, Cb and Cr
  std::int32_t blue, blueOfRed, red, redOfBlue;  // Cb of Cb and Cr, Cr of Cr and Cb
};

Steps stepsFor(const VideoColours& colours) {
  const double white = ((1 << colours.depth) - 1) * std::exp2(10 - colours.depth);
  const double luma = 255 / (colours.fullRange ? white : 219 * 4), chroma = 255 / (colours.fullRange ? white : 224 * 4);
  const Weights from = weightsOf(colours.matrix), to = weightsOf(SWS_CS_ITU601);
  const Vector ofBlue = videoOf(rgbOf({0, 1, 0}, from), to), ofRed = videoOf(rgbOf({0, 0, 1}, from), to);
  return {.black = colours.fullRange ? 0 : 16 * 4,
          .luma = fixed(luma),
          .lumaOfBlue = fixed(chroma * ofBlue[0]),
          .lumaOfRed = fixed(chroma * ofRed[0]),
          .blue = fixed(chroma * ofBlue[1]),
          .blueOfRed = fixed(chroma * ofRed[1]),
          .red = fixed(chroma * ofRed[2]),
          .redOfBlue = fixed(chroma * ofBlue[2])};
}

template <class Sample>
Sample* lineOf(const AVFrame& frame, int plane, int row) {
  return reinterpret_cast<Sample*>(frame.data[plane] + std::ptrdiff_t{frame.linesize[plane]} * row);
}

void convertChroma(const std::uint16_t* blue, const std::uint16_t* red, std::uint8_t* newBlue, std::uint8_t* newRed,
                   std::size_t width, const Steps& by) {
  for (std::size_t column = 0; column < width; ++column) {
    const std::int32_t b = blue[column] - centre, r = red[column] - centre;
    newBlue[column] = rounded(b * by.blue + r * by.blueOfRed + (128 << fraction));
    newRed[column] = rounded(r * by.red + b * by.redOfBlue + (128 << fraction));
  }
}

/// What a row of chroma adds to luma, at its own samples.
void addendsOf(const std::uint16_t* blue, const std::uint16_t* red, std::vector<std::int32_t>& addends,
               const Steps& by) {
  for (std::size_t column = 0; column < addends.size(); ++column)
    addends[column] = (blue[column] - centre) * by.lumaOfBlue + (red[column] - centre) * by.lumaOfRed;
}

/// The same for a row of luma that has two samples to each of chroma's. `near` counts three times as much as `far`.
void spread(const std::vector<std::int32_t>& near, const std::vector<std::int32_t>& far,
            std::vector<std::int32_t>& mixed, std::vector<std::int32_t>& addends) {
  const std::size_t count = near.size();
  for (std::size_t column = 0; column < count; ++column)
    mixed[column + 1] = (3 * near[column] + far[column]) >> 2;
  mixed[0] = mixed[1];
  mixed[count + 1] = mixed[count];
  for (std::size_t column = 0; column < count; ++column) {
    addends[2 * column] = (3 * mixed[column + 1] + mixed[column]) >> 2;
    addends[2 * column + 1] = (3 * mixed[column + 1] + mixed[column + 2]) >> 2;
  }
}

void convertLuma(const std::uint16_t* luma, const std::int32_t* addends, std::uint8_t* newLuma, std::size_t width,
                 const Steps& by) {
  for (std::size_t column = 0; column < width; ++column)
    newLuma[column] = rounded((luma[column] - by.black) * by.luma + addends[column]);
}

}  // namespace

void toJPEGColours(const AVFrame& source, const VideoColours& colours, AVFrame& target) {
  const Steps steps = stepsFor(colours);
  const auto* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(source.format));
  const bool subsampled = description->log2_chroma_w > 0;
  const int chromaHeight = AV_CEIL_RSHIFT(source.height, description->log2_chroma_h);
  const auto width = static_cast<std::size_t>(source.width);
  const auto chromaWidth = static_cast<std::size_t>(AV_CEIL_RSHIFT(source.width, description->log2_chroma_w));

  std::vector<std::int32_t> above(chromaWidth), here(chromaWidth), below(chromaWidth);
  std::vector<std::int32_t> mixed(chromaWidth + 2), addends(2 * chromaWidth);
  const auto addendsAt = [&](int row, std::vector<std::int32_t>& result) {
    row = std::min(row, chromaHeight - 1);
    addendsOf(lineOf<const std::uint16_t>(source, 1, row), lineOf<const std::uint16_t>(source, 2, row), result, steps);
  };
  const auto convertLine = [&](int row, const std::vector<std::int32_t>& of) {
    if (row < source.height)
      convertLuma(lineOf<const std::uint16_t>(source, 0, row), of.data(), lineOf<std::uint8_t>(target, 0, row), width,
                  steps);
  };
  addendsAt(0, above);
  addendsAt(0, here);
  for (int row = 0; row < chromaHeight; ++row) {
    convertChroma(lineOf<const std::uint16_t>(source, 1, row), lineOf<const std::uint16_t>(source, 2, row),
                  lineOf<std::uint8_t>(target, 1, row), lineOf<std::uint8_t>(target, 2, row), chromaWidth, steps);
    addendsAt(row + 1, below);
    if (subsampled) {
      spread(here, above, mixed, addends);
      convertLine(2 * row, addends);
      spread(here, below, mixed, addends);
      convertLine(2 * row + 1, addends);
    } else {
      convertLine(row, here);
    }
    above.swap(here);
    here.swap(below);
  }
}

}  // namespace tq

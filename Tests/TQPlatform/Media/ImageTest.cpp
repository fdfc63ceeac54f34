#include <algorithm>
#include <array>
#include <gtest/gtest.h>
#include <limits>
#include <tuple>
#include <turbojpeg.h>

#include "Support/ClipMaker.hpp"
#include "TQPlatform/Media/Image.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"
#include "TQPlatform/Media/ImageStorage.hpp"

namespace tq::test {
namespace {

Image plain(int width, int height, Colour colour) {
  Bytes pixels;
  for (int pixel = 0; pixel < width * height; ++pixel)
    for (const int part : colour)
      pixels.push_back(static_cast<std::uint8_t>(part));
  return Image::fromRGB(width, height, pixels);
}

/// Left half black, right half white.
Image halves(int width, int height) {
  Bytes pixels;
  for (int row = 0; row < height; ++row)
    for (int column = 0; column < width; ++column)
      pixels.insert(pixels.end(), 3, column * 2 < width ? 0 : 255);
  return Image::fromRGB(width, height, pixels);
}

Bytes progressiveJPEG() {
  constexpr int edge = 32;
  const Bytes pixels(std::size_t{3} * edge * edge, 128);
  const tjhandle turbo = tjInitCompress();
  unsigned char* bytes = nullptr;
  unsigned long size = 0;
  tjCompress2(turbo, pixels.data(), edge, 0, edge, TJPF_RGB, &bytes, &size, TJSAMP_420, 90, TJFLAG_PROGRESSIVE);
  Bytes jpeg(bytes, bytes + size);
  tjFree(bytes);
  tjDestroy(turbo);
  return jpeg;
}

Image firstFrame(const std::filesystem::path& clip) {
  MediaAsset asset(clip);
  return ImageGenerator(asset).image(0);
}

constexpr Colour red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255}, skin{224, 172, 105};

/// Three vertical bars of strong colours and one of a soft one, 64 x 64 each, as a clip is tagged and stored.
std::filesystem::path colourBars(const std::string& conversion, Arguments tags, std::string_view bar = "64x64") {
  std::string source;
  for (const auto* colour : {"0xFF0000", "0x00FF00", "0x0000FF", "0xE0AC69"})
    source += "color=" + std::string(colour) + ":s=" + std::string(bar) + ":r=5:d=0.4,format=gbrp[" +
              std::string(colour).substr(2) + "];";
  source += "[FF0000][00FF00][0000FF][E0AC69]hstack=4,scale=" + conversion;
  tags.insert(tags.begin(), {"-c:v", "libx264", "-qp", "1", "-preset", "ultrafast"});
  return makeVideo(source, tags, "mp4");
}

void expectBars(const std::filesystem::path& clip) {
  const Image image = firstFrame(clip);
  const Bytes jpeg = image.jpeg(1);
  const int bar = image.width() / 4;
  int index = 0;
  for (const Colour& colour : {red, green, blue, skin}) {
    const Colour seen = colourAt(jpeg, bar * index + bar / 2, image.height() / 2);
    EXPECT_LE(distance(seen, colour), 6) << "bar " << index << ": " << seen[0] << " " << seen[1] << " " << seen[2];
    ++index;
  }
}

TEST(Image, KeepsItsColoursThroughAJPEG) {
  for (const Colour& colour : {red, green, blue, skin, Colour{255, 255, 255}, Colour{0, 0, 0}})
    EXPECT_LE(distance(colourAt(plain(32, 32, colour).jpeg(1), 16, 16), colour), 3);
}

TEST(Image, ReadsBackTheJPEGItWrote) {
  const auto read = Image::decodeJPEG(halves(64, 48).jpeg(0.9));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->width(), 64);
  EXPECT_EQ(read->height(), 48);
  const Bytes luma = read->luma(2, 1);
  EXPECT_LT(luma[0], 10);
  EXPECT_GT(luma[1], 245);
}

TEST(Image, ReencodesAndScalesADecodedJPEG) {
  const auto read = Image::decodeJPEG(plain(101, 51, skin).jpeg(1));
  ASSERT_TRUE(read);
  EXPECT_LE(distance(colourAt(read->jpeg(1), 100, 50), skin), 4);
  EXPECT_LE(distance(colourAt(read->scaled(33, 17).jpeg(1), 32, 16), skin), 4);
}

TEST(Image, BytesThatAreNoJPEGDecodeToNothing) {
  EXPECT_FALSE(Image::decodeJPEG({}));
  EXPECT_FALSE(Image::decodeJPEG(viewOf("no picture at all")));
  Bytes head = halves(64, 64).jpeg(0.5);
  head.resize(20);
  EXPECT_FALSE(Image::decodeJPEG(head));
}

TEST(Image, AJPEGOfEndlessScansDecodesToNothing) {
  const Bytes honest = progressiveJPEG();
  ASSERT_TRUE(Image::decodeJPEG(honest));
  constexpr std::array<std::uint8_t, 2> startOfScan{0xFF, 0xDA};
  const auto lastScan = std::ranges::find_end(honest, startOfScan).begin();
  const auto endOfImage = honest.end() - 2;
  Bytes endless(honest.begin(), endOfImage);
  for (int scan = 0; scan < 1000; ++scan)
    endless.insert(endless.end(), lastScan, endOfImage);
  endless.insert(endless.end(), endOfImage, honest.end());
  EXPECT_FALSE(Image::decodeJPEG(endless));
}

TEST(Image, AJPEGOfBillionsOfPixelsDecodesToNothing) {
  Bytes jpeg = halves(64, 64).jpeg(0.5);
  // The frame header (ITU-T T.81, B.2.2): marker, length, precision, height, width.
  constexpr std::array<std::uint8_t, 3> frameHeader{0xFF, 0xC0, 0x00};
  const auto found = std::ranges::search(jpeg, frameHeader);
  ASSERT_LE(9, jpeg.end() - found.begin());
  std::fill_n(found.begin() + 5, 4, std::uint8_t{0xFD});
  EXPECT_FALSE(Image::decodeJPEG(jpeg));
}

TEST(Image, QualityMovesTheSizeAndIsBoundedAtBothEnds) {
  const Image image = firstFrame(makeVideo(movingPicture(1), h264(), "mp4"));
  EXPECT_LT(image.jpeg(0.1).size(), image.jpeg(0.5).size());
  EXPECT_LT(image.jpeg(0.5).size(), image.jpeg(0.95).size());
  EXPECT_EQ(image.jpeg(7), image.jpeg(1));
  EXPECT_EQ(image.jpeg(std::numeric_limits<double>::infinity()), image.jpeg(1));
  EXPECT_EQ(image.jpeg(-3), image.jpeg(0));
  EXPECT_EQ(image.jpeg(std::numeric_limits<double>::quiet_NaN()), image.jpeg(0));
}

TEST(Image, OddSizesKeepTheirEdges) {
  const Image image = plain(161, 121, red);
  const Bytes jpeg = image.jpeg(1);
  for (const auto& [x, y] : {std::pair{0, 0}, {160, 0}, {0, 120}, {160, 120}})
    EXPECT_LE(distance(colourAt(jpeg, x, y), red), 3) << x << "," << y;
  const Image small = image.scaled(81, 61);
  EXPECT_EQ(small.width(), 81);
  EXPECT_EQ(small.height(), 61);
  EXPECT_LE(distance(colourAt(small.jpeg(1), 80, 60), red), 3);
}

TEST(Image, SizesOutOfRangeAreRefused) {
  const Image image = plain(8, 8, red);
  EXPECT_THROW(image.scaled(0, 4), ImageError);
  EXPECT_THROW(image.scaled(4, -1), ImageError);
  EXPECT_THROW(image.scaled(1 << 20, 1 << 20), ImageError);
  EXPECT_THROW(Image::fromRGB(4, 4, Bytes(47)), ImageError);
}

TEST(Image, AJPEGTooWideForTheFormatIsRefused) {
  EXPECT_THROW(plain(66000, 1, red).jpeg(0.5), ImageError);
}

TEST(Image, LumaOfNarrowPicturesStretches) {
  const Bytes luma = plain(1, 1, {255, 255, 255}).luma(9, 8);
  EXPECT_EQ(luma.size(), 72u);
  EXPECT_GT(*std::ranges::min_element(luma), 250);
}

TEST(Image, LumaSpansBlackToWhiteWhateverTheRange) {
  for (const auto* range : {"tv", "pc"}) {
    const auto clip =
        makeVideo("color=black:s=32x32:r=5:d=0.4[a];color=white:s=32x32:r=5:d=0.4[b];[a][b]hstack,scale=out_range=" +
                      std::string(range) + ",format=yuv420p",
                  {"-c:v", "libx264", "-qp", "1", "-color_range", range}, "mp4");
    const Bytes luma = firstFrame(clip).luma(2, 1);
    EXPECT_LE(luma[0], 3) << range;
    EXPECT_GE(luma[1], 252) << range;
  }
}

TEST(Image, LumaKeepsItsLevelsHoweverLargeThePictureIs) {
  for (const auto* quarter : {"80x60", "960x540", "1920x1080"}) {
    const Bytes luma = firstFrame(makeVideo(fourQuarters(1, quarter), h264({"-frames:v", "1"}), "mp4")).luma(8, 8);
    for (const auto& [at, level] : {std::pair{0, 0x20}, {7, 0x60}, {56, 0xA0}, {63, 0xE0}})
      EXPECT_NEAR(luma[static_cast<std::size_t>(at)], level, 2) << quarter;
  }
}

TEST(Image, ScalingKeepsItsLevelsHoweverMuchIsTakenAway) {
  const Image image = firstFrame(makeVideo(fourQuarters(1, "1920x1080"), h264({"-frames:v", "1"}), "mp4"));
  for (const int width : {1920, 320, 64, 16}) {
    const Bytes jpeg = image.scaled(width, width * 9 / 16).jpeg(1);
    for (const auto& [x, y, level] :
         {std::tuple{0, 0, 0x20}, {width - 1, 0, 0x60}, {0, width / 2, 0xA0}, {width - 1, width / 2, 0xE0}})
      EXPECT_LE(distance(colourAt(jpeg, x, y), {level, level, level}), 4) << width;
  }
}

TEST(Image, ColoursOfSmallUntaggedVideoAreBT601) {
  expectBars(colourBars("out_color_matrix=bt601:out_range=tv,format=yuv444p", {}));
}

TEST(Image, ColoursSurviveWhereOnlyTheRangeChanges) {
  expectBars(colourBars("out_color_matrix=bt601:out_range=tv,format=yuv420p", {"-colorspace", "smpte170m"}));
  expectBars(colourBars("out_color_matrix=bt601:out_range=pc,format=yuv420p",
                        {"-colorspace", "smpte170m", "-color_range", "pc"}));
}

TEST(Image, ColoursOfLargeUntaggedVideoAreBT709) {
  expectBars(colourBars("out_color_matrix=bt709:out_range=tv,format=yuv444p", {}, "320x720"));
}

TEST(Image, ColoursOfTaggedBT709AreRight) {
  expectBars(
      colourBars("out_color_matrix=bt709:out_range=tv,format=yuv420p", {"-colorspace", "bt709", "-color_range", "tv"}));
}

TEST(Image, ColoursOfTaggedFullRangeAreRight) {
  expectBars(
      colourBars("out_color_matrix=bt709:out_range=pc,format=yuv420p", {"-colorspace", "bt709", "-color_range", "pc"}));
}

TEST(Image, ColoursOfTenBitBT2020AreRight) {
  expectBars(colourBars("out_color_matrix=bt2020:out_range=tv,format=yuv420p10le",
                        {"-colorspace", "bt2020nc", "-color_range", "tv"}));
}

TEST(Image, ScalingKeepsTheColoursOfBT709) {
  const auto clip =
      colourBars("out_color_matrix=bt709:out_range=tv,format=yuv420p", {"-colorspace", "bt709", "-color_range", "tv"});
  const Bytes jpeg = firstFrame(clip).scaled(64, 16).jpeg(1);
  EXPECT_LE(distance(colourAt(jpeg, 8, 8), red), 6);
  EXPECT_LE(distance(colourAt(jpeg, 56, 8), skin), 6);
}

/// A grey of that 10-bit code in the given transfer curve.
Colour greyOfHDR(int code, const std::string& transfer) {
  const auto clip =
      makeVideo("color=black:s=64x64:r=5:d=0.4,format=yuv420p10le,geq=lum=" + std::to_string(code) + ":cb=512:cr=512",
                hevc({"-pix_fmt", "yuv420p10le", "-color_primaries", "bt2020", "-color_trc", transfer, "-colorspace",
                      "bt2020nc", "-color_range", "tv"}),
                "mp4");
  return colourAt(firstFrame(clip).jpeg(1), 32, 32);
}

TEST(Image, HighDynamicRangeComesOutInOrdinaryBrightness) {
  // Diffuse white of 203 cd/m2 is code 573 in PQ and 721 in HLG; middle grey of 26 cd/m2 is 394 and 394 + a little.
  for (const auto& [transfer, white, black] : {std::tuple{"smpte2084", 573, 64}, {"arib-std-b67", 721, 64}}) {
    const Colour bright = greyOfHDR(white, transfer), dark = greyOfHDR(black, transfer);
    EXPECT_GE(bright[1], 180) << transfer;
    EXPECT_LE(distance(bright, {bright[1], bright[1], bright[1]}), 3) << transfer;
    EXPECT_LE(dark[1], 3) << transfer;
    EXPECT_GT(greyOfHDR(white + 60, transfer)[1], bright[1]) << transfer;
  }
}

TEST(Orientation, ReadsTheNearestOfTheEightWays) {
  constexpr std::int32_t one = 1 << 16;
  const auto of = [](std::int32_t a, std::int32_t b, std::int32_t c, std::int32_t d) {
    return Orientation::fromMatrix({a, b, 0, c, d, 0, 0, 0, 1 << 30});
  };
  EXPECT_EQ(of(one, 0, 0, one), (Orientation{false, false, false}));
  EXPECT_EQ(of(-one, 0, 0, one), (Orientation{false, true, false}));
  EXPECT_EQ(of(one, 0, 0, -one), (Orientation{false, false, true}));
  EXPECT_EQ(of(-one, 0, 0, -one), (Orientation{false, true, true}));
  EXPECT_EQ(of(0, one, one, 0), (Orientation{true, false, false}));
  EXPECT_EQ(of(0, one, -one, 0), (Orientation{true, true, false}));
  EXPECT_EQ(of(0, -one, one, 0), (Orientation{true, false, true}));
  EXPECT_EQ(of(0, -one, -one, 0), (Orientation{true, true, true}));
  EXPECT_EQ(of(one, one / 4, -one / 4, one), (Orientation{false, false, false})) << "a slight slant";
}

TEST(Orientation, SenselessMatricesCountAsUprightOrAsOneOfTheWays) {
  EXPECT_TRUE(Orientation::fromMatrix({}).upright());
  constexpr auto least = std::numeric_limits<std::int32_t>::min();
  EXPECT_EQ(Orientation::fromMatrix({least, least, least, least, least, least, least, least, least}),
            (Orientation{false, true, true}));
}

}  // namespace
}  // namespace tq::test

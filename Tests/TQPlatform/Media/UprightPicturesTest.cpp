#include <array>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Media/ShownPictures.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

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

TEST(UprightPictures, ATrackTellsHowItHasToBeTurned) {
  const TemporaryFolder folder;
  const Bytes stored = readClip(makeVideo(fourQuarters(), h264(), "mp4"));
  const auto clockwise = [&](const std::array<std::int32_t, 9>& matrix) {
    return MediaAsset(writeClip(folder / "turned.mp4", withMatrix(stored, matrix))).tracks().front().clockwise;
  };
  for (const int degrees : {0, 90, 180, 270})
    EXPECT_EQ(clockwise(rotation(degrees)), degrees);
  for (const auto& mirrored : {std::array<std::int32_t, 9>{-one, 0, 0, 0, one, 0, 0, 0, unit},
                               {one, 0, 0, 0, -one, 0, 0, 0, unit},
                               {0, one, 0, one, 0, 0, 0, 0, unit},
                               {0, -one, 0, -one, 0, 0, 0, 0, unit},
                               {}})
    EXPECT_EQ(clockwise(mirrored), 0);
}

TEST(UprightPictures, RotationsWrittenByOthersAreUnderstood) {
  const auto stored = makeVideo(fourQuarters(), h264(), "mp4");
  // The tag counts counter-clockwise.
  const auto tagged = makeClip({"-i", stored.string(), "-c", "copy", "-metadata:s:v", "rotate=90"}, "mp4");
  EXPECT_EQ(cornersByBrightness(imageAt(tagged, 0.5)), "bl tl br tr");
}

TEST(UprightPictures, OddSizesTurnCleanly) {
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

TEST(UprightPictures, OddSizesWithHalvedColoursKeepTheirEdges) {
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

}  // namespace
}  // namespace tq::test

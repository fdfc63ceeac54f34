#include <gtest/gtest.h>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/PlatformMetadata.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

VideoMetadata metadataOf(const fs::path& clip) {
  return loadMetadataPlatform(MediaAsset(clip), clip);
}

TEST(FourCC, PrintableBytesAreTextMostSignificantFirst) {
  EXPECT_EQ(fourCC(0x61766331), "avc1");
  EXPECT_EQ(fourCC(0x20'7E'20'7E), " ~ ~");
}

TEST(FourCC, OtherBytesAreADecimalNumber) {
  EXPECT_EQ(fourCC(0x00000001), "1");
  EXPECT_EQ(fourCC(0x6176637F), "1635148671");
  EXPECT_EQ(fourCC(0x6176631F), "1635148575");
  EXPECT_EQ(fourCC(0xFFFFFFFF), "4294967295");
  EXPECT_EQ(fourCC(0), "0");
}

TEST(PlatformMetadata, TellsAllFieldsOfAClip) {
  const auto clip = makeVideo("testsrc2=s=320x180:r=30000/1001:d=2",
                              h264({"-metadata", "location=+48.8577+002.2950+035.000/"}), "mov");
  const VideoMetadata metadata = metadataOf(clip);
  EXPECT_NEAR(metadata.duration, 2, 0.04);
  EXPECT_EQ(metadata.width, 320);
  EXPECT_EQ(metadata.height, 180);
  EXPECT_EQ(metadata.frameRate, static_cast<double>(30000.0f / 1001.0f));
  EXPECT_EQ(metadata.codec, "avc1");
  EXPECT_EQ(metadata.fileSize, static_cast<std::int64_t>(fs::file_size(clip)));
  ASSERT_TRUE(metadata.gps);
  EXPECT_DOUBLE_EQ(metadata.gps->latitude, 48.8577);
  EXPECT_DOUBLE_EQ(metadata.gps->longitude, 2.295);
}

TEST(PlatformMetadata, AClipWithoutAPlaceHasNone) {
  EXPECT_FALSE(metadataOf(makeVideo(movingPicture(1), h264(), "mp4")).gps);
}

TEST(PlatformMetadata, APlaceThatCannotBeReadGivesWayToTheNextOne) {
  const auto unreadable = makeVideo(movingPicture(0.4),
                                    h264({"-movflags", "use_metadata_tags", "-metadata", "location=nowhere",
                                          "-metadata", "com.apple.quicktime.location.ISO6709=+35.6586+139.7454/"}),
                                    "mov");
  const auto gps = metadataOf(unreadable).gps;
  ASSERT_TRUE(gps);
  EXPECT_DOUBLE_EQ(gps->longitude, 139.7454);
}

TEST(PlatformMetadata, AnyKeyThatContainsTheWordLocationMayTellThePlace) {
  const auto gpsOf = [](const std::string& key) {
    return metadataOf(makeVideo(movingPicture(0.4),
                                h264({"-movflags", "use_metadata_tags", "-metadata", key + "=+35.6586+139.7454/"}),
                                "mov"))
        .gps;
  };
  ASSERT_TRUE(gpsOf("camera.location.note"));
  EXPECT_DOUBLE_EQ(gpsOf("camera.location.note")->latitude, 35.6586);
  EXPECT_FALSE(gpsOf("camera.Location.note")) << "the case counts";
  EXPECT_FALSE(gpsOf("camera.note"));
}

TEST(PlatformMetadata, APortraitClipKeepsItsStoredSize) {
  const TemporaryFolder folder;
  const Bytes stored = readClip(makeVideo(movingPicture(1), h264(), "mp4"));
  const VideoMetadata metadata = metadataOf(writeClip(folder / "portrait.mp4", withMatrix(stored, rotation(90))));
  EXPECT_EQ(metadata.width, 160);
  EXPECT_EQ(metadata.height, 120);
}

TEST(PlatformMetadata, WithoutAVideoTrackTheFileIsNamed) {
  const TemporaryFolder folder;
  const auto sound = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-c:a", "aac"}, "mp4");
  fs::copy_file(sound, folder / "only sound.mp4");
  try {
    metadataOf(folder / "only sound.mp4");
    FAIL();
  } catch (const TQError& error) {
    EXPECT_EQ(error, TQError::frameExtractionFailed("No video track in only sound.mp4"));
  }
}

TEST(PlatformMetadata, AFileThatVanishedHasNoSize) {
  const TemporaryFolder folder;
  const fs::path clip = folder / "clip.mp4";
  fs::copy_file(makeVideo(movingPicture(1), h264(), "mp4"), clip);
  const MediaAsset asset(clip);
  fs::remove(clip);
  EXPECT_EQ(loadMetadataPlatform(asset, clip).fileSize, 0);
}

}  // namespace
}  // namespace tq::test

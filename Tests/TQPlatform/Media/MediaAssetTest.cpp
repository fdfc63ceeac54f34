#include <algorithm>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t code(const char (&text)[5]) {
  std::uint32_t value = 0;
  for (int index = 0; index < 4; ++index)
    value = value << 8 | static_cast<std::uint8_t>(text[index]);
  return value;
}

TEST(MediaAsset, TellsTheFirstVideoTrack) {
  const MediaAsset asset(makeVideo(movingPicture(2, 30), h264(), "mp4"));
  ASSERT_EQ(asset.tracks().size(), 1u);
  const MediaTrack track = asset.tracks().front();
  EXPECT_EQ(track.type, MediaType::video);
  EXPECT_EQ(track.naturalWidth, 160);
  EXPECT_EQ(track.naturalHeight, 120);
  EXPECT_FLOAT_EQ(track.nominalFrameRate, 30);
  EXPECT_EQ(track.mediaSubtype, code("avc1"));
  EXPECT_NEAR(asset.duration(), 2, 0.001);
}

TEST(MediaAsset, TheFrameRateIsARatio) {
  const MediaAsset asset(makeVideo("testsrc2=s=160x120:r=30000/1001:d=2", h264(), "mov"));
  EXPECT_NEAR(asset.tracks().front().nominalFrameRate, 29.97, 0.001);
}

TEST(MediaAsset, SubtypesAreThoseOfTheSampleEntries) {
  const std::string picture = movingPicture(0.4);
  EXPECT_EQ(MediaAsset(makeVideo(picture, hevc(), "mp4")).tracks().front().mediaSubtype, code("hvc1"));
  EXPECT_EQ(MediaAsset(makeVideo(picture, hevc({"-tag:v", "hev1"}), "mp4")).tracks().front().mediaSubtype,
            code("hev1"));
  EXPECT_EQ(MediaAsset(makeVideo(picture, {"-c:v", "mpeg4"}, "mp4")).tracks().front().mediaSubtype, code("mp4v"));
  EXPECT_EQ(MediaAsset(makeVideo(picture, {"-c:v", "prores", "-profile:v", "2"}, "mov")).tracks().front().mediaSubtype,
            code("apcn"));
  EXPECT_EQ(MediaAsset(makeVideo(picture, {"-c:v", "mjpeg"}, "mov")).tracks().front().mediaSubtype, code("jpeg"));
}

TEST(MediaAsset, SizesAreThoseStoredWhateverTheRotation) {
  const TemporaryFolder folder;
  const Bytes clip = readClip(makeVideo(movingPicture(1), h264(), "mp4"));
  const MediaAsset asset(writeClip(folder / "portrait.mp4", withMatrix(clip, rotation(90))));
  EXPECT_EQ(asset.tracks().front().naturalWidth, 160);
  EXPECT_EQ(asset.tracks().front().naturalHeight, 120);
}

TEST(MediaAsset, AudioComesFirstAndIsTold) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-f", "lavfi", "-i", movingPicture(1), "-map", "0",
                              "-map", "1", "-c:v", "mpeg4", "-c:a", "aac"},
                             "mp4");
  const MediaAsset asset(clip);
  ASSERT_EQ(asset.tracks().size(), 2u);
  EXPECT_EQ(asset.tracks()[0].type, MediaType::audio);
  EXPECT_EQ(asset.tracks()[1].type, MediaType::video);
  EXPECT_EQ(asset.tracks(MediaType::audio).size(), 1u);
  EXPECT_EQ(asset.tracks(MediaType::video).front().naturalWidth, 160);
}

TEST(MediaAsset, CoverArtIsNoTrack) {
  const TemporaryFolder folder;
  const auto cover = makeVideo("color=red:s=64x64:r=1:d=1", {"-frames:v", "1"}, "png");
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=1", "-i", cover.string(), "-map", "0", "-map", "1", "-c:a",
                              "aac", "-c:v", "copy", "-disposition:v:0", "attached_pic"},
                             "mp4");
  const MediaAsset asset(clip);
  EXPECT_TRUE(asset.tracks(MediaType::video).empty());
  EXPECT_EQ(asset.tracks(MediaType::audio).size(), 1u);
}

TEST(MediaAsset, PlacesOfRecordingCarryTheCommonKey) {
  for (const auto* extension : {"mp4", "mov"}) {
    const auto clip = makeVideo(movingPicture(0.4), h264({"-metadata", "location=+48.8577+002.2950/"}), extension);
    const auto items = MediaAsset(clip).commonMetadata();
    const auto place = std::ranges::find(items, "location", &MetadataItem::commonKey);
    ASSERT_NE(place, items.end()) << extension;
    EXPECT_EQ(place->stringValue, "+48.8577+002.2950/");
  }
}

TEST(MediaAsset, PlacesInTheNewerMetadataAreFoundToo) {
  const auto clip = makeVideo(movingPicture(0.4),
                              h264({"-movflags", "use_metadata_tags", "-metadata",
                                    "com.apple.quicktime.location.ISO6709=+35.6586+139.7454+020.000/"}),
                              "mov");
  const auto items = MediaAsset(clip).commonMetadata();
  const auto place = std::ranges::find(items, "com.apple.quicktime.location.ISO6709", &MetadataItem::identifier);
  ASSERT_NE(place, items.end());
  EXPECT_EQ(place->commonKey, "location");
  EXPECT_EQ(place->stringValue, "+35.6586+139.7454+020.000/");
}

TEST(MediaAsset, FragmentsWithoutTablesAreLookedAt) {
  const auto clip = makeVideo(movingPicture(2), h264({"-g", "25", "-movflags", "frag_keyframe+empty_moov"}), "mp4");
  const MediaAsset asset(clip);
  EXPECT_NEAR(asset.duration(), 2, 0.1);
  EXPECT_NEAR(asset.tracks().front().nominalFrameRate, 25, 0.1);
}

TEST(MediaAsset, DurationsThatLieAreReportedAsTheyStand) {
  const TemporaryFolder folder;
  const Bytes clip = readClip(makeVideo(movingPicture(1), h264(), "mp4"));
  EXPECT_NEAR(MediaAsset(writeClip(folder / "a.mp4", withDuration(clip, 143'165'000))).duration(), 143'165, 1);
  EXPECT_GE(MediaAsset(writeClip(folder / "b.mp4", withDuration(clip, 0))).duration(), 0);
  EXPECT_GE(MediaAsset(writeClip(folder / "c.mp4", withDuration(clip, 0xFFFFFFFF))).duration(), 0);
}

TEST(MediaAsset, FilesThatCannotBeOpenedGiveTheSystemsReason) {
  const TemporaryFolder folder;
  try {
    const MediaAsset asset(folder / "gone.mp4");
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_EQ(error.reason(), "No such file or directory");
  }
  EXPECT_THROW(MediaAsset(folder.path()), SystemError);
}

TEST(MediaAsset, APipeIsRefusedWithoutWaitingForAWriter) {
  const TemporaryFolder folder;
  const fs::path pipe = folder / "pipe.mp4";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  EXPECT_THROW(MediaAsset{pipe}, MediaError);
}

TEST(MediaAsset, FilesThatAreNoMoviesAreRefused) {
  const TemporaryFolder folder;
  EXPECT_THROW(MediaAsset(folder.write("empty.mp4", "")), MediaError);
  EXPECT_THROW(MediaAsset(folder.write("text.mp4", "This is no movie at all.")), MediaError);
  EXPECT_THROW(MediaAsset(folder.write("zeros.mp4", std::string(100'000, '\0'))), MediaError);
}

TEST(MediaAsset, OtherContainersAreRefusedUnderAnyName) {
  const TemporaryFolder folder;
  const Bytes matroska = readClip(makeVideo(movingPicture(0.4), h264(), "mkv"));
  EXPECT_THROW(MediaAsset(writeClip(folder / "matroska.mp4", matroska)), MediaError);
}

TEST(MediaAsset, AnyFileNameOpens) {
  const TemporaryFolder folder;
  const fs::path clip = makeVideo(movingPicture(0.4), h264(), "mp4");
  for (const auto* name :
       {"two words.mp4", "it's \"quoted\".mp4", "-leading.mp4", "line\nbreak.mp4", "\xF0\x9F\x8E\xAC.mp4",
        "http:colon.mp4", "a%20b?x=1#y.mp4", "\xFF\xFE.mp4", "concat:a|b.mp4"}) {
    fs::copy_file(clip, folder / name);
    EXPECT_EQ(MediaAsset(folder / name).tracks().size(), 1u) << name;
  }
  const std::string longest = std::string(251, 'n') + ".mp4";
  fs::copy_file(clip, folder / longest);
  EXPECT_EQ(MediaAsset(folder / longest).tracks().size(), 1u);
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  EXPECT_EQ(MediaAsset("-leading.mp4").tracks().size(), 1u);
  fs::current_path(before);
}

TEST(MediaAsset, AMovieCutOffBeforeItsTablesIsRefused) {
  const TemporaryFolder folder;
  Bytes clip = readClip(makeVideo(movingPicture(2), h264(), "mp4"));
  clip.resize(clip.size() / 2);
  EXPECT_THROW(MediaAsset(writeClip(folder / "cut.mp4", clip)), MediaError);
}

TEST(MediaAsset, EveryPrefixOfAMovieOpensOrIsRefused) {
  const TemporaryFolder folder;
  const Bytes clip = readClip(makeVideo(movingPicture(0.4), h264({"-movflags", "+faststart"}), "mp4"));
  for (std::size_t size = 0; size < 2000; size += 61) {
    const fs::path file = writeClip(folder / "prefix.mp4", ByteView(clip).first(std::min(size, clip.size())));
    try {
      EXPECT_GE(MediaAsset(file).duration(), 0);
    } catch (const MediaError&) {
    }
  }
}

TEST(MediaAsset, AStopRequestEndsTheOpening) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(MediaAsset(makeVideo(movingPicture(1), h264(), "mp4"), source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq::test

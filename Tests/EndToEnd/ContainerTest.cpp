#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/User.hpp"
#include "Support/ClipMaker.hpp"
#include "TQPlatform/Media/Image.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A kind of file, how ffmpeg makes one, and what a description says of it.
struct Container {
  const char* extension;
  Arguments encoding;
  const char* codec;
  bool holdsPlace;
};

void PrintTo(const Container& container, std::ostream* out) {
  *out << container.extension;
}

std::vector<Container> containers() {
  return {{"mp4", h264(), "avc1", true},
          {"mov", h264(), "avc1", true},
          {"m4v", h264(), "avc1", true},
          {"mkv", h264(), "h264", true},
          {"webm", {"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8"}, "vp9", true},
          {"avi", {"-c:v", "mpeg4"}, "mpeg4", false},
          {"mxf", {"-c:v", "mpeg2video"}, "mpeg2video", false}};
}

/// Two seconds of 320 x 240 at 25 frames a second whose corners brighten in reading order.
fs::path makeClipOf(const Container& container) {
  Arguments encoding = container.encoding;
  encoding.insert(encoding.end(), {"-r", "25", "-metadata", "location=+48.8577+002.2950/"});
  return makeVideo(fourQuarters(2, "160x120"), encoding, container.extension);
}

std::string checksumOf(const fs::path& file) {
  const ChildResult result = runChild("/usr/bin/sha256sum", {"-b", file.string()}, {.time = std::chrono::seconds(60)});
  return std::string(textOf(result.output)).substr(0, 64);
}

class ContainerTest : public testing::TestWithParam<Container> {};

TEST_P(ContainerTest, AClipGetsItsThreeFilesWithTheRightContent) {
  User user;
  const std::string name = "harbour." + std::string(GetParam().extension);
  const fs::path clip = user.clips() / name;
  fs::copy_file(makeClipOf(GetParam()), clip);
  const Date before = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());

  const Outcome outcome = user.describe({name});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "started    " + name + "\n" + doneLines(clip) + "1 of 1 clip described\n");
  EXPECT_THAT(namesIn(user.clips()),
              testing::UnorderedElementsAre(name, "harbour.description.md", "harbour.description.json",
                                            "harbour.description.jpg"));

  const DescriptionResult result = readDescription(user.clips() / "harbour.description.json");
  const std::string frames = std::to_string(result.shots.size());
  EXPECT_EQ(result.schemaVersion, "1.0");
  EXPECT_EQ(result.summary, "Mock description of " + name + " with " + frames + " frames.");
  EXPECT_EQ(result.engine.provider, "mock");
  EXPECT_GE(result.shots.size(), 1u);
  EXPECT_EQ(result.engine.framesAnalyzed, static_cast<std::int64_t>(result.shots.size()));

  const SourceMetadata& source = result.source;
  const std::string checksum = checksumOf(clip);
  EXPECT_EQ(source.filename, name);
  EXPECT_NEAR(source.durationSeconds, 2, 0.05);
  EXPECT_EQ(source.resolution, "320x240");
  EXPECT_NEAR(source.frameRate, 25, 0.01);
  EXPECT_EQ(source.codec, GetParam().codec);
  EXPECT_EQ(source.fileSizeBytes, static_cast<std::int64_t>(fs::file_size(clip)));
  EXPECT_EQ(source.sha256, checksum);
  EXPECT_GE(source.describedAt, before);
  EXPECT_LE(source.describedAt, std::chrono::system_clock::now());
  ASSERT_EQ(source.gps.has_value(), GetParam().holdsPlace);
  if (source.gps) {
    EXPECT_NEAR(source.gps->latitude, 48.8577, 0.0001);
    EXPECT_NEAR(source.gps->longitude, 2.2950, 0.0001);
  }

  const std::string markdown = contentOf(user.clips() / "harbour.description.md");
  for (const std::string& line :
       {std::string("# harbour"), result.summary, "| File | `" + name + "` |", std::string("| Resolution | 320x240 |"),
        std::string("| Frame rate | 25.000 fps |"), "| Codec | " + std::string(GetParam().codec) + " |",
        "| SHA-256 | `" + checksum + "` |", std::string("- Provider: **mock**")})
    EXPECT_THAT(markdown, HasSubstr(line + "\n"));
  EXPECT_EQ(markdown.find("| GPS | 48.857700, 2.295000 |\n") != std::string::npos, GetParam().holdsPlace);

  const auto poster = Image::decodeJPEG(readClip(user.clips() / "harbour.description.jpg"));
  ASSERT_TRUE(poster);
  EXPECT_EQ(poster->width(), 320);
  EXPECT_EQ(poster->height(), 240);
  EXPECT_EQ(cornersByBrightness(*poster), "tl tr bl br");
}

INSTANTIATE_TEST_SUITE_P(Each, ContainerTest, testing::ValuesIn(containers()),
                         [](const auto& each) { return std::string(each.param.extension); });

TEST(TurnedClip, GetsAnUprightPoster) {
  User user;
  const fs::path flat = makeVideo(fourQuarters(1, "160x120") + ",transpose=cclock", h264(), "mp4");
  writeClip(user.clips() / "phone.mp4", withMatrix(readClip(flat), rotation(90)));
  EXPECT_EQ(user.describe({"phone.mp4"}).status, 0);
  const auto poster = Image::decodeJPEG(readClip(user.clips() / "phone.description.jpg"));
  ASSERT_TRUE(poster);
  EXPECT_EQ(poster->width(), 320);
  EXPECT_EQ(poster->height(), 240);
  EXPECT_EQ(cornersByBrightness(*poster), "tl tr bl br");
}

TEST(ExtensionInCapitals, IsAClipLikeAnyOther) {
  User user;
  fs::copy_file(smallClip("mkv"), user.clips() / "A.MKV");
  user.addClip("B.Mp4");
  EXPECT_EQ(user.describe({"A.MKV", "B.Mp4"}).status, 0);
  EXPECT_EQ(readDescription(user.clips() / "A.description.json").source.filename, "A.MKV");
  EXPECT_EQ(readDescription(user.clips() / "B.description.json").source.filename, "B.Mp4");
}

}  // namespace
}  // namespace tq::test

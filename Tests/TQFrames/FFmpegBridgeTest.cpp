#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/EnvironmentVariable.hpp"
#include "Support/FakeTool.hpp"
#include "Support/FileOpenings.hpp"
#include "Support/ListeningPort.hpp"
#include "Support/Playlists.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

/// Nothing is found here.
const ToolSearch nowhere{};

/// The text of the failure that `action` ends with, or "" when it does not fail.
template <class Action>
std::string failureOf(Action action) {
  try {
    action();
  } catch (const TQError& error) {
    if (const auto* failure = std::get_if<TQError::FrameExtractionFailed>(&error.value())) return failure->text;
    return error.description();
  }
  return "";
}

/// A bridge to two scripts; each bears the name of the tool it stands for.
class FakeBridge {
 public:
  explicit FakeBridge(std::string_view body, double timeout = 60, double grace = 60)
      : bridge_(writeTool(folder_, "ffmpeg", body), writeTool(folder_, "ffprobe", body), timeout, nowhere, grace) {}

  const FFmpegBridge* operator->() const { return &bridge_; }
  const TemporaryFolder& folder() const { return folder_; }
  const FFmpegBridge& get() const { return bridge_; }

 private:
  TemporaryFolder folder_;
  FFmpegBridge bridge_;
};

/// Writes each of its arguments on a line of "arguments" beside itself.
constexpr std::string_view recorder = R"(printf '%s\n' "$@" > "$(dirname "$0")/arguments")";

VideoMetadata parsed(std::string_view json, const fs::path& url = "/nowhere/clip.mkv") {
  return FFmpegBridge::parseProbe(viewOf(json), url);
}

/// The metadata of a clip with one video stream that has these members, and with this format.
VideoMetadata parsedStream(const std::string& members, const std::string& format = "{}") {
  return parsed(R"({"streams": [{"codec_type": "video")" + (members.empty() ? "" : ", " + members) +
                R"(}], "format": )" + format + "}");
}

class Locate : public testing::Test {
 protected:
  fs::path tool(const std::string& place, int mode = 0755) const {
    const fs::path file = folder.write(place + "/tool", "");
    fs::permissions(file, fs::perms(mode));
    return file;
  }
  ToolSearch search(std::optional<std::string> path) const {
    return {.folders = {folder / "first", folder / "second"}, .path = std::move(path)};
  }
  std::string at(const char* place) const { return (folder / place).string(); }

  TemporaryFolder folder;
};

TEST_F(Locate, TheFixedFoldersComeBeforeThePath) {
  tool("path");
  const fs::path second = tool("second");
  EXPECT_EQ(FFmpegBridge::locate("tool", search(at("path"))), second);
  const fs::path first = tool("first");
  EXPECT_EQ(FFmpegBridge::locate("tool", search(at("path"))), first);
}

TEST_F(Locate, ThePathIsSearchedInItsOrderAndEmptyPiecesAreSkipped) {
  const fs::path early = tool("early");
  tool("late");
  EXPECT_EQ(FFmpegBridge::locate("tool", search("::" + at("none") + ":" + at("early") + "::" + at("late") + ":")),
            early);
}

TEST_F(Locate, AFileThatCannotBeExecutedIsNoHit) {
  tool("first", 0644);
  fs::create_directories(folder / "second/tool");
  const fs::path path = tool("path");
  EXPECT_EQ(FFmpegBridge::locate("tool", search(at("path"))), path);
}

TEST_F(Locate, NothingIsFoundWithoutAPath) {
  tool("path");
  EXPECT_FALSE(FFmpegBridge::locate("tool", search(std::nullopt)));
  EXPECT_FALSE(FFmpegBridge::locate("tool", search("")));
  EXPECT_FALSE(FFmpegBridge::locate("tool", search(at("none"))));
}

TEST(ToolSearch, TheUsualFoldersStandInTheirOrder) {
  const std::vector<fs::path> expected{"/opt/homebrew/bin", "/usr/local/bin", "/opt/local/bin", "/usr/bin"};
  EXPECT_EQ(ToolSearch::standard().folders, expected);
}

TEST(ToolSearch, ThePathIsThatOfTheEnvironment) {
  {
    const EnvironmentVariable path("PATH", "/a:/b");
    EXPECT_EQ(ToolSearch::standard().path, "/a:/b");
  }
  const EnvironmentVariable path("PATH", std::nullopt);
  EXPECT_EQ(ToolSearch::standard().path, std::nullopt);
}

TEST(FFmpegBridge, APathThatIsGivenIsTakenAsItStands) {
  const FFmpegBridge bridge("/no/such/ffmpeg", "/no/such/ffprobe", 300, nowhere);
  EXPECT_EQ(bridge.ffmpegURL, "/no/such/ffmpeg");
  EXPECT_EQ(bridge.ffprobeURL, "/no/such/ffprobe");
  EXPECT_EQ(bridge.processTimeout, 300);
}

TEST(FFmpegBridge, AToolHasFiveMinutesAndThreeSecondsToEndInGoodOrder) {
  EXPECT_EQ(FFmpegBridge("/a", "/b").processTimeout, 300);
  EXPECT_EQ(FFmpegBridge::standardGrace, 3);
}

TEST(FFmpegBridge, AnAbsentPathIsLookedFor) {
  const TemporaryFolder folder;
  const fs::path ffmpeg = writeTool(folder, "ffmpeg", ""), ffprobe = writeTool(folder, "ffprobe", "");
  const FFmpegBridge bridge(std::nullopt, std::nullopt, 300, {.folders = {folder.path()}, .path = {}});
  EXPECT_EQ(bridge.ffmpegURL, ffmpeg);
  EXPECT_EQ(bridge.ffprobeURL, ffprobe);
}

TEST(FFmpegBridge, AToolThatStaysUnknownIsMissing) {
  const std::string text = TQError::ffmpegMissing("this video").description();
  EXPECT_EQ(failureOf([] { FFmpegBridge("/bin/true", std::nullopt, 300, nowhere); }), text);
  EXPECT_EQ(failureOf([] { FFmpegBridge(std::nullopt, "/bin/true", 300, nowhere); }), text);
}

TEST(RunProcess, GivesOutputAndStatusAndJudgesNeither) {
  const FakeBridge bridge("printf out; exit 7");
  const ToolOutput answer = bridge->runFFmpeg({});
  EXPECT_EQ(textOf(answer.output), "out");
  EXPECT_EQ(answer.status, 7);
}

TEST(RunProcess, RunsTheProgramThatIsAskedFor) {
  const FakeBridge bridge("exit 1");
  const ToolOutput answer = bridge->runProcess("/bin/echo", {"two words"});
  EXPECT_EQ(textOf(answer.output), "two words\n");
}

TEST(RunProcess, MegabytesOfErrorsAreThrownAway) {
  const FakeBridge bridge("head -c 4000000 /dev/zero >&2");
  const ToolOutput answer = bridge->runFFmpeg({});
  EXPECT_TRUE(answer.output.empty());
  EXPECT_EQ(answer.status, 0);
}

TEST(RunProcess, AProgramThatCannotBeLaunchedIsNamed) {
  const FFmpegBridge bridge("/no/such/ffmpeg", "/no/such/ffprobe", 300, nowhere);
  EXPECT_EQ(failureOf([&] { bridge.runFFmpeg({}); }), "could not launch ffmpeg: No such file or directory");
  EXPECT_EQ(failureOf([&] { bridge.probe("clip.mkv"); }), "could not launch ffprobe: No such file or directory");
}

TEST(RunProcess, AToolThatIgnoresTheRequestIsKilledAndReportedAsTimedOut) {
  const FakeBridge bridge("trap '' TERM; sleep 600", 0.2, 0.1);
  EXPECT_EQ(failureOf([&] { bridge->runFFmpeg({}); }),
            "ffmpeg timed out after 0s (possibly malformed or unreadable input)");
}

TEST(RunProcess, ATimeOutWinsOverTheStatusThatTheToolLeft) {
  const FakeBridge bridge("trap 'exit 0' TERM; sleep 600 & wait", 0.2);
  EXPECT_EQ(failureOf([&] { bridge->probe("clip.mkv"); }),
            "ffprobe timed out after 0s (possibly malformed or unreadable input)");
}

TEST(RunProcess, TheTimeInTheMessageIsCutToWholeSeconds) {
  const FakeBridge bridge("sleep 600", 0.6);
  EXPECT_EQ(failureOf([&] { bridge->runFFmpeg({}); }),
            "ffmpeg timed out after 0s (possibly malformed or unreadable input)");
}

TEST(Probe, AsksWithTheseArguments) {
  const FakeBridge bridge(std::string(recorder) + R"(; echo '{"streams": [{"codec_type": "video"}]}')");
  bridge->probe("/clips/a clip.mkv");
  EXPECT_EQ(contentOf(bridge.folder() / "arguments"),
            "-v\nerror\n-print_format\njson\n-show_streams\n-show_format\n/clips/a clip.mkv\n");
}

TEST(Probe, ANameThatLooksLikeAnOptionIsGivenAsAnAbsolutePath) {
  const FakeBridge bridge(std::string(recorder) + R"(; echo '{"streams": [{"codec_type": "video"}]}')");
  bridge->probe("-clip.mkv");
  EXPECT_TRUE(
      contentOf(bridge.folder() / "arguments").ends_with("\n" + (fs::current_path() / "-clip.mkv").string() + "\n"));
}

TEST(Probe, AStatusIsAFailure) {
  const FakeBridge bridge("echo '{}'; exit 1");
  EXPECT_EQ(failureOf([&] { bridge->probe("clip.mkv"); }), "ffprobe exit status 1");
}

TEST(ExtractFrame, AsksWithTheseArguments) {
  const FakeBridge bridge(recorder);
  EXPECT_NE(failureOf([&] { bridge->extractFrame(12.3456, "/clips/a.mkv"); }), "");
  EXPECT_EQ(contentOf(bridge.folder() / "arguments"),
            "-v\nerror\n-ss\n12.346\n-i\n/clips/a.mkv\n-frames:v\n1\n-f\nimage2pipe\n-vcodec\nmjpeg\n-q:v\n2\n-\n");
}

TEST(ExtractFrame, ANegativeTimeIsAskedForAsZeroButNamedInTheMessage) {
  const FakeBridge bridge(recorder);
  EXPECT_EQ(failureOf([&] { bridge->extractFrame(-1.0, "/a.mkv"); }), "ffmpeg frame extract at -1.0s exit 0, 0 bytes");
  EXPECT_NE(contentOf(bridge.folder() / "arguments").find("-ss\n0.000\n"), std::string::npos);
}

TEST(ExtractFrame, NegativeZeroIsAskedForAsZero) {
  const FakeBridge bridge(recorder);
  EXPECT_NE(failureOf([&] { bridge->extractFrame(-0.0, "/a.mkv"); }), "");
  EXPECT_NE(contentOf(bridge.folder() / "arguments").find("-ss\n0.000\n"), std::string::npos);
}

TEST(ExtractFrame, AStatusIsAFailureWhateverWasWritten) {
  const FakeBridge bridge("printf abc; exit 8");
  EXPECT_EQ(failureOf([&] { bridge->extractFrame(2.5, "/a.mkv"); }), "ffmpeg frame extract at 2.5s exit 8, 3 bytes");
}

TEST(ExtractFrame, OutputThatIsNoPictureIsAFailure) {
  const FakeBridge bridge("printf 'no picture'");
  EXPECT_EQ(failureOf([&] { bridge->extractFrame(2, "/a.mkv"); }), "ffmpeg returned non-decodable JPEG at 2.0s");
}

TEST(ParseProbe, TextThatIsNoJSONIsTheParsersError) {
  EXPECT_THROW(parsed("no json"), JSONError);
}

TEST(ParseProbe, ATopLevelThatIsNoObjectIsAFailure) {
  EXPECT_EQ(failureOf([] { parsed("[]"); }), "could not parse ffprobe JSON");
}

TEST(ParseProbe, NoVideoStreamIsAFailureThatNamesTheClip) {
  const std::string text = "no video stream in clip.mkv";
  EXPECT_EQ(failureOf([] { parsed("{}"); }), text);
  EXPECT_EQ(failureOf([] { parsed(R"({"streams": []})"); }), text);
  EXPECT_EQ(failureOf([] { parsed(R"({"streams": {"codec_type": "video"}})"); }), text);
  EXPECT_EQ(failureOf([] { parsed(R"({"streams": [{"codec_type": "audio"}, {"codec_type": 1}, {}]})"); }), text);
  EXPECT_EQ(failureOf([] { parsed(R"({"streams": [{"codec_type": "video"}, 5]})"); }), text);
}

TEST(ParseProbe, TheFirstVideoStreamCountsWhereverItStands) {
  const VideoMetadata meta = parsed(R"({"streams": [{"codec_type": "audio", "codec_name": "aac"},
      {"codec_type": "video", "codec_name": "vp9", "width": 640, "height": 360},
      {"codec_type": "video", "codec_name": "mjpeg", "width": 1, "height": 1}]})");
  EXPECT_EQ(meta.codec, "vp9");
  EXPECT_EQ(meta.width, 640);
  EXPECT_EQ(meta.height, 360);
}

TEST(ParseProbe, WhatIsMissingOrMistypedGetsItsFallBack) {
  const VideoMetadata empty{};
  EXPECT_EQ(parsedStream(""), empty);
  EXPECT_EQ(
      parsedStream(R"("width": "640", "height": 1.5, "codec_name": 7, "duration": 3, "avg_frame_rate": 25)", "[]"),
      empty);
  EXPECT_EQ(parsedStream(R"("width": 4294967296)").width, 0);
}

TEST(ParseProbe, TheStreamsDurationComesFirst) {
  EXPECT_EQ(parsedStream(R"("duration": "12.5")", R"({"duration": "99"})").duration, 12.5);
}

TEST(ParseProbe, TheFormatsDurationStandsIn) {
  EXPECT_EQ(parsedStream("", R"({"duration": "99.25"})").duration, 99.25);
  EXPECT_EQ(parsedStream(R"("duration": 3)", R"({"duration": "99.25"})").duration, 99.25);
}

TEST(ParseProbe, ADurationThatIsNoNumberIsZeroAndTheFormatIsNotAsked) {
  EXPECT_EQ(parsedStream(R"("duration": "N/A")", R"({"duration": "99"})").duration, 0);
  EXPECT_EQ(parsedStream(R"("duration": "12.5s")").duration, 0);
}

TEST(ParseProbe, TheAverageFrameRateComesFirst) {
  EXPECT_EQ(parsedStream(R"("avg_frame_rate": "24/1", "r_frame_rate": "25/1")").frameRate, 24);
}

TEST(ParseProbe, AnUnusableAverageFrameRateFallsThrough) {
  for (const char* average : {"0/0", "0/1", "25/0", "-5/1", "fast", ""})
    EXPECT_EQ(parsedStream(R"("avg_frame_rate": ")" + std::string(average) + R"(", "r_frame_rate": "25")").frameRate,
              25)
        << average;
}

TEST(ParseProbe, WithoutAUsableFrameRateItIsZero) {
  EXPECT_EQ(parsedStream(R"("avg_frame_rate": "0/0", "r_frame_rate": "0/0")").frameRate, 0);
}

TEST(ParseProbe, TheFormatsSizeComesFirst) {
  const TemporaryFolder folder;
  const fs::path clip = folder.write("clip.mkv", "12345");
  const auto size = [&](const std::string& text) {
    return parsed(R"({"streams": [{"codec_type": "video"}], "format": {"size": )" + text + "}}", clip).fileSize;
  };
  EXPECT_EQ(size(R"("1048576")"), 1048576);
  EXPECT_EQ(size(R"("+7")"), 7);
  EXPECT_EQ(size(R"("-7")"), -7);
  for (const char* unusable : {R"("")", R"("9223372036854775808")", R"("1.5")", R"("7 ")", "7", "null"})
    EXPECT_EQ(size(unusable), 5) << unusable;
}

TEST(ParseProbe, WithoutAnySizeItIsZero) {
  EXPECT_EQ(parsedStream("").fileSize, 0);
}

TEST(ParseProbe, ThePlaceIsTheFirstTagThatCanBeRead) {
  const auto latitude = [](const std::string& tags) -> std::optional<double> {
    const auto gps = parsedStream("", R"({"tags": )" + tags + "}").gps;
    return gps ? std::optional(gps->latitude) : std::nullopt;
  };
  EXPECT_EQ(latitude(R"({"LOCATION": "+3+0/", "com.apple.quicktime.location.ISO6709": "+2+0/", "location": "+1+0/"})"),
            1);
  EXPECT_EQ(latitude(R"({"LOCATION": "+3+0/", "com.apple.quicktime.location.ISO6709": "+2+0/", "location": "?"})"), 2);
  EXPECT_EQ(latitude(R"({"LOCATION": "+3+0/", "location": 5})"), 3);
  EXPECT_EQ(latitude(R"({"Location": "+3+0/"})"), std::nullopt);
  EXPECT_EQ(latitude("[]"), std::nullopt);
}

TEST(ParseRatio, DividesTwoNumbers) {
  EXPECT_EQ(FFmpegBridge::parseRatio("30000/1001"), 30000.0 / 1001.0);
  EXPECT_EQ(FFmpegBridge::parseRatio("/25//2/"), 12.5);
}

TEST(ParseRatio, ReadsANumberAlone) {
  EXPECT_EQ(FFmpegBridge::parseRatio("25"), 25);
  EXPECT_EQ(FFmpegBridge::parseRatio("29.97"), 29.97);
}

TEST(ParseRatio, EverythingElseIsAbsent) {
  for (const char* text : {"", "/", "0/0", "25/0", "/25", "25/", "a/b", "1/2/3", "25 / 1", "inf", "1e308/1e-308"})
    EXPECT_FALSE(FFmpegBridge::parseRatio(text)) << text;
}

/// The real tools, on a clip of two seconds that ffmpeg itself has drawn.
class RealTools : public testing::Test {
 protected:
  void SetUp() override {
    clip = folder / "-a clip: 100%.mkv";
    const ToolOutput made =
        bridge.runFFmpeg({"-v", "error", "-f", "lavfi", "-i", "testsrc=size=96x64:rate=25:duration=2", "-c:v", "mpeg4",
                          "-metadata", "location=+48.8577+002.295/", clip.string()});
    ASSERT_EQ(made.status, 0);
  }

  TemporaryFolder folder;
  FFmpegBridge bridge;
  fs::path clip;
};

TEST_F(RealTools, ProbeTellsOfTheClip) {
  const VideoMetadata meta = bridge.probe(clip);
  EXPECT_NEAR(meta.duration, 2, 0.1);
  EXPECT_EQ(meta.width, 96);
  EXPECT_EQ(meta.height, 64);
  EXPECT_EQ(meta.frameRate, 25);
  EXPECT_EQ(meta.codec, "mpeg4");
  EXPECT_EQ(meta.fileSize, static_cast<std::int64_t>(fs::file_size(clip)));
  ASSERT_TRUE(meta.gps);
  EXPECT_EQ(meta.gps->latitude, 48.8577);
}

TEST_F(RealTools, ExtractFrameGivesAPictureOfTheClipsSize) {
  const Image image = bridge.extractFrame(1, clip);
  EXPECT_EQ(image.width(), 96);
  EXPECT_EQ(image.height(), 64);
}

TEST_F(RealTools, ANegativeTimeGivesTheFirstPicture) {
  EXPECT_EQ(bridge.extractFrame(-1, clip).width(), 96);
}

TEST_F(RealTools, ATimeBeyondTheEndIsAFailure) {
  EXPECT_TRUE(failureOf([&] { bridge.extractFrame(100, clip); }).starts_with("ffmpeg frame extract at 100.0s exit "));
}

TEST_F(RealTools, AFileThatIsNoClipIsAFailure) {
  const fs::path text = folder.write("text.mkv", "no clip at all");
  EXPECT_EQ(failureOf([&] { bridge.probe(text); }), "ffprobe exit status 1");
}

TEST_F(RealTools, ASoundOnlyFileUnderAnotherNameHasNoVideoStream) {
  const fs::path sound = folder / "sound.mkv";
  ASSERT_EQ(bridge.runFFmpeg({"-v", "error", "-f", "lavfi", "-i", "sine=d=0.1", "-f", "wav", sound.string()}).status,
            0);
  EXPECT_EQ(failureOf([&] { bridge.probe(sound); }), "no video stream in sound.mkv");
}

TEST_F(RealTools, AClipMayHaveTheNameOfAnotherContainer) {
  for (const char* container : {"mp4", "mpegts"}) {
    const fs::path other = folder / (std::string(container) + ".webm");
    ASSERT_EQ(bridge.runFFmpeg({"-v", "error", "-i", clip.string(), "-c:v", "libx264", "-f", container, other.string()})
                  .status,
              0);
    EXPECT_EQ(bridge.probe(other).width, 96) << container;
    EXPECT_EQ(bridge.extractFrame(1, other).width(), 96) << container;
  }
}

TEST_F(RealTools, NamesThatMeanSomethingToTheToolsArePlainFiles) {
  const fs::path before = fs::current_path();
  fs::current_path(folder.path());
  for (const char* name :
       {"-i.mkv", "--help.mkv", "concat:a|b.mkv", "http:x.mkv", "file:x.mkv", "subfile,,start,0,end,0,,:x.mkv",
        "data:,x.mkv", "a|b.mkv", "%d.mkv", "%03d.mkv", "%%.mkv", "quote'\".mkv", "line\nbreak.mkv", "pipe:0.mkv",
        "*.mkv", "a?b#c.mkv", "\xFF.mkv", "crypto:x.mkv", "-.mkv"}) {
    fs::copy_file(clip, name);
    EXPECT_EQ(bridge.probe(name).width, 96) << name;
  }
  for (const char* name : {"-i.mkv", "%03d.mkv", "data:,x.mkv"})
    EXPECT_EQ(bridge.extractFrame(0, name).width(), 96) << name;
  fs::current_path(before);
}

TEST_F(RealTools, PlaylistsReachNeitherFilesNorAddresses) {
  const FileOpenings openings(clip);
  const ListeningPort port;
  int refused = 0;
  for (const std::string& target : {clip.string(), clip.filename().string(), "http://" + port.address() + "/clip.ts"})
    for (const auto& [name, text] : playlistsTo(target)) {
      const fs::path list = folder.write("list.mkv", text);
      const std::string failure = failureOf([&] { bridge.probe(list); });
      EXPECT_NE(failure, "") << name;
      const bool known = failure.starts_with("list.mkv is no clip but a file of another kind (");
      if (!known) continue;
      EXPECT_EQ(failureOf([&] { bridge.extractFrame(0, list); }), failure) << name;
      ++refused;
    }
  EXPECT_GE(refused, 15) << "kinds that the tools would have followed";
  EXPECT_FALSE(openings.any());
  EXPECT_FALSE(port.anybodyCame());
}

TEST_F(RealTools, APlaylistIsRefusedUnderEveryExtension) {
  for (const char* name : {"list.mkv", "list.webm", "list.avi", "list.mxf", "list.MKV"})
    EXPECT_EQ(failureOf([&] { bridge.probe(folder.write(name, "#EXTM3U\n#EXT-X-TARGETDURATION:1\n")); }),
              std::string(name) + " is no clip but a file of another kind (hls)");
}

TEST_F(RealTools, WhatIsNoFileIsRefusedAtOnce) {
  const fs::path pipe = folder / "pipe.mkv";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink("/dev/zero", folder / "device.mkv");
  EXPECT_EQ(failureOf([&] { bridge.probe(pipe); }), "pipe.mkv: it is not a regular file");
  EXPECT_EQ(failureOf([&] { bridge.extractFrame(0, pipe); }), "pipe.mkv: it is not a regular file");
  EXPECT_EQ(failureOf([&] { bridge.probe(folder / "device.mkv"); }), "device.mkv: it is not a regular file");
}

TEST_F(RealTools, AFileThatIsGoneIsLeftToTheToolToReport) {
  EXPECT_EQ(failureOf([&] { bridge.probe(folder / "gone.mkv"); }), "ffprobe exit status 1");
}

}  // namespace
}  // namespace tq::test

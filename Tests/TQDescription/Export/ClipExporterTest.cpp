#include <fstream>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "ExportFixture.hpp"
#include "Support/ClipMaker.hpp"
#include "Support/FakeTool.hpp"
#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/Export/ClipExporter.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// The arguments

TEST(TrimArgs, CopyTheStreams) {
  EXPECT_THAT(ClipExporter::trimArgs("/v/a.mov", "/out/a_00.mov", 1, 2.5, false),
              ElementsAre("-v", "error", "-y", "-ss", "1.000", "-to", "2.500", "-i", "/v/a.mov", "-c", "copy",
                          "/out/a_00.mov"));
}

TEST(TrimArgs, OrEncodeThemAnew) {
  EXPECT_THAT(ClipExporter::trimArgs("/v/a.mov", "/out/a_00.mov", 1, 2.5, true),
              ElementsAre("-v", "error", "-y", "-ss", "1.000", "-to", "2.500", "-i", "/v/a.mov", "-c:v", "libx264",
                          "-preset", "medium", "-crf", "18", "-c:a", "aac", "/out/a_00.mov"));
}

/// The two times that ffmpeg is asked for.
std::string timesFor(double start, double end) {
  const auto arguments = ClipExporter::trimArgs("/a", "/b", start, end, false);
  return arguments[4] + " " + arguments[6];
}

TEST(TrimArgs, TimesHaveThreeDecimals) {
  EXPECT_EQ(timesFor(0, 1.0 / 3), "0.000 0.333");
  EXPECT_EQ(timesFor(3600.0016, 7200), "3600.002 7200.000");
}

TEST(TrimArgs, ANegativeStartIsZero) {
  EXPECT_EQ(timesFor(-1.5, 2), "0.000 2.000");
  EXPECT_EQ(timesFor(-0.0, 2), "0.000 2.000");
  EXPECT_EQ(timesFor(-2, -1), "0.000 0.000");
}

TEST(TrimArgs, AnEndBeforeTheStartIsTheStart) {
  EXPECT_EQ(timesFor(5, 3), "5.000 5.000");
}

TEST(TrimArgs, FilesAreAbsoluteSoThatNoNameIsTakenForAnOptionOrAProtocol) {
  const auto arguments = ClipExporter::trimArgs("-i.mov", "concat:a.mov", 0, 1, false);
  EXPECT_EQ(arguments[8], (fs::current_path() / "-i.mov").string());
  EXPECT_EQ(arguments.back(), (fs::current_path() / "concat:a.mov").string());
}

// The names

fs::path nameFor(const fs::path& clip, std::size_t range = 0) {
  ExportItem item;
  item.mediaURL = clip;
  return ClipExporter::outputURL(item, range, "/out");
}

TEST(OutputURL, IsStemAndNumberInTheFolder) {
  EXPECT_EQ(nameFor("/v/a.mov", 0), "/out/a_00.mov");
  EXPECT_EQ(nameFor("/v/a.mov", 1), "/out/a_01.mov");
  EXPECT_EQ(nameFor("/v/clip.take2.MKV", 12), "/out/clip.take2_12.MKV");
}

TEST(OutputURL, TheNumberGrowsBeyondTwoDigits) {
  EXPECT_EQ(nameFor("/v/a.mov", 100), "/out/a_100.mov");
}

TEST(OutputURL, AClipWithoutAnExtensionBecomesAnMP4) {
  EXPECT_EQ(nameFor("/v/a"), "/out/a_00.mp4");
  EXPECT_EQ(nameFor("/v/a."), "/out/a_00.mp4");
  EXPECT_EQ(nameFor("/v/.mov"), "/out/.mov_00.mp4");
}

TEST(OutputURL, KeepsTheBytesOfTheName) {
  EXPECT_EQ(nameFor("/v/caf\xC3%d \n.mov"), "/out/caf\xC3%d \n_00.mov");
}

// The run, with a tool that tells what it was asked for

/// The text of the error that `action` ends with, or "none".
template <class Action>
std::string errorOf(Action action) {
  try {
    action();
  } catch (const std::exception& error) {
    return userFacingDescription(error);
  }
  return "none";
}

class ClipExporterRun : public testing::Test {
 protected:
  /// A stand-in for ffmpeg that notes the name of its output, writes its input's name there, and then runs `then`.
  FFmpegBridge toolThat(const std::string& then = "", double timeout = 60) const {
    const fs::path tool = writeTool(folder_, "ffmpeg",
                                    "for output; do :; done\n"
                                    "basename \"$output\" >> '" +
                                        log().string() +
                                        "'\n"
                                        "printf %s \"$9\" > \"$output\"\n" +
                                        then);
    return FFmpegBridge(tool, tool, timeout, ToolSearch::standard(), 0.05);
  }

  fs::path log() const { return folder_ / "log"; }
  fs::path out() const { return folder_ / "out"; }

  std::vector<std::string> asked() const {
    std::ifstream stream(log());
    std::vector<std::string> names;
    for (std::string line; std::getline(stream, line);)
      names.push_back(line);
    return names;
  }

  TemporaryFolder folder_;
};

TEST_F(ClipExporterRun, WithoutItemsTheFolderIsCreatedAllTheSame) {
  ClipExporter::run({}, out() / "deep" / "er", toolThat(), false);
  EXPECT_TRUE(fs::is_directory(out() / "deep" / "er"));
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ClipExporterRun, EveryRangeBecomesAFileInOrder) {
  ClipExporter::run(
      {exportItem("b.mov", {{0, 1, {}}, {1, 2, {}}}), exportItem("none.mov", {}), exportItem("a.mp4", {{0, 1, {}}})},
      out(), toolThat(), false);
  EXPECT_THAT(asked(), ElementsAre("b_00.mov", "b_01.mov", "a_00.mp4"));
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mp4", "b_00.mov", "b_01.mov"));
  EXPECT_EQ(contentOf(out() / "b_01.mov"), "/clips/b.mov");
}

TEST_F(ClipExporterRun, AFolderThatExistsKeepsItsFiles) {
  folder_.write("out/other.txt", "mine");
  ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat(), false);
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov", "other.txt"));
}

TEST_F(ClipExporterRun, WhatAKilledRunLeftHalfWrittenIsRemoved) {
  folder_.write("out/.tarquel-0A1B2C3D-0000-4000-8000-00000000000F.work/a_00.mov", "half");
  ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat(), false);
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov"));
}

TEST_F(ClipExporterRun, AnEarlierExportIsReplaced) {
  folder_.write("out/a_00.mov", "an older and longer export");
  ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat(), false);
  EXPECT_EQ(contentOf(out() / "a_00.mov"), "/clips/a.mov");
}

TEST_F(ClipExporterRun, OfClipsWithOneNameTheLaterReplacesTheEarlier) {
  ExportItem first = exportItem("a.mov", {{0, 1, {}}, {1, 2, {}}}), second = exportItem("a.mov", {{0, 1, {}}});
  second.mediaURL = "/elsewhere/a.mov";
  ClipExporter::run({first, second}, out(), toolThat(), false);
  EXPECT_EQ(contentOf(out() / "a_00.mov"), "/elsewhere/a.mov");
  EXPECT_EQ(contentOf(out() / "a_01.mov"), "/clips/a.mov");
}

TEST_F(ClipExporterRun, AFailureEndsTheRunAndKeepsWhatWasWrittenBefore) {
  const FFmpegBridge bridge = toolThat("[ $(wc -l < '" + log().string() + "') -lt 2 ] || exit 187\n");
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run(
                  {exportItem("a.mov", {{0, 1, {}}, {1, 2, {}}, {2, 3, {}}}), exportItem("b.mov", {{0, 1, {}}})}, out(),
                  bridge, false);
            }),
            TQError::frameExtractionFailed("ffmpeg trim of a.mov range 1 exit 187").description());
  EXPECT_THAT(asked(), ElementsAre("a_00.mov", "a_01.mov"));
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov")) << "what the failing tool had written is gone";
}

TEST_F(ClipExporterRun, AFailureLeavesAnEarlierExportAlone) {
  folder_.write("out/a_00.mov", "earlier");
  EXPECT_THROW(ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat("exit 1"), false), TQError);
  EXPECT_EQ(contentOf(out() / "a_00.mov"), "earlier");
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov"));
}

TEST_F(ClipExporterRun, AToolThatIsKilledIsAFailure) {
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat("kill -9 $$"), false);
            }),
            TQError::frameExtractionFailed("ffmpeg trim of a.mov range 0 exit 9").description());
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(ClipExporterRun, ATimeOutIsTheBridgesError) {
  EXPECT_THAT(errorOf([&] {
                ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat("sleep 100", 0), false);
              }),
              HasSubstr("ffmpeg timed out after 0s"));
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(ClipExporterRun, AToolThatCannotBeLaunchedIsTheBridgesError) {
  const FFmpegBridge bridge(folder_ / "none", folder_ / "none");
  EXPECT_THAT(errorOf([&] {
                ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), bridge, false);
              }),
              HasSubstr("could not launch none: No such file or directory"));
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(ClipExporterRun, AFolderThatCannotBeCreatedIsTheSystemsErrorAndNoToolStarts) {
  folder_.write("out", "a file");
  EXPECT_THROW(ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out() / "deeper", toolThat(), false),
               SystemError);
  EXPECT_THAT(asked(), IsEmpty());
  EXPECT_EQ(contentOf(out()), "a file");
}

TEST_F(ClipExporterRun, AFolderThatTakesNoFilesIsTheSystemsErrorAndNoToolStarts) {
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, "/proc", toolThat(), false);
            }),
            "proc: No such file or directory");
  EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(ClipExporterRun, AFolderUnderTheNameOfAnOutputIsAnErrorThatNamesIt) {
  folder_.write("out/a_00.mov/inside.txt", "mine");
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat(), false);
            }),
            TQError::outputWriteFailed("a_00.mov", "Is a directory").description());
  EXPECT_THAT(namesIn(out() / "a_00.mov"), ElementsAre("inside.txt"));
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov"));
}

TEST_F(ClipExporterRun, AFileThatItsOwnerLockedIsNotReplaced) {
  ::chmod(folder_.write("out/a_00.mov", "locked").c_str(), 0444);
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), toolThat(), false);
            }),
            TQError::outputWriteFailed("a_00.mov", "Permission denied").description());
  EXPECT_EQ(contentOf(out() / "a_00.mov"), "locked");
}

TEST_F(ClipExporterRun, ADiskThatIsFullAfterATrimMakesItAFailure) {
  const FFmpegBridge bridge = toolThat();
  folder_.write("out/a_00.mov", "earlier");
  const FileSizeLimit limit(1000);
  EXPECT_EQ(errorOf([&] {
              ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(), bridge, false);
            }),
            TQError::outputWriteFailed("a_00.mov", "File too large").description());
  EXPECT_EQ(contentOf(out() / "a_00.mov"), "earlier") << "ffmpeg is silent about a last part that was not written";
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov"));
}

TEST_F(ClipExporterRun, AStopRequestEndsTheRunBetweenTwoRanges) {
  const fs::path gate = folder_ / "gate";
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  std::stop_source stop;
  auto run = std::async(std::launch::async, [&] {
    ClipExporter::run({exportItem("a.mov", {{0, 1, {}}, {1, 2, {}}})}, out(),
                      toolThat("read line < '" + gate.string() + "'\n"), false, stop.get_token());
  });
  std::ofstream opened(gate);  // waits for the tool
  stop.request_stop();
  opened << "go\n" << std::flush;
  EXPECT_THROW(run.get(), Cancelled);
  EXPECT_THAT(asked(), ElementsAre("a_00.mov"));
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mov"));
}

TEST_F(ClipExporterRun, AToolThatFailsAfterAStopRequestCountsAsCancelled) {
  const fs::path gate = folder_ / "gate";
  ASSERT_EQ(::mkfifo(gate.c_str(), 0600), 0);
  std::stop_source stop;
  auto run = std::async(std::launch::async, [&] {
    ClipExporter::run({exportItem("a.mov", {{0, 1, {}}})}, out(),
                      toolThat("read line < '" + gate.string() + "'\nexit 9\n"), false, stop.get_token());
  });
  std::ofstream opened(gate);
  stop.request_stop();
  opened << "go\n" << std::flush;
  EXPECT_THROW(run.get(), Cancelled);
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

// Real clips

/// Ten seconds with a key frame and a tone at every second: frame n shows the number n, ten a second.
fs::path numberedClip(std::string_view extension, Arguments video = h264({"-g", "10"}),
                      const std::string& audio = "aac") {
  Arguments arguments{"-f", "lavfi", "-i", numberedPicture(10, 10), "-f", "lavfi", "-i", "sine=r=48000:d=10"};
  arguments.insert(arguments.end(), video.begin(), video.end());
  arguments.insert(arguments.end(), {"-c:a", audio, "-shortest"});
  return makeClip(arguments, extension);
}

/// The kinds of streams of a clip, such as "video\naudio\n".
std::string streamsOf(const fs::path& clip) {
  const ChildResult result = runChild(
      "/usr/bin/ffprobe", {"-v", "error", "-show_entries", "stream=codec_type", "-of", "csv=p=0", clip.string()},
      {.time = std::chrono::seconds(60)});
  EXPECT_EQ(result.status, 0) << clip;
  return std::string(textOf(result.output));
}

class RealTrims : public testing::Test {
 protected:
  /// Trims a copy of a clip that stands under another name.
  void trim(const fs::path& clip, const fs::path& name, std::vector<ExportRange> ranges, bool reencode = false) const {
    fs::create_directories(folder_ / "clips");
    fs::copy_file(clip, folder_ / "clips" / name, fs::copy_options::overwrite_existing);
    ExportItem item;
    item.mediaURL = folder_ / "clips" / name;
    item.ranges = std::move(ranges);
    ClipExporter::run({item}, out(), bridge_, reencode);
  }

  fs::path out() const { return folder_ / "out"; }

  TemporaryFolder folder_;
  FFmpegBridge bridge_;
};

TEST_F(RealTrims, ACopyHasTheLengthAndTheStreamsOfItsRange) {
  const std::pair<std::string, fs::path> clips[] = {
      {"mp4", numberedClip("mp4")},
      {"mov", numberedClip("mov")},
      {"mkv", numberedClip("mkv")},
      {"avi", numberedClip("avi", h264({"-g", "10", "-bf", "0"}), "mp3")},
      {"webm", numberedClip("webm", {"-c:v", "libvpx", "-g", "10", "-deadline", "realtime"}, "libopus")},
      {"mxf", makeClip({"-f", "lavfi", "-i", movingPicture(10), "-f", "lavfi", "-i", "sine=r=48000:d=10", "-c:v",
                        "mpeg2video", "-g", "25", "-bf", "0", "-c:a", "pcm_s16le", "-shortest"},
                       "mxf")}};
  for (const auto& [extension, clip] : clips) {
    trim(clip, "a." + extension, {{2, 5, {}}, {6, 10, {}}});
    for (const auto& [name, seconds] : {std::pair("a_00.", 3.0), std::pair("a_01.", 4.0)}) {
      const fs::path output = out() / (name + extension);
      const double duration = bridge_.probe(output).duration;
      EXPECT_GT(duration, seconds - 0.1) << output;
      EXPECT_LT(duration, seconds + 1.1) << output << ": no more than what lies between two key frames";
      EXPECT_THAT(streamsOf(output), AllOf(HasSubstr("video"), HasSubstr("audio"))) << output;
    }
  }
  EXPECT_EQ(namesIn(out()).size(), 12u);
}

TEST_F(RealTrims, ACopyStartsAtTheKeyFrameBeforeTheRange) {
  trim(numberedClip("mp4"), "a.mp4", {{3, 5, {}}});
  EXPECT_EQ(numberShown(bridge_.extractFrame(0, out() / "a_00.mp4")), 30);
}

TEST_F(RealTrims, AnEncodedCutIsExactBetweenKeyFrames) {
  trim(numberedClip("mp4"), "a.mp4", {{3.7, 5, {}}}, true);
  EXPECT_EQ(numberShown(bridge_.extractFrame(0, out() / "a_00.mp4")), 37);
  EXPECT_NEAR(bridge_.probe(out() / "a_00.mp4").duration, 1.3, 0.11);
  EXPECT_EQ(streamsOf(out() / "a_00.mp4"), "video\naudio\n");
}

TEST_F(RealTrims, ARangeBeyondTheEndIsCutThere) {
  trim(numberedClip("mp4"), "a.mp4", {{8, 1000, {}}});
  EXPECT_NEAR(bridge_.probe(out() / "a_00.mp4").duration, 2.0, 0.35);
}

TEST_F(RealTrims, ARangeWithoutLengthIsLeftToTheToolWhichRefusesIt) {
  EXPECT_EQ(errorOf([&] {
              trim(numberedClip("mp4"), "a.mp4", {{0, 1, {}}, {5, 3, {}}, {1, 2, {}}});
            }),
            TQError::frameExtractionFailed("ffmpeg trim of a.mp4 range 1 exit 1").description());
  EXPECT_THAT(namesIn(out()), ElementsAre("a_00.mp4"));
}

TEST_F(RealTrims, NamesThatLookLikeOptionsProtocolsOrPatternsAreFiles) {
  for (const std::string stem : {"-y", "--", "concat:a|b", "pipe:1", "file:x", "http:", "%d", "%03d_", "a b",
                                 "it's \"x\"", "line\nbreak", "\U0001F600", "caf\xC3", "$(touch x)", "[glob]*?"}) {
    trim(numberedClip("mp4"), stem + ".mp4", {{0, 1, {}}});
    EXPECT_TRUE(fs::exists(out() / (stem + "_00.mp4"))) << stem;
  }
  EXPECT_EQ(namesIn(out()).size(), 15u);
}

TEST_F(RealTrims, ASourceThatHasVanishedIsAFailureThatNamesIt) {
  ExportItem gone;
  gone.mediaURL = folder_ / "gone.mov";
  gone.ranges = {{0, 1, {}}};
  EXPECT_EQ(errorOf([&] { ClipExporter::run({gone}, out(), bridge_, false); }),
            TQError::frameExtractionFailed("ffmpeg trim of gone.mov range 0 exit 1").description());
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(RealTrims, ASourceThatIsNoClipIsAFailure) {
  const fs::path text = folder_.write("text.mp4", "no clip");
  EXPECT_THROW(trim(text, "a.mp4", {{0, 1, {}}}), TQError);
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(RealTrims, APlaylistUnderTheNameOfAClipLeadsNowhere) {
  const fs::path clip = numberedClip("mp4");
  const fs::path list = folder_.write("list.mp4", "ffconcat version 1.0\nfile '" + clip.string() + "'\n");
  EXPECT_THAT(errorOf([&] {
                trim(list, "a.mp4", {{0, 1, {}}});
              }),
              HasSubstr("a.mp4 is no clip but a file of another kind (concat)"));
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(RealTrims, ADiskThatIsFullHalfWayLeavesNoPartOfAnOutput) {
  fs::create_directory(out());
  const fs::path clip = numberedClip("mp4");
  ASSERT_GT(fs::file_size(clip), 20'000u);
  const std::string error = [&] {
    ExportItem item;
    item.mediaURL = clip;
    item.ranges = {{0, 10, {}}};
    const FileSizeLimit limit(10'000);
    return errorOf([&] { ClipExporter::run({item}, out(), bridge_, false); });
  }();
  EXPECT_THAT(error, HasSubstr("ffmpeg trim of " + clip.filename().string() + " range 0 exit "));
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

TEST_F(RealTrims, ANameThatLeavesNoRoomForTheNumberIsAFailure) {
  const std::string longest(251, 'x');
  EXPECT_THAT(errorOf([&] { trim(numberedClip("mp4"), longest + ".mp4", {{0, 1, {}}}); }), HasSubstr("range 0 exit 1"));
  EXPECT_THAT(namesIn(out()), IsEmpty());
}

}  // namespace
}  // namespace tq::test

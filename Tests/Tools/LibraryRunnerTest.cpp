#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "LibraryHarness.hpp"
#include "Support/ClipMaker.hpp"
#include "TQDescription/FolderIndex/FolderIndex.hpp"
#include "TQFrames/FFmpegBridge.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using tools::abandoned;
using tools::allDone;
using tools::notAllDone;

class LibraryRunner : public testing::Test, public LibraryHarness {
 protected:
  LibraryRunner() { fs::create_directory(library()); }

  /// Three clips: two of the sea, one that needs a look, one refused, in a folder below.
  void addThree() const {
    add(description("b.mov", "A calm sea at dusk.", "sea"));
    DescriptionResult doubtful = description("a.mov", "A street, perhaps by the sea.");
    doubtful.reviewFlag = true;
    doubtful.reviewReason = "blurry frames";
    add(doubtful);
    DescriptionResult refused = description("c.mov", "");
    refused.flagged = true;
    add(refused, "below/");
  }

  /// A description with a shot at each of these times.
  static DescriptionResult shots(const std::string& filename, const std::vector<std::string>& timecodes) {
    DescriptionResult result = description(filename, "Shots.");
    for (const std::string& timecode : timecodes)
      result.shots.emplace_back().timecode = timecode;
    return result;
  }
};

// search

TEST_F(LibraryRunner, ASearchListsTheBestFirst) {
  addThree();
  EXPECT_EQ(run("search", {"sea"}), allDone);
  EXPECT_EQ(out.str(),
            "100%\tb.mov\t0:10\t\tA calm sea at dusk.\n"
            "50%\ta.mov\t0:10\tNeeds review\tA street, perhaps by the sea.\n");
  EXPECT_EQ(errors.str(), "2 clips · 0 flagged · 1 need review · 2 of 2 match\n");
}

TEST_F(LibraryRunner, WithoutAQueryAllClipsAreListedByPath) {
  addThree();
  EXPECT_EQ(run("search", {"--recursive"}), allDone);
  EXPECT_EQ(out.str(),
            "\ta.mov\t0:10\tNeeds review\tA street, perhaps by the sea.\n"
            "\tb.mov\t0:10\t\tA calm sea at dusk.\n"
            "\tbelow/c.mov\t0:10\tRefused\t\n");
  EXPECT_EQ(errors.str(), "3 clips · 1 flagged · 1 need review\n");
}

TEST_F(LibraryRunner, ASearchThatFindsNothingSaysSo) {
  addThree();
  EXPECT_EQ(run("search", {"volcano"}), allDone);
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(errors.str(), "No clips match\n2 clips · 0 flagged · 1 need review · 0 of 2 match\n");
}

TEST_F(LibraryRunner, AnEmptyLibraryIsNoError) {
  EXPECT_EQ(run("search"), allDone);
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(errors.str(), "0 clips · 0 flagged · 0 need review\n");
}

TEST_F(LibraryRunner, ConditionsAndFacetsNarrowASearchAndRankNothing) {
  addThree();
  EXPECT_EQ(run("search", {"review:true"}), allDone);
  EXPECT_THAT(out.str(), StartsWith("\ta.mov\t"));
  EXPECT_EQ(run("search", {"--facet", "theme=SEA"}), allDone);
  EXPECT_EQ(out.str(), "\tb.mov\t0:10\t\tA calm sea at dusk.\n");
  EXPECT_EQ(run("search", {"street", "--facet", "theme=sea"}), allDone);
  EXPECT_EQ(out.str(), "");
}

TEST_F(LibraryRunner, TheLimitCutsASearchAndAListing) {
  addThree();
  run("search", {"sea", "--limit", "1"});
  EXPECT_EQ(out.str(), "100%\tb.mov\t0:10\t\tA calm sea at dusk.\n");
  run("search", {"--limit", "1"});
  EXPECT_THAT(out.str(), AllOf(StartsWith("\ta.mov"), Not(HasSubstr("b.mov"))));
  run("search", {"--limit", "9223372036854775807"});
  EXPECT_THAT(out.str(), HasSubstr("b.mov"));
}

TEST_F(LibraryRunner, ASearchThatTakesAsManyAsItMaySaysSo) {
  for (int number = 0; number < 501; ++number)
    add(description(std::to_string(number) + ".mov", "sea"));
  const fs::path csv = folder / "out.csv";
  EXPECT_EQ(run("export", {"sea", "--csv", csv.string()}), allDone);
  EXPECT_EQ(out.str(), "Exported 500 ranges → out.csv\n");
  EXPECT_EQ(errors.str(), "A search takes 500 clips at most; --limit sets another number.\n");
  run("export", {"sea", "--limit", "1000", "--csv", csv.string()});
  EXPECT_EQ(out.str() + errors.str(), "Exported 501 ranges → out.csv\n");
  run("export", {"--csv", csv.string()});
  EXPECT_EQ(out.str() + errors.str(), "Exported 501 ranges → out.csv\n");
}

TEST_F(LibraryRunner, OnATerminalTheListIsAligned) {
  addThree();
  terminalColumns = 44;
  run("search", {"sea"});
  EXPECT_EQ(out.str(),
            "100%  b.mov  0:10                A calm se…\n"
            " 50%  a.mov  0:10  Needs review  A street,…\n");
}

TEST_F(LibraryRunner, HostileTextsStayOnTheirLine) {
  add(description("evil\x1b[2J\n.mov", "sea\x1b]0;x\x07\nmore\tmore"));
  run("search", {"sea"});
  EXPECT_EQ(out.str(), "100%\tevil\\x1b[2J\\n.mov\t0:10\t\tsea\\x1b]0;x\\x07\\nmore\\tmore\n");
}

TEST_F(LibraryRunner, ADescriptionThatNamesNoClipBesideItIsShownItself) {
  DescriptionResult result = description("../../etc/passwd", "sea");
  folder.write("library/x.description.json", writeJSON(encode(result), JSONLayout::pretty));
  run("search", {"sea"});
  EXPECT_EQ(out.str(), "100%\tx.description.json\t0:10\t\tsea\n");
}

TEST_F(LibraryRunner, MalformedSidecarsAreToldOfAndTheOthersListed) {
  addThree();
  folder.write("library/bad.description.json", "{");
  folder.write("library/below/worse.description.json", R"({"schema_version": 1})");
  EXPECT_EQ(run("search", {"sea", "--recursive"}), allDone);
  EXPECT_THAT(out.str(), HasSubstr("b.mov"));
  EXPECT_THAT(errors.str(), HasSubstr("tarquel-library: Skipped 2 malformed sidecars:\n"
                                      "tarquel-library: bad.description.json: "));
  EXPECT_THAT(errors.str(), HasSubstr("tarquel-library: below/worse.description.json: schema_version: "));
}

TEST_F(LibraryRunner, AFolderThatIsMissingOrNoneIsAnError) {
  fs::remove(library());
  for (const char* command : {"search", "facets", "index", "rerate"})
    EXPECT_EQ(errorOf(command), "File not found: " + library().string());
  folder.write("library", "a file");
  EXPECT_EQ(errorOf("search", {"--recursive"}), "Not a folder: " + library().string());
}

TEST_F(LibraryRunner, AnOutputThatCannotBeWrittenIsAnError) {
  addThree();
  out.setstate(std::ios::badbit);
  EXPECT_EQ(run("search", {"sea"}), notAllDone);
  EXPECT_THAT(errors.str(), EndsWith("tarquel-library: The output cannot be written.\n"));
}

TEST_F(LibraryRunner, AnOutputThatNobodyReadsAnyMoreIsNoError) {
  addThree();
  out.setstate(std::ios::badbit);
  isOutputAbandoned = true;
  EXPECT_EQ(run("search", {"sea"}), abandoned);
  EXPECT_THAT(errors.str(), Not(HasSubstr("tarquel-library:")));
}

TEST_F(LibraryRunner, AStopRequestEndsTheWork) {
  addThree();
  stop.request_stop();
  EXPECT_THROW(run("search", {"sea"}), Cancelled);
}

// facets

TEST_F(LibraryRunner, FacetsAreListedInTheirOrderWithTheirCounts) {
  addThree();
  DescriptionResult more = description("d.mov", "More.", "City");
  more.shots.emplace_back().shotType = "wide";
  more.global.searchKeywords = {"key"};
  add(more);
  EXPECT_EQ(run("facets"), allDone);
  EXPECT_EQ(out.str(), "theme\t2\tcity\ntheme\t1\tsea\nshotType\t1\twide\nkeyword\t1\tkey\n");
  EXPECT_EQ(errors.str(), "3 clips · 0 flagged · 1 need review\n");
}

TEST_F(LibraryRunner, OfAnEmptyLibraryThereAreNoFacets) {
  EXPECT_EQ(run("facets"), allDone);
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(errors.str(), "0 clips · 0 flagged · 0 need review\n");
}

// index

TEST_F(LibraryRunner, AnIndexIsWrittenOfAllClips) {
  addThree();
  EXPECT_EQ(run("index", {"--recursive"}), allDone);
  EXPECT_EQ(out.str(), "Wrote _INDEX.json and _INDEX.md\n");
  EXPECT_EQ(errors.str(), "3 clips · 1 flagged · 1 need review\n");
  const auto index = decode<FolderIndex>(parseJSON(contentOf(library() / "_INDEX.json")));
  EXPECT_EQ(index.totalClips, 3);
  EXPECT_EQ(index.folder, library().string());
  EXPECT_EQ(index.generatedAt, clock->now());
  EXPECT_THAT(contentOf(library() / "_INDEX.md"), StartsWith("# Index — library\n\n3 clips"));
}

TEST_F(LibraryRunner, AnIndexThatCannotBeWrittenIsAnError) {
  fs::create_directory(library() / "_INDEX.json");
  EXPECT_EQ(errorOf("index"), "Write failed: _INDEX.json: Is a directory");
}

// export

TEST_F(LibraryRunner, AnExportFollowsTheSearch) {
  addThree();
  const std::string csv = (folder / "out.csv").string();
  EXPECT_EQ(run("export", {"sea", "--csv", csv}), allDone);
  EXPECT_EQ(out.str(), "Exported 2 ranges → out.csv\n");
  EXPECT_EQ(contentOf(csv),
            "file,tc_in,tc_out,name\n"
            "b.mov,00:00:00:00,00:00:10:00,A calm sea at dusk.\n"
            "a.mov,00:00:00:00,00:00:10:00,\"A street, perhaps by the sea.\"\n");
}

TEST_F(LibraryRunner, SeveralFormatsAreExportedAtOnceUnderTheTitleOfTheQuery) {
  add(shots("a.mov", {"00:00:00", "00:00:04"}));
  const std::string project = (folder / "p.fcpxml").string(), list = (folder / "l.edl").string();
  EXPECT_EQ(run("export", {"shots", "--edl", list, "--fcpxml", project}), allDone);
  EXPECT_EQ(out.str(), "Exported 2 ranges → p.fcpxml\nExported 2 ranges → l.edl\n");
  EXPECT_THAT(contentOf(list), StartsWith("TITLE: shots\nFCM: NON-DROP FRAME\n001  AX"));
  EXPECT_THAT(contentOf(project), HasSubstr("<project name=\"shots\">"));
  EXPECT_THAT(contentOf(project), HasSubstr("src=\"file://" + (library() / "a.mov").string() + "\""));
}

TEST_F(LibraryRunner, WithoutAQueryEverythingIsExported) {
  addThree();
  const std::string list = (folder / "l.edl").string();
  EXPECT_EQ(run("export", {"--edl", list, "--recursive"}), allDone);
  EXPECT_THAT(contentOf(list), StartsWith("TITLE: Tarquel Export\n"));
  EXPECT_EQ(out.str(), "Exported 3 ranges → l.edl\n");
}

TEST_F(LibraryRunner, WithNothingToExportNoFileIsWritten) {
  addThree();
  const fs::path csv = folder / "out.csv";
  EXPECT_EQ(run("export", {"volcano", "--csv", csv.string()}), notAllDone);
  EXPECT_EQ(errors.str(), "tarquel-library: Nothing to export.\n");
  EXPECT_FALSE(fs::exists(csv));
}

TEST_F(LibraryRunner, AnExportThatCannotBeWrittenIsAnError) {
  addThree();
  EXPECT_EQ(errorOf("export", {"--csv", (folder / "none" / "out.csv").string()}),
            "Export failed: out.csv: No such file or directory");
  EXPECT_EQ(errorOf("export", {"--csv", library().string()}), "Export failed: library: Is a directory");
  ::chmod(folder.write("locked.csv", "mine").c_str(), 0444);
  EXPECT_EQ(errorOf("export", {"--csv", (folder / "locked.csv").string()}),
            "Export failed: locked.csv: Permission denied");
  EXPECT_EQ(contentOf(folder / "locked.csv"), "mine");
}

TEST_F(LibraryRunner, AnExportNeverReplacesAClip) {
  addThree();
  const fs::path clip = folder.write("library/b.mov", "clip");
  fs::create_symlink(library(), folder / "link");
  for (const fs::path& file : {clip, folder / "link" / "b.mov", library() / "below" / ".." / "b.mov"})
    EXPECT_EQ(errorOf("export", {"--csv", file.string(), "--recursive"}),
              file.string() + " is a clip of the library and is not replaced.");
  EXPECT_EQ(contentOf(clip), "clip");
}

TEST_F(LibraryRunner, AnExportNeverReplacesADeviceOrAPipeNorALinkToOne) {
  addThree();
  const fs::path pipe = folder / "pipe", link = folder / "link";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  fs::create_symlink(pipe, link);
  for (const fs::path& file : {pipe, link})
    EXPECT_EQ(errorOf("export", {"--csv", file.string()}),
              file.string() + " is a device or a pipe and is not replaced.");
  EXPECT_TRUE(fs::is_fifo(pipe));
  EXPECT_TRUE(fs::is_symlink(link));
}

// trim

TEST_F(LibraryRunner, TheShotsOfTheClipsFoundBecomeFiles) {
  fs::copy_file(makeVideo(movingPicture(10), h264({"-g", "25"}), "mp4"), library() / "a.mp4");
  add(shots("a.mp4", {"00:00:00", "00:00:04"}));
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"shots", "--into", cuts.string()}), allDone);
  EXPECT_EQ(errors.str(), "Trimming 2 clips…\n");
  EXPECT_EQ(out.str(), "Trimmed 2 clips → cuts\n");
  EXPECT_THAT(namesIn(cuts), ElementsAre("a_00.mp4", "a_01.mp4"));
  EXPECT_NEAR(FFmpegBridge().probe(cuts / "a_01.mp4").duration, 6, 0.1);
}

TEST_F(LibraryRunner, WithNothingToTrimNoFolderIsMade) {
  addThree();
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"volcano", "--into", cuts.string()}), notAllDone);
  EXPECT_EQ(errors.str(), "tarquel-library: No source videos found to trim.\n");
  EXPECT_FALSE(fs::exists(cuts));
}

TEST_F(LibraryRunner, WithoutFFmpegNothingIsTrimmed) {
  add(description("a.mov", "A street."));
  folder.write("library/a.mov", "clip");
  tools = ToolSearch{};
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"--into", cuts.string()}), notAllDone);
  EXPECT_EQ(errors.str(),
            "tarquel-library: ffmpeg not found. Install it (e.g. `brew install ffmpeg`) to trim clips.\n");
  EXPECT_FALSE(fs::exists(cuts));
}

TEST_F(LibraryRunner, ClipsThatAreGoneAreToldOfAndTheOthersCut) {
  fs::copy_file(makeVideo(movingPicture(10), h264({"-g", "25"}), "mp4"), library() / "a.mp4");
  for (const char* name : {"a.mp4", "b.mp4"})
    add(description(name, "One."));
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"--into", cuts.string()}), notAllDone);
  EXPECT_EQ(errors.str(), "tarquel-library: File not found: b.mp4\nTrimming 1 clip…\n");
  EXPECT_EQ(out.str(), "Trimmed 1 clip → cuts\n");
  EXPECT_THAT(namesIn(cuts), ElementsAre("a_00.mp4"));
}

TEST_F(LibraryRunner, WhenAllClipsAreGoneNoFolderIsMade) {
  addThree();
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"--into", cuts.string()}), notAllDone);
  EXPECT_EQ(errors.str(),
            "tarquel-library: File not found: a.mov\n"
            "tarquel-library: File not found: b.mov\n"
            "tarquel-library: No source videos found to trim.\n");
  EXPECT_FALSE(fs::exists(cuts));
}

TEST_F(LibraryRunner, ATrimThatFailsIsAnError) {
  add(description("a.mov", "A street."));
  folder.write("library/a.mov", "no clip");
  EXPECT_THAT(errorOf("trim", {"--into", (folder / "cuts").string()}),
              AllOf(StartsWith("Clip trim failed: "), EndsWith("ffmpeg trim of a.mov range 0 exit 1")));
  folder.write("file", "");
  EXPECT_EQ(errorOf("trim", {"--into", (folder / "file").string()}), "Clip trim failed: file: File exists");
}

TEST_F(LibraryRunner, ATrimNeverReplacesAClip) {
  add(description("a.mov", "One."));
  add(description("a_00.mov", "Two."));
  folder.write("library/a.mov", "clip");
  folder.write("library/a_00.mov", "clip");
  EXPECT_EQ(errorOf("trim", {"one", "--into", library().string()}),
            (library() / "a_00.mov").string() + " is a clip of the library and is not replaced.");
  EXPECT_EQ(contentOf(library() / "a_00.mov"), "clip");
}

TEST_F(LibraryRunner, ClipsThatAreCutIntoOneFileAreToldOf) {
  fs::create_directory(library() / "below");
  for (const char* name : {"a.mp4", "below/a.mp4"})
    fs::copy_file(makeVideo(movingPicture(10), h264({"-g", "25"}), "mp4"), library() / name);
  add(description("a.mp4", "One."));
  add(description("a.mp4", "Two."), "below/");
  const fs::path cuts = folder / "cuts";
  EXPECT_EQ(run("trim", {"--recursive", "--into", cuts.string()}), allDone);
  EXPECT_THAT(errors.str(), HasSubstr("tarquel-library: More than one clip is cut into " +
                                      (cuts / "a_00.mp4").string() + "; the last one stays.\n"));
}

// rerate

TEST_F(LibraryRunner, ClipsThatDeserveAnotherDescriptionAreListed) {
  addThree();
  folder.write("library/a.mov", "clip");
  folder.write("library/below/c.mov", "clip");
  EXPECT_EQ(run("rerate", {"--recursive"}), allDone);
  EXPECT_EQ(out.str(), "a.mov\tblurry frames\n");
  EXPECT_EQ(run("rerate", {"--recursive", "--include-refusals"}), allDone);
  EXPECT_EQ(out.str(), "a.mov\tblurry frames\nbelow/c.mov\tmodel refused\n");
  EXPECT_EQ(errors.str(), "");
}

TEST_F(LibraryRunner, CandidatesWithoutTheirClipAreToldOf) {
  addThree();
  EXPECT_EQ(run("rerate"), notAllDone);
  EXPECT_EQ(out.str(), "");
  EXPECT_EQ(errors.str(),
            "tarquel-library: File not found: a.mov\n"
            "tarquel-library: No re-ratable clips found (source videos missing?).\n");
}

}  // namespace
}  // namespace tq::test

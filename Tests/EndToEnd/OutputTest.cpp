#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/User.hpp"
#include "Support/ClipMaker.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

constexpr const char* markdown = "a.description.md";
constexpr const char* json = "a.description.json";
constexpr const char* poster = "a.description.jpg";

/// A user with one clip that was described before; its Markdown was changed by hand since.
class SecondRun : public testing::Test {
 protected:
  SecondRun() {
    user.addClip("a.mp4");
    EXPECT_EQ(user.describe({"a.mp4"}).status, 0);
    user.addFile(markdown, "my own words");
  }

  std::string content(const std::string& name) const { return contentOf(user.clips() / name); }

  User user;
};

TEST_F(SecondRun, LeavesOutputsAloneUnlessToldOtherwise) {
  const std::string before = content(json);
  for (const Arguments& arguments : {Arguments{"a.mp4"}, Arguments{"--on-conflict", "skip-existing", "a.mp4"}}) {
    const Outcome outcome = user.describe(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
              "started    a.mp4\n"
              "done       a.mp4: its outputs exist and were left alone\n"
              "1 of 1 clip described\n");
  }
  EXPECT_EQ(content(markdown), "my own words");
  EXPECT_EQ(content(json), before);
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", markdown, json, poster));
}

TEST_F(SecondRun, SkippingStillWritesWhatIsMissing) {
  fs::remove(user.clips() / json);
  const Outcome outcome = user.describe({"a.mp4"});
  EXPECT_EQ(outcome.output,
            "started    a.mp4\n"
            "done       a.mp4\n"
            "  wrote    " +
                (user.clips() / json).string() +
                "\n"
                "1 of 1 clip described\n");
  EXPECT_EQ(content(markdown), "my own words");
}

TEST_F(SecondRun, OverwriteReplacesAll) {
  const Outcome outcome = user.describe({"--on-conflict", "overwrite", "a.mp4"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr(doneLines(user.clips() / "a.mp4")));
  EXPECT_THAT(content(markdown), HasSubstr("Mock description of a.mp4"));
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", markdown, json, poster));
}

TEST_F(SecondRun, SuffixNumbersTheNewOnes) {
  for (const std::string number : {"2", "3"}) {
    const Outcome outcome = user.describe({"--on-conflict", "suffix", "a.mp4"});
    EXPECT_EQ(outcome.status, 0);
    for (const std::string extension : {"md", "json", "jpg"})
      EXPECT_THAT(outcome.output,
                  HasSubstr("  wrote    " + (user.clips() / ("a.description (" + number + ")." + extension)).string()));
  }
  EXPECT_EQ(content(markdown), "my own words");
  EXPECT_EQ(readDescription(user.clips() / "a.description (3).json").source.filename, "a.mp4");
}

TEST_F(SecondRun, OverwriteStopsAtALockedSidecar) {
  fs::permissions(user.clips() / markdown, fs::perms(0444));
  const std::string before = content(json);
  const Outcome outcome = user.describe({"--on-conflict", "overwrite", "a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              HasSubstr("failed     a.mp4: Could not write output file a.description.md: Permission denied\n"));
  EXPECT_EQ(content(markdown), "my own words");
  EXPECT_EQ(content(json), before);
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", markdown, json, poster));
}

TEST_F(SecondRun, SkipAndSuffixGoAroundALockedSidecar) {
  fs::permissions(user.clips() / markdown, fs::perms(0444));
  EXPECT_EQ(user.describe({"a.mp4"}).status, 0);
  EXPECT_EQ(user.describe({"--on-conflict", "suffix", "a.mp4"}).status, 0);
  EXPECT_EQ(content(markdown), "my own words");
  EXPECT_TRUE(fs::exists(user.clips() / "a.description (2).md"));
}

TEST_F(SecondRun, AFullDiskLeavesOldOutputsWhole) {
  const std::string before = content(json);
  user.surroundings.largestFile = 100;
  const Outcome outcome = user.describe({"--on-conflict", "overwrite", "a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              HasSubstr("failed     a.mp4: Could not write output file a.description.md: File too large\n"));
  EXPECT_EQ(content(markdown), "my own words");
  EXPECT_EQ(content(json), before);
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", markdown, json, poster)) << "nothing half-written";
}

TEST(FullDisk, LeavesNothingHalfWritten) {
  User user;
  user.addClip("a.mp4");
  user.surroundings.largestFile = 100;
  EXPECT_EQ(user.describe({"a.mp4"}).status, 1);
  EXPECT_THAT(namesIn(user.clips()), ElementsAre("a.mp4"));
}

TEST(FullDisk, FoundAtTheSecondFileLeavesTheFirstWhole) {
  User user;
  user.addClip("a.mp4");
  EXPECT_EQ(user.describe({"--format", "markdown", "a.mp4"}).status, 0);
  user.surroundings.largestFile = fs::file_size(user.clips() / markdown);
  const Outcome outcome = user.describe({"--on-conflict", "overwrite", "a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("Could not write output file a.description.json: File too large\n"));
  EXPECT_THAT(contentOf(user.clips() / markdown), HasSubstr("Mock description of a.mp4"));
  EXPECT_FALSE(fs::exists(user.clips() / json));
}

TEST(OutputFolder, AFileInItsPlaceStopsEverythingBeforeAnyWork) {
  User user;
  user.addClip("a.mp4");
  user.addFile("out", "precious");
  for (const char* folder : {"out", "out/below"}) {
    const Outcome outcome = user.describe({"--output-dir", folder, "a.mp4"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.errors, testing::MatchesRegex("tarquel-describe: [^\n]*: [^\n]+\n"));
  }
  EXPECT_EQ(contentOf(user.clips() / "out"), "precious");
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", "out"));
}

TEST(OutputFolder, AFolderInPlaceOfASidecarFailsThatClipOnly) {
  User user;
  user.addClip("a.mp4");
  user.addClip("b.mp4");
  fs::create_directory(user.clips() / markdown);
  const Outcome outcome = user.describe({"--on-conflict", "overwrite", "."});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("failed     a.mp4: Could not write output file a.description.md: "));
  EXPECT_THAT(outcome.output, HasSubstr(doneLines(user.clips() / "b.mp4")));
  EXPECT_TRUE(fs::is_directory(user.clips() / markdown));
}

TEST(ClipsOfOneName, AreToldApartOrWarnedOf) {
  User user;
  const fs::path first = user.addClip("a.mov"), second = user.addClip("a.mp4");
  user.addClip("other/a.mp4");
  const std::string warning = "tarquel-describe: " + second.string() + " and " + first.string() +
                              " have outputs of the same names; --on-conflict suffix keeps both.\n";
  const Outcome skipping = user.describe({"--jobs", "1", "."});
  EXPECT_EQ(skipping.errors, warning);
  EXPECT_THAT(skipping.output, HasSubstr("done       a.mp4: its outputs exist and were left alone\n"));
  EXPECT_EQ(readDescription(user.clips() / json).source.filename, "a.mov");
  EXPECT_EQ(user.describe({"--on-conflict", "suffix", "."}).errors, "");
  EXPECT_THAT(user.describe({"--output-dir", "out", "."}).errors,
              HasSubstr((user.clips() / "other/a.mp4").string() + " and " + first.string()));
}

TEST(Clips, AreNeverChanged) {
  User user;
  const fs::path clip = user.addClip("a.mp4");
  const auto written = fs::last_write_time(clip);
  user.describe({"a.mp4"});
  user.describe({"--on-conflict", "overwrite", "a.mp4"});
  EXPECT_EQ(fs::last_write_time(clip), written);
  EXPECT_EQ(readClip(clip), readClip(smallClip()));
}

TEST(ResumedRun, DoesOnlyWhatIsNotDescribed) {
  User user;
  user.addClip("clips/a.mp4");
  EXPECT_EQ(user.describe({"clips"}).status, 0);
  user.addClip("clips/b.mp4");
  const Outcome second = user.describe({"clips", "--on-conflict", "overwrite"});
  EXPECT_EQ(second.status, 0);
  EXPECT_EQ(second.output, "1 clip is up to date and left alone; --again describes it too.\nstarted    b.mp4\n" +
                               doneLines(user.clips() / "clips/b.mp4") + "1 of 1 clip described\n");
  const Outcome third = user.describe({"clips"});
  EXPECT_EQ(third.status, 0);
  EXPECT_EQ(third.output, "2 clips are up to date and left alone; --again describes them too.\n");
  EXPECT_THAT(user.describe({"clips", "--again"}).output, HasSubstr("2 of 2 clips described\n"));
}

TEST(ManyClips, AllAreDescribedInOrderAndMemoryStaysBounded) {
  User user;
  // A sanitizer keeps freed memory for a while; that is not the program's.
  const char* options = std::getenv("ASAN_OPTIONS");
  user.surroundings.environment["ASAN_OPTIONS"] = (options ? std::string(options) + ":" : "") + "quarantine_size_mb=1";
  const fs::path original = user.addClip("few/100.mp4");
  const auto addCopies = [&](const fs::path& folder, int first, int last) {
    fs::create_directories(user.clips() / folder);
    for (int number = first; number <= last; ++number)
      fs::create_hard_link(original, user.clips() / folder / (std::to_string(number) + ".mp4"));
  };
  addCopies("few", 101, 124);
  addCopies("many", 100, 299);

  const Outcome few = user.describe({"--jobs", "8", "few"});
  EXPECT_THAT(few.output, HasSubstr("\n25 of 25 clips described\n"));
  const Outcome many = user.describe({"--jobs", "8", "many"});

  EXPECT_EQ(many.status, 0);
  EXPECT_THAT(many.output, HasSubstr("\n200 of 200 clips described\n"));
  EXPECT_EQ(namesIn(user.clips() / "many").size(), 800u);
  EXPECT_LE(many.peakKilobytes, few.peakKilobytes * 3 / 2);

  std::vector<int> started;
  const std::string word = "started    ";
  for (std::size_t at = many.output.find(word); at != std::string::npos; at = many.output.find(word, at + 1))
    started.push_back(std::stoi(many.output.substr(at + word.size(), 3)));
  ASSERT_EQ(started.size(), 200u);
  for (int position = 0; position < 200; ++position) {
    const int queued = started[static_cast<std::size_t>(position)] - 100;
    const auto before = started.begin() + position;
    const auto earlierStarted = std::count_if(started.begin(), before, [&](int other) { return other < queued + 100; });
    EXPECT_LE(queued - earlierStarted, 7) << "clip " << queued;
  }
}

}  // namespace
}  // namespace tq::test

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "Tools/Describe/Worklist.hpp"

namespace tq::describe {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;

class WorklistTest : public testing::Test {
 protected:
  /// A file that was last changed so many minutes after some moment.
  fs::path file(const std::string& name, int minute) const {
    const fs::path path = folder.write(name, "content");
    fs::last_write_time(path, start + std::chrono::minutes(minute));
    return path;
  }

  std::vector<std::string> workFor(const std::vector<fs::path>& inputs, bool again = false) {
    const Worklist work = makeWorklist(inputs, output, again);
    upToDate = work.upToDate;
    std::vector<std::string> names;
    for (const fs::path& clip : work.clips)
      names.push_back(clip.filename().string());
    return names;
  }

  test::TemporaryFolder folder;
  OutputConfig output;
  std::size_t upToDate = 0;
  const fs::file_time_type start = fs::file_time_type::clock::now() - std::chrono::hours(24);
};

TEST_F(WorklistTest, AStoppedRunGoesOnWhereItWas) {
  file("a.mp4", 1);
  file("a.description.json", 2);
  file("b.mp4", 1);
  EXPECT_THAT(workFor({folder.path()}), ElementsAre("b.mp4"));
  EXPECT_EQ(upToDate, 1U);
}

TEST_F(WorklistTest, AClipThatIsNewerThanItsDescriptionIsDoneAgain) {
  file("a.mp4", 3);
  file("a.description.json", 2);
  file("b.mp4", 2);
  file("b.description.json", 2);
  EXPECT_THAT(workFor({folder.path()}), ElementsAre("a.mp4"));
}

TEST_F(WorklistTest, AgainIsAgain) {
  file("a.mp4", 1);
  file("a.description.json", 2);
  EXPECT_THAT(workFor({folder.path()}, true), ElementsAre("a.mp4"));
  EXPECT_EQ(upToDate, 0U);
}

TEST_F(WorklistTest, AClipThatIsNamedItselfIsAlwaysDone) {
  const fs::path clip = file("a.mp4", 1);
  file("a.description.json", 2);
  file("b.mp4", 1);
  file("b.description.json", 2);
  EXPECT_THAT(workFor({folder.path(), clip.parent_path() / "." / "a.mp4"}), ElementsAre("a.mp4"));
  EXPECT_EQ(upToDate, 1U);
}

TEST_F(WorklistTest, DescriptionsAreLookedForWhereTheyAreWritten) {
  output.sidecarDirectory = folder / "out";
  file("clips/a.mp4", 1);
  file("clips/b.mp4", 1);
  file("clips/b.description.json", 2);
  file("out/a.description.json", 2);
  EXPECT_THAT(workFor({folder / "clips"}), ElementsAre("b.mp4"));
}

TEST_F(WorklistTest, ARunThatWritesMarkdownOnlyLooksForMarkdown) {
  output.format = OutputFormat::markdown;
  file("a.mp4", 1);
  file("a.description.md", 2);
  file("b.mp4", 1);
  file("b.description.json", 2);
  file("c.mp4", 3);
  file("c.description.md", 2);
  EXPECT_THAT(workFor({folder.path()}), ElementsAre("b.mp4", "c.mp4"));
}

TEST_F(WorklistTest, ARunOfBothIsDoneWithTheJSONWhichComesLast) {
  file("a.mp4", 1);
  file("a.description.md", 2);
  EXPECT_THAT(workFor({folder.path()}), ElementsAre("a.mp4"));
}

TEST_F(WorklistTest, WhatIsMissingIsNoWork) {
  EXPECT_THAT(workFor({folder / "gone.mp4"}), IsEmpty());
  EXPECT_EQ(upToDate, 0U);
}

}  // namespace
}  // namespace tq::describe

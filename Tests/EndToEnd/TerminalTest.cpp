#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/User.hpp"
#include "Support/Screen.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;

TEST(Terminal, KeepsOnlyWhatLasts) {
  User user;
  user.surroundings.terminalColumns = 200;
  for (const char* name : {"a.mp4", "b.mp4", "c.mp4"})
    user.addClip(name);
  fs::copy_file(smallClip("mkv"), user.clips() / "d.mkv");
  user.addFile("e.mp4", "no video");

  const Outcome outcome = user.describe({"."});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("sampling frames   a.mp4"));
  EXPECT_THAT(outcome.output, HasSubstr("0 of 5 clips described"));
  Screen screen(200);
  screen.print(outcome.output);
  const std::vector<std::string> lines = screen.lines();
  ASSERT_EQ(lines.size(), 4 * 4 + 1 + 1u);
  EXPECT_EQ(lines.back(), "4 of 5 clips described, 1 failed");
  std::string text;
  for (const std::string& line : lines)
    text += line + "\n";
  for (const char* name : {"a.mp4", "b.mp4", "c.mp4", "d.mkv"})
    EXPECT_THAT(text, HasSubstr(doneLines(user.clips() / name)));
  EXPECT_THAT(text, HasSubstr("failed     e.mp4: "));
}

TEST(Terminal, ANarrowOneIsLeftAsTidy) {
  User user;
  user.surroundings.terminalColumns = 30;
  user.addClip("a name that is longer than the line of this terminal.mp4");
  user.describe({"."});
  const Outcome outcome = user.describe({".", "--again"});
  Screen screen(30);
  screen.print(outcome.output);
  EXPECT_THAT(screen.lines(),
              ElementsAre("done       a name that is long", "er than the line of this termi",
                          "nal.mp4: its outputs exist and", " were left alone", "1 of 1 clip described"));
}

}  // namespace
}  // namespace tq::test

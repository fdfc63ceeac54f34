#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/User.hpp"
#include "Support/ClipMaker.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

TEST(Inputs, AFolderIsSearchedWithoutWhatIsHidden) {
  User user;
  user.addClip("trip/b.mp4");
  user.addClip("trip/a.mp4");
  user.addClip("trip/day two/c.mp4");
  user.addClip("trip/.hidden.mp4");
  user.addClip("trip/.cache/d.mp4");
  user.addFile("trip/notes.txt", "not a clip");
  const Outcome outcome = user.describe({"--jobs", "1", "trip"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "started    a.mp4\n" + doneLines(user.clips() / "trip/a.mp4") + "started    b.mp4\n" +
                                doneLines(user.clips() / "trip/b.mp4") + "started    c.mp4\n" +
                                doneLines(user.clips() / "trip/day two/c.mp4") + "3 of 3 clips described\n");
}

TEST(Inputs, AClipNamedTwiceIsDescribedOnce) {
  User user;
  const fs::path clip = user.addClip("a.mp4");
  const Outcome outcome = user.describe({"a.mp4", "./a.mp4", clip.string(), "."});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("1 of 1 clip described"));
}

TEST(Inputs, NamesMayHoldAnything) {
  const std::vector<std::string> names{"with blanks.mp4", "it's \"quoted\".mp4",  "-dash.mp4", "two\nlines.mp4",
                                       "🎬 наброски.mp4",  "a;b|c&d$e`f.mp4",      "100%s.mp4", "back\\slash.mp4",
                                       "dots...mp4",      "\x1b[31mred\u202e.mp4"};
  User user;
  for (const std::string& name : names)
    user.addClip(name);
  const Outcome outcome = user.describe({"."});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  for (const std::string& name : names) {
    const std::string stem = name.substr(0, name.size() - 4);
    EXPECT_EQ(readDescription(user.clips() / (stem + ".description.json")).source.filename, name);
    EXPECT_TRUE(fs::exists(user.clips() / (stem + ".description.md"))) << name;
    EXPECT_TRUE(fs::exists(user.clips() / (stem + ".description.jpg"))) << name;
  }
  EXPECT_THAT(outcome.output,
              AllOf(HasSubstr("done       two\\nlines.mp4\n"), Not(HasSubstr("\x1b")), Not(HasSubstr("\u202e"))));
}

TEST(Inputs, NamesMayHoldAnythingForTheToolsToo) {
  const std::vector<std::string> names{"-i.mkv", "two\nlines.mkv", "file:concat:x|y %03d.mkv", "it's \"q\" 🎬.mkv"};
  User user;
  for (const std::string& name : names)
    fs::copy_file(smallClip("mkv"), user.clips() / name);
  const Outcome outcome = user.describe({"--", "-i.mkv", names[1], names[2], names[3]});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  for (const std::string& name : names)
    EXPECT_EQ(readDescription(user.clips() / (name.substr(0, name.size() - 4) + ".description.json")).source.filename,
              name);
}

TEST(Inputs, ANameThatIsNoTextIsDescribedWithAReplacement) {
  User user;
  user.addClip("caf\xe9.mp4");
  const Outcome outcome = user.describe({"caf\xe9.mp4"});
  EXPECT_EQ(outcome.status, 0) << outcome.output;
  EXPECT_EQ(readDescription(user.clips() / "caf\xe9.description.json").source.filename, "caf\ufffd.mp4");
  EXPECT_THAT(outcome.output, HasSubstr("done       caf\ufffd.mp4\n"));
}

TEST(Inputs, ALeadingDashNeedsTwoDashesBefore) {
  User user;
  user.addClip("-dash.mp4");
  EXPECT_EQ(user.describe({"-dash.mp4"}).status, 2);
  EXPECT_EQ(user.describe({"--", "-dash.mp4"}).status, 0);
}

TEST(Inputs, ANameTooLongForItsOutputsFailsAndSaysSo) {
  User user;
  const std::string name = std::string(251, 'n') + ".mp4";
  user.addClip(name);
  const Outcome outcome = user.describe({name});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("failed     " + name));
  EXPECT_THAT(outcome.output, HasSubstr("File name too long\n"));
  EXPECT_THAT(namesIn(user.clips()), ElementsAre(name));
}

TEST(Inputs, TheLongestNameThatFitsIsDescribed) {
  User user;
  const std::string stem(255 - std::string(".description.json").size(), 'n');
  user.addClip(stem + ".mp4");
  EXPECT_EQ(user.describe({stem + ".mp4"}).status, 0);
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre(stem + ".mp4", stem + ".description.md",
                                                          stem + ".description.json", stem + ".description.jpg"));
}

TEST(Inputs, WhatIsMissingOrNoVideoIsNamedAndTheRestDescribed) {
  User user;
  user.addClip("a.mp4");
  user.addFile("notes.txt", "not a clip");
  user.addFile("README", "not a clip");
  const Outcome outcome = user.describe({"gone.mp4", "notes.txt", "README", "", "a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors,
            "tarquel-describe: File not found: gone.mp4\n"
            "tarquel-describe: Not a video file: notes.txt\n"
            "tarquel-describe: Not a video file: README\n"
            "tarquel-describe: File not found: \n");
  EXPECT_THAT(outcome.output, HasSubstr("1 of 1 clip described\n"));
  EXPECT_TRUE(fs::exists(user.clips() / "a.description.md"));
}

TEST(Inputs, AFolderWithoutClipsIsNoSuccess) {
  User user;
  const Outcome outcome = user.describe({"."});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "tarquel-describe: There is no video file to describe.\n");
}

TEST(Inputs, ALinkToAClipIsDescribedUnderItsOwnName) {
  User user;
  fs::create_symlink(user.addClip("real/a.mp4"), user.clips() / "link.mp4");
  fs::create_symlink("nowhere.mp4", user.clips() / "dangling.mp4");
  EXPECT_EQ(user.describe({"link.mp4"}).status, 0);
  EXPECT_TRUE(fs::exists(user.clips() / "link.description.md"));
  EXPECT_EQ(user.describe({"dangling.mp4"}).errors,
            "tarquel-describe: File not found: dangling.mp4\n"
            "tarquel-describe: There is no video file to describe.\n");
}

TEST(DamagedClips, FailBesideGoodOnes) {
  User user;
  user.addClip("good.mp4");
  Bytes half = readClip(smallClip("mkv"));
  half.resize(half.size() / 8);
  std::fill(half.begin(), half.begin() + 64, std::uint8_t{0});
  writeClip(user.clips() / "torn.mkv", half);
  user.addFile("empty.mp4", "");
  user.addFile("text.mp4", "I am no video.");
  user.addFile("text.mkv", "I am no video.");
  const Outcome outcome = user.describe({"."});
  EXPECT_EQ(outcome.status, 1);
  for (const char* name : {"torn.mkv", "empty.mp4", "text.mp4", "text.mkv"})
    EXPECT_THAT(outcome.output, HasSubstr("failed     " + std::string(name) + ": "));
  EXPECT_THAT(outcome.output, HasSubstr(doneLines(user.clips() / "good.mp4")));
  EXPECT_THAT(outcome.output, HasSubstr("1 of 5 clips described, 4 failed\n"));
  EXPECT_THAT(namesIn(user.clips()),
              UnorderedElementsAre("empty.mp4", "good.mp4", "text.mkv", "text.mp4", "torn.mkv", "good.description.md",
                                   "good.description.json", "good.description.jpg"));
}

TEST(DamagedClips, ATruncatedMovieFails) {
  User user;
  Bytes half = readClip(smallClip());
  half.resize(half.size() / 2);
  writeClip(user.clips() / "half.mp4", half);
  const Outcome outcome = user.describe({"half.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("failed     half.mp4: "));
}

TEST(DamagedClips, SoundWithoutAPictureFailsAndSaysSo) {
  const Arguments tone{"-f", "lavfi", "-i", "sine=frequency=440:duration=1"};
  User user;
  fs::copy_file(makeClip(tone, "mp4"), user.clips() / "tone.mp4");
  fs::copy_file(makeClip(tone, "mkv"), user.clips() / "sound.mkv");
  const Outcome outcome = user.describe({"."});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("failed     tone.mp4: Frame extraction failed: No video track in tone.mp4\n"));
  EXPECT_THAT(outcome.output,
              HasSubstr("failed     sound.mkv: Frame extraction failed: no video stream in sound.mkv\n"));
}

}  // namespace
}  // namespace tq::test

#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "EndToEnd/User.hpp"
#include "TQPersistence/Settings.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::StartsWith;
using testing::UnorderedElementsAre;

TEST(CommandLine, HelpExplainsAndSucceeds) {
  User user;
  const Outcome outcome = user.run({"--help"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, StartsWith("Usage: tarquel-describe [OPTION...] CLIP|FOLDER...\n"));
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(user.run({"-h", "clip.mp4"}).output, outcome.output);
}

TEST(CommandLine, VersionIsOneLine) {
  User user;
  const Outcome outcome = user.run({"--version"});
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, testing::MatchesRegex("tarquel-describe [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

TEST(CommandLine, WithoutInputsSaysWhatIsMissing) {
  User user;
  const Outcome outcome = user.run({});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "tarquel-describe: Name at least one clip or folder; --help tells more.\n");
}

TEST(CommandLine, AnUnknownOptionStopsEverything) {
  User user;
  user.addClip("a.mp4");
  const Outcome outcome = user.describe({"a.mp4", "--fast"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.errors, "tarquel-describe: There is no option --fast; --help lists them.\n");
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4"));
}

TEST(CommandLine, AHostileOptionStaysText) {
  User user;
  EXPECT_EQ(user.run({"--\x1b[2J\n"}).errors,
            "tarquel-describe: There is no option --\\x1b[2J\\n; --help lists them.\n");
}

TEST(CommandLine, FormatChoosesTheSidecars) {
  User user;
  user.addClip("a.mp4");
  EXPECT_EQ(user.describe({"--format", "json", "a.mp4"}).status, 0);
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4", "a.description.json", "a.description.jpg"));
  user.addClip("b.mp4");
  EXPECT_EQ(user.describe({"--format=markdown", "b.mp4"}).status, 0);
  EXPECT_TRUE(fs::exists(user.clips() / "b.description.md"));
  EXPECT_FALSE(fs::exists(user.clips() / "b.description.json"));
}

TEST(CommandLine, TheOutputFolderIsMadeAndTakesEverything) {
  User user;
  user.addClip("in/a.mp4");
  user.addClip("in/deeper/b.mp4");
  const Outcome outcome = user.describe({"--output-dir", "out/of/here", "in"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(namesIn(user.clips() / "out/of/here"),
              UnorderedElementsAre("a.description.md", "a.description.json", "a.description.jpg", "b.description.md",
                                   "b.description.json", "b.description.jpg"));
  EXPECT_THAT(namesIn(user.clips() / "in"), UnorderedElementsAre("a.mp4", "deeper"));
  EXPECT_THAT(outcome.output, HasSubstr("  wrote    " + (user.clips() / "out/of/here/a.description.md").string()));
}

TEST(CommandLine, WithoutAKeyTheClipFailsAndSaysSo) {
  User user;
  user.addClip("a.mp4");
  const Outcome outcome = user.run({"a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("failed     a.mp4: API key for anthropic is not configured."));
  EXPECT_THAT(namesIn(user.clips()), UnorderedElementsAre("a.mp4"));
}

TEST(Settings, ThoseOfTheDesktopApplicationAreUsed) {
  User user;
  user.addClip("a.mp4");
  AppSettings settings;
  settings.providerId = "mock";
  settings.output.format = OutputFormat::json;
  settings.sampling.strategy = SamplingStrategy::evenDistribution;
  settings.sampling.evenFrameCount = 3;
  fs::create_directories(user.privateFolder());
  SettingsStore(user.privateFolder() / "settings.json").save(settings);

  EXPECT_EQ(user.run({"a.mp4"}).status, 0);

  EXPECT_FALSE(fs::exists(user.clips() / "a.description.md"));
  EXPECT_EQ(readDescription(user.clips() / "a.description.json").shots.size(), 3u);
}

TEST(Settings, OptionsWinOverThem) {
  User user;
  user.addClip("a.mp4");
  user.addFile("s.json", R"({"providerId": "mock", "output": {"format": "json", "conflictPolicy": "suffix"}})");
  EXPECT_EQ(user.run({"--settings", "s.json", "--format", "markdown", "a.mp4"}).status, 0);
  EXPECT_TRUE(fs::exists(user.clips() / "a.description.md"));
  EXPECT_FALSE(fs::exists(user.clips() / "a.description.json"));
}

TEST(Settings, ANamedFileReplacesThoseOfTheDesktopApplication) {
  User user;
  user.addClip("a.mp4");
  fs::create_directories(user.privateFolder());
  SettingsStore(user.privateFolder() / "settings.json").save({});
  AppSettings named;
  named.providerId = "mock";
  SettingsStore(user.clips() / "mine.json").save(named);
  EXPECT_EQ(user.run({"--settings", "mine.json", "a.mp4"}).status, 0);
}

TEST(Settings, ANamedFileThatIsMissingStopsEverything) {
  User user;
  user.addClip("a.mp4");
  const Outcome outcome = user.describe({"--settings", "none.json", "a.mp4"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "tarquel-describe: File not found: none.json\n");
  EXPECT_EQ(outcome.output, "");
}

TEST(Settings, ANamedFileThatIsBrokenStopsEverything) {
  User user;
  user.addClip("a.mp4");
  user.addFile("broken.json", "{\"providerId\": ");
  user.addFile("wrong.json", R"({"maxConcurrentJobs": "two"})");
  const Outcome broken = user.describe({"--settings", "broken.json", "a.mp4"});
  EXPECT_EQ(broken.status, 1);
  EXPECT_THAT(broken.errors, StartsWith("tarquel-describe: broken.json: "));
  const Outcome wrong = user.describe({"--settings", "wrong.json", "a.mp4"});
  EXPECT_EQ(wrong.status, 1);
  EXPECT_EQ(wrong.errors, "tarquel-describe: wrong.json: maxConcurrentJobs: expected a whole number, found text\n");
  EXPECT_FALSE(fs::exists(user.clips() / "a.description.md"));
}

TEST(Settings, BrokenOnesOfTheDesktopApplicationCountAsDefaults) {
  User user;
  user.addClip("a.mp4");
  fs::create_directories(user.privateFolder());
  std::ofstream(user.privateFolder() / "settings.json") << "{";
  EXPECT_EQ(user.describe({"a.mp4"}).status, 0);
  EXPECT_EQ(contentOf(user.privateFolder() / "settings.json"), "{") << "a user may still mend it";
}

}  // namespace
}  // namespace tq::test

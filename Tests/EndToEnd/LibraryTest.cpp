#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include "EndToEnd/User.hpp"
#include "Support/HeldFile.hpp"
#include "Support/ScriptedServer.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

/// Writes the description of a clip in the user's folder.
void addDescription(const User& user, const std::string& filename, const std::string& line) {
  DescriptionResult result;
  result.source = {.filename = filename, .durationSeconds = 2, .frameRate = 25};
  result.global.overallSummaryOneLine = line;
  user.addFile(fs::path(filename).stem().string() + ".description.json", writeJSON(encode(result), JSONLayout::pretty));
}

Surroundings atTheLibrary(const User& user) {
  Surroundings surroundings = user.surroundings;
  surroundings.program = TQ_LIBRARY_PROGRAM;
  return surroundings;
}

TEST(LibraryProgram, WorksOnWhatTheOtherProgramWrote) {
  User user;
  user.addClip("a.mp4");
  fs::create_directory(user.clips() / "below");
  user.addClip("below/b.mp4");
  ASSERT_EQ(user.describe({"."}).status, 0);

  const Outcome listed = user.runLibrary({"search", ".", "--recursive"});
  EXPECT_EQ(listed.status, 0);
  EXPECT_THAT(listed.output, StartsWith("\ta.mp4\t0:01\t\t"));
  EXPECT_THAT(listed.output, HasSubstr("\n\tbelow/b.mp4\t0:01\t\t"));
  EXPECT_EQ(listed.errors, "2 clips · 0 flagged · 0 need review\n");

  EXPECT_EQ(user.runLibrary({"facets", "."}).status, 0);
  EXPECT_EQ(user.runLibrary({"index", "."}).output, "Wrote _INDEX.json and _INDEX.md\n");
  EXPECT_TRUE(fs::exists(user.clips() / "_INDEX.md"));

  const Outcome exported = user.runLibrary({"export", ".", "--fcpxml", "cut.fcpxml", "--csv", "cut.csv"});
  EXPECT_EQ(exported.status, 0) << exported.errors;
  EXPECT_THAT(contentOf(user.clips() / "cut.fcpxml"),
              HasSubstr("src=\"file://" + (user.clips() / "a.mp4").string() + "\""));

  const Outcome trimmed = user.runLibrary({"trim", ".", "--into", "cuts"});
  EXPECT_EQ(trimmed.status, 0) << trimmed.errors;
  EXPECT_THAT(trimmed.output, StartsWith("Trimmed "));
  EXPECT_THAT(namesIn(user.clips() / "cuts"), testing::Contains("a_00.mp4"));
  EXPECT_EQ(user.runLibrary({"rerate", "."}).errors,
            "tarquel-library: No re-ratable clips found (source videos missing?).\n");
}

TEST(LibraryProgram, HelpAndVersionAreNoWork) {
  User user;
  const Outcome help = user.runLibrary({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.output, StartsWith("Usage: tarquel-library COMMAND FOLDER"));
  EXPECT_THAT(user.runLibrary({"--version"}).output, testing::MatchesRegex("tarquel-library [0-9.]+\n"));
  EXPECT_FALSE(fs::exists(user.privateFolder()));
}

TEST(LibraryProgram, AClosedPipeIsAQuietEnd) {
  User user;
  addDescription(user, "a.mp4", "A boat.");
  user.surroundings.outputIsAbandoned = true;
  const Outcome outcome = user.runLibrary({"search", ".", "boat"});
  EXPECT_EQ(outcome.status, 128 + SIGPIPE);
  EXPECT_THAT(outcome.errors, testing::Not(HasSubstr("tarquel-library:")));
  EXPECT_EQ(user.runLibrary({"--help"}).status, 128 + SIGPIPE);
}

TEST(LibraryProgram, AWrongCommandLineHasAStatusOfItsOwn) {
  User user;
  const Outcome outcome = user.runLibrary({"find", "."});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors,
            "tarquel-library: There is no command \"find\", only search, facets, index, export, trim or rerate.\n");
}

TEST(LibraryProgram, AFolderThatIsMissingIsAFailure) {
  User user;
  const Outcome outcome = user.runLibrary({"search", "no\nwhere"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "tarquel-library: File not found: no\\nwhere\n");
}

TEST(LibraryProgram, OnATerminalTheListIsAligned) {
  User user;
  addDescription(user, "a.mov", "A calm sea.");
  addDescription(user, "long.mov", "A street by the sea, and people.");
  user.surroundings.terminalColumns = 40;
  const Outcome outcome = user.runLibrary({"search", ".", "sea"});
  EXPECT_EQ(outcome.output,
            "100%  a.mov     0:02  A calm sea.\r\n"
            "100%  long.mov  0:02  A street by the …\r\n");
}

TEST(LibraryProgram, AFullDiskLeavesTheOlderExport) {
  User user;
  addDescription(user, "a.mov", "A calm sea.");
  user.addFile("cut.csv", "older");
  user.surroundings.largestFile = 10;
  const Outcome outcome = user.runLibrary({"export", ".", "--csv", "cut.csv"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.errors, "tarquel-library: Export failed: cut.csv: File too large\n");
  EXPECT_EQ(contentOf(user.clips() / "cut.csv"), "older");
}

TEST(LibraryProgram, AnInterruptEndsATrimAndItsTool) {
  User user;
  const HeldFile slow(user.clips() / "slow.mkv");
  addDescription(user, "slow.mkv", "Slow.");
  RunningProgram program({"trim", ".", "--into", "cuts"}, atTheLibrary(user));
  program.waitForChild();
  program.signal(SIGINT);
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "Trimming 1 clip…\ntarquel-library: Cancelled.\n");
  EXPECT_THAT(namesIn(user.clips() / "cuts"), IsEmpty());
}

TEST(LibraryProgram, ASemanticSearchAsksTheServerWithTheKeyOfTheSecretsFile) {
  User user;
  addDescription(user, "a.mov", "People around a campfire.");
  addDescription(user, "b.mov", "An empty motorway.");
  fs::create_directories(user.privateFolder());
  std::ofstream(user.privateFolder() / "secrets.json")
      << R"({"version": 1, "secrets": {"embedding.api_key": "sk-secret"}})";
  ScriptedServer server;
  server.reply(
      ServerReply::answer(200, R"({"data": [{"index": 1, "embedding": [0, 1]}, {"index": 0, "embedding": [1, 0]}]})"));
  server.reply(ServerReply::answer(200, R"({"data": [{"index": 0, "embedding": [1, 0.1]}]})"));
  const Outcome outcome = user.runLibrary({"search", ".", "cooking outdoors", "--semantic", "--embedder", "openai",
                                           "--base-url", server.url("/v1"), "--model", "m"});
  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_EQ(outcome.output, "100%\ta.mov\t0:02\t\tPeople around a campfire.\n");
  ASSERT_THAT(server.requests(), SizeIs(2));
  for (const ServerRequest& request : server.requests()) {
    EXPECT_EQ(request.methodAndTarget(), "POST /v1/embeddings");
    EXPECT_EQ(request.header("authorization"), "Bearer sk-secret");
  }
  EXPECT_THAT(outcome.output + outcome.errors, testing::Not(HasSubstr("sk-secret")));
}

TEST(LibraryProgram, AnInterruptEndsASemanticSearchAtOnce) {
  User user;
  addDescription(user, "a.mov", "People around a campfire.");
  ScriptedServer server;
  server.reply(ServerReply().stall());
  RunningProgram program({"search", ".", "fire", "--semantic", "--base-url", server.url()}, atTheLibrary(user));
  server.waitForStalls();
  program.signal(SIGINT);
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(outcome.errors, "tarquel-library: Cancelled.\n");
}

}  // namespace
}  // namespace tq::test

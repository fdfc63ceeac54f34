#include <cerrno>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "EndToEnd/User.hpp"
#include "Support/HeldFile.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

/// A user with a clip that takes as long as the test wants: the tool that looks at it first waits until the test lets
/// it open the file.
class Interrupt : public testing::Test {
 protected:
  /// The program at work on the slow clip, with those that come before and after it.
  RunningProgram& start(const Arguments& after = {}, const Arguments& before = {}) {
    Arguments arguments{"--provider", "mock", "--jobs", "1"};
    arguments.insert(arguments.end(), before.begin(), before.end());
    arguments.push_back("slow.mkv");
    arguments.insert(arguments.end(), after.begin(), after.end());
    program_ = std::make_unique<RunningProgram>(arguments, user.surroundings);
    program_->waitForChild();
    return *program_;
  }

  void letTheToolEnd() { slow_.release(); }

  User user;

 private:
  HeldFile slow_{user.clips() / "slow.mkv"};
  std::unique_ptr<RunningProgram> program_;
};

TEST_F(Interrupt, AClosedPipeCancelsWithoutAWord) {
  user.surroundings.outputIsAbandoned = true;
  user.addClip("next.mp4");
  RunningProgram& program = start({"next.mp4"});
  letTheToolEnd();
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 128 + SIGPIPE);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_FALSE(std::filesystem::exists(user.clips() / "next.description.json"));
}

TEST_F(Interrupt, TheFirstOneCancelsAndWaitsForTheTool) {
  user.addClip("next.mp4");
  RunningProgram& program = start({"next.mp4"});
  program.signal(SIGINT);
  program.waitForOutput("cancelled  slow.mkv\n");
  EXPECT_THAT(program.children(), SizeIs(1)) << "it is still waited for";
  letTheToolEnd();
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_EQ(outcome.output,
            "started    slow.mkv\n"
            "Cancelling. Ctrl-C again leaves at once.\n"
            "cancelled  slow.mkv\n"
            "0 of 2 clips described, 2 cancelled\n");
  EXPECT_EQ(outcome.errors, "");
  EXPECT_THAT(namesIn(user.clips()), ElementsAre("next.mp4", "slow.mkv"));
}

TEST_F(Interrupt, TheSecondOneLeavesAtOnceAndTakesTheToolAlong) {
  // An orphan becomes a child of this process, which can then tell for certain how it ended.
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
  RunningProgram& program = start();
  const std::vector<pid_t> tools = program.children();
  ASSERT_THAT(tools, SizeIs(1));
  program.signal(SIGINT);
  program.waitForOutput("cancelled  slow.mkv\n");
  program.signal(SIGINT);
  EXPECT_EQ(program.finish().status, 130);
  // The file is still held, so a tool that is gone was killed, and the program took note of it before it left.
  const bool isGone = ::kill(tools[0], 0) == -1 && errno == ESRCH;
  letTheToolEnd();  // if it was not killed, it ends by itself now
  if (!isGone) {
    int status = 0;
    EXPECT_EQ(::waitpid(tools[0], &status, 0), tools[0]);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
  }
  ASSERT_EQ(::prctl(PR_SET_CHILD_SUBREAPER, 0), 0);
}

TEST_F(Interrupt, SIGTERMAndAClosedTerminalCancelToo) {
  for (const int number : {SIGTERM, SIGHUP}) {
    RunningProgram& program = start();
    program.signal(number);
    program.waitForOutput("cancelled  slow.mkv\n");
    letTheToolEnd();
    EXPECT_EQ(program.finish().status, 130);
  }
}

TEST_F(Interrupt, WhatWasDoneBeforeStays) {
  user.addClip("a.mp4");
  RunningProgram& program = start({}, {"a.mp4"});
  program.signal(SIGINT);
  program.waitForOutput("cancelled  slow.mkv\n");
  letTheToolEnd();
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 130);
  EXPECT_THAT(outcome.output, HasSubstr(doneLines(user.clips() / "a.mp4")));
  EXPECT_THAT(outcome.output, HasSubstr("1 of 2 clips described, 1 cancelled\n"));
  EXPECT_EQ(readDescription(user.clips() / "a.description.json").source.filename, "a.mp4");
}

TEST(KilledRun, GoesOnWhereItWasWhenItIsStartedAgain) {
  constexpr int clipCount = 40;
  constexpr int kills = 8;
  User user;
  const std::filesystem::path original = user.addClip("clips/100.mp4");
  for (int number = 101; number < 100 + clipCount; ++number)
    std::filesystem::create_hard_link(original, original.parent_path() / (std::to_string(number) + ".mp4"));
  const auto describedCount = [&] {
    int count = 0;
    for (const std::string& name : namesIn(original.parent_path())) {
      if (!name.ends_with(".json")) continue;
      readDescription(original.parent_path() / name);  // throws when it is not whole
      ++count;
    }
    return count;
  };

  for (int kill = 1; kill <= kills; ++kill) {
    RunningProgram program({"--provider", "mock", "--jobs", "3", "clips"}, user.surroundings);
    program.waitForOutput("started    " + std::to_string(100 + kill * clipCount / (kills + 1)));
    program.signal(SIGKILL);
    EXPECT_EQ(program.finish().status, 128 + SIGKILL);
  }
  const int before = describedCount();
  EXPECT_GT(before, 0);
  const Outcome last = user.describe({"clips"});
  EXPECT_EQ(last.status, 0);
  EXPECT_THAT(last.output, StartsWith(std::to_string(before) + " clips are up to date and left alone"));
  const std::string rest = std::to_string(clipCount - before);
  EXPECT_THAT(last.output, HasSubstr("\n" + rest + " of " + rest + " clips described\n"));
  EXPECT_EQ(describedCount(), clipCount);
  EXPECT_EQ(namesIn(original.parent_path()).size(), 4U * clipCount) << "nothing is left over";
}

TEST(Watching, GoesOnWithWhatComesInUntilItIsInterrupted) {
  User user;
  user.addClip("incoming/old.mp4");
  user.addClip("elsewhere.mp4");
  RunningProgram program({"--provider", "mock", "--watch", "incoming"}, user.surroundings);
  program.waitForOutput("Watching 1 folder; Ctrl-C ends.\n");
  program.waitForOutput(doneLines(user.clips() / "incoming/old.mp4"));
  const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(1);
  std::filesystem::last_write_time(user.clips() / "elsewhere.mp4", longAgo);
  std::filesystem::rename(user.clips() / "elsewhere.mp4", user.clips() / "incoming/new.mp4");
  program.waitForOutput(doneLines(user.clips() / "incoming/new.mp4"));
  program.signal(SIGINT);
  const Outcome outcome = program.finish();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr("2 of 2 clips described\n"));
}

TEST(Watching, NeedsAFolder) {
  User user;
  user.addClip("a.mp4");
  const Outcome outcome = user.describe({"--watch", "a.mp4"});
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.errors, HasSubstr("--watch needs a folder."));
}

}  // namespace
}  // namespace tq::test

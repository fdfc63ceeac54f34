#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Support/FakeTool.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/FileSystem/Descriptor.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr ChildLimits plenty{.time = Seconds(60)};
constexpr ChildLimits shortTime{.time = Seconds(0.2), .grace = Seconds(60)};
constexpr ChildLimits shortAll{.time = Seconds(0.2), .grace = Seconds(0.1)};

ChildResult runScript(std::string_view body, const ChildLimits& limits = plenty,
                      const std::vector<std::string>& arguments = {}) {
  const TemporaryFolder folder;
  return runChild(writeTool(folder, "tool", body), arguments, limits);
}

std::size_t openDescriptors() {
  return static_cast<std::size_t>(std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator()));
}

/// The signals 1 to 31 of a line of /proc/<pid>/status, one bit each; those above are the C library's own.
unsigned long signalsIn(std::string_view status, std::string_view line) {
  const std::size_t start = status.find(line);
  if (start == std::string_view::npos) throw std::runtime_error("no such line");
  return std::stoul(std::string(status.substr(start + line.size() + 1, 16)), nullptr, 16) & 0x7FFFFFFF;
}

/// A named pipe that tells when the last process that holds its other end is gone.
class LifeLine {
 public:
  explicit LifeLine(const fs::path& path) {
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    end_ = Descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  }

  /// Waits for a first byte from the other side.
  bool spoke() const { return waitFor(POLLIN); }

  /// Waits until nobody holds the other side.
  bool cut() const { return waitFor(POLLHUP); }

 private:
  bool waitFor(short event) const {
    pollfd entry{end_.get(), event, 0};
    return ::poll(&entry, 1, 20'000) == 1 && (entry.revents & event) != 0;
  }

  Descriptor end_;
};

TEST(RunChild, CollectsStandardOutput) {
  const ChildResult result = runScript("printf 'one\\0two'");
  EXPECT_EQ(textOf(result.output), std::string_view("one\0two", 7));
  EXPECT_EQ(result.status, 0);
  EXPECT_FALSE(result.timedOut);
}

TEST(RunChild, GivesTheExitStatus) {
  EXPECT_EQ(runScript("exit 69").status, 69);
}

TEST(RunChild, GivesTheNumberOfTheSignalThatEndedIt) {
  const ChildResult result = runScript("kill -9 $$");
  EXPECT_EQ(result.status, SIGKILL);
  EXPECT_FALSE(result.timedOut);
}

TEST(RunChild, PassesArgumentsAsTheyAre) {
  const ChildResult result = runScript("for each; do printf '<%s>' \"$each\"; done", plenty,
                                       {"-v", "", "two words", "*", "$HOME", "line\nbreak", "quote'\""});
  EXPECT_EQ(textOf(result.output), "<-v><><two words><*><$HOME><line\nbreak><quote'\">");
}

TEST(RunChild, MegabytesOfErrorsDoNotBlockIt) {
  const ChildResult result = runScript("head -c 8000000 /dev/zero >&2; echo done");
  EXPECT_EQ(textOf(result.output), "done\n");
}

TEST(RunChild, MegabytesOfOutputArriveWhole) {
  const ChildResult result = runScript("head -c 8000000 /dev/zero >&2 & head -c 20000000 /dev/zero; wait");
  EXPECT_EQ(result.output, Bytes(20'000'000, 0));
}

TEST(RunChild, ItsStandardInputIsEmpty) {
  const ChildResult result = runScript("cat; echo end");
  EXPECT_EQ(textOf(result.output), "end\n");
}

TEST(RunChild, ItLeadsAGroupOfItsOwn) {
  const ChildResult result = runScript("test $$ = $(cut -d' ' -f5 /proc/$$/stat) && echo leader");
  EXPECT_EQ(textOf(result.output), "leader\n");
}

TEST(RunChild, NoOtherDescriptorReachesIt) {
  const Descriptor inheritable(::fcntl(STDERR_FILENO, F_DUPFD, 77));
  ASSERT_TRUE(inheritable);
  const ChildResult result =
      runScript("test -e /proc/$$/fd/$1 && echo leaked; true", plenty, {std::to_string(inheritable.get())});
  EXPECT_EQ(textOf(result.output), "");
}

TEST(RunChild, SignalsStandAtTheirDefaultsInIt) {
  sigset_t blocked, before;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGUSR1);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
  const auto handler = ::signal(SIGPIPE, SIG_IGN);
  const ChildResult result = runChild("/bin/cat", {"/proc/self/status"}, plenty);
  ::signal(SIGPIPE, handler);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  EXPECT_EQ(signalsIn(textOf(result.output), "SigBlk:"), 0u);
  EXPECT_EQ(signalsIn(textOf(result.output), "SigIgn:"), 0u);
}

TEST(RunChild, AtTheLimitItIsAskedToEnd) {
  const TemporaryFolder folder;
  const fs::path tool = writeTool(folder, "tool", "trap 'echo bye >$1; exit 0' TERM; sleep 600 & wait");
  const auto start = steady_clock::now();
  const ChildResult result = runChild(tool, {(folder / "note").string()}, shortTime);
  EXPECT_TRUE(result.timedOut);
  EXPECT_EQ(contentOf(folder / "note"), "bye\n");
  EXPECT_LT(steady_clock::now() - start, Seconds(30)) << "the grace is not waited for";
}

TEST(RunChild, ItIsKilledWhenItIgnoresTheRequest) {
  const auto start = steady_clock::now();
  const ChildResult result = runScript("trap '' TERM; sleep 600", shortAll);
  const Seconds took = steady_clock::now() - start;
  EXPECT_TRUE(result.timedOut);
  EXPECT_GE(took, shortAll.time + shortAll.grace);
  EXPECT_LT(took, Seconds(30));
}

TEST(RunChild, OutputOfAGrandchildCountsWhenItEndsInTime) {
  const ChildResult result = runScript("(sleep 0.1; echo late) & exit 3");
  EXPECT_EQ(textOf(result.output), "late\n");
  EXPECT_EQ(result.status, 3);
  EXPECT_FALSE(result.timedOut);
}

TEST(RunChild, AGrandchildThatHoldsThePipesEndsWithTheLimit) {
  const TemporaryFolder folder;
  const LifeLine grandchild(folder / "fifo");
  const fs::path tool = writeTool(folder, "tool", "sleep 600 3>$1 & exit 0");
  const auto start = steady_clock::now();
  EXPECT_TRUE(runChild(tool, {(folder / "fifo").string()}, shortTime).timedOut);
  EXPECT_LT(steady_clock::now() - start, Seconds(30));
  EXPECT_TRUE(grandchild.cut());
}

TEST(RunChild, AGrandchildThatIgnoresTheRequestIsKilledToo) {
  const TemporaryFolder folder;
  const LifeLine grandchild(folder / "fifo");
  const fs::path tool = writeTool(folder, "tool", "trap '' TERM; sleep 600 3>$1 & exit 0");
  EXPECT_TRUE(runChild(tool, {(folder / "fifo").string()}, shortAll).timedOut);
  EXPECT_TRUE(grandchild.cut());
}

TEST(RunChild, AfterATimeOutNobodyOfTheGroupIsLeft) {
  const TemporaryFolder folder;
  const LifeLine grandchild(folder / "fifo");
  // The grandchild has let go of the pipes and outlives its parent, which ends at the first request.
  const fs::path tool = writeTool(folder, "tool",
                                  "(trap '' TERM; echo >&3; exec sleep 600) 3>$1 >/dev/null 2>&1 &\n"
                                  "exec sleep 600");
  EXPECT_TRUE(runChild(tool, {(folder / "fifo").string()}, shortTime).timedOut);
  EXPECT_TRUE(grandchild.cut());
}

TEST(RunChild, AGrandchildThatLeftTheGroupCannotKeepTheCallWaiting) {
  const auto start = steady_clock::now();
  EXPECT_TRUE(runScript("setsid sleep 20 & exit 0", shortAll).timedOut);
  EXPECT_LT(steady_clock::now() - start, Seconds(15));
}

TEST(RunChild, AChildThatWentOverToAnotherGroupIsKilledToo) {
  const auto start = steady_clock::now();
  EXPECT_TRUE(runScript("exec perl -e 'setpgrp(0, getpgrp(getppid())) or exit 9; sleep 20'", shortAll).timedOut);
  EXPECT_LT(steady_clock::now() - start, Seconds(15));
}

TEST(RunChild, MoreOutputThanAllowedEndsItLikeATimeOut) {
  const ChildResult result = runScript("yes", {.time = Seconds(600), .grace = Seconds(60), .outputBytes = 100'000});
  EXPECT_TRUE(result.timedOut);
}

TEST(RunChild, ExactlyTheAllowedOutputIsFine) {
  const ChildResult result = runScript("head -c 1000 /dev/zero", {.time = Seconds(60), .outputBytes = 1000});
  EXPECT_FALSE(result.timedOut);
  EXPECT_EQ(result.output.size(), 1000u);
}

TEST(RunChild, ItsMemoryIsLimited) {
  const auto size = [](const char* limit) {
    return "until grep -q 'Max data size *" + std::string(limit) + " ' /proc/self/limits; do :; done\n";
  };
  const std::string allocate = "dd if=/dev/zero of=/dev/null bs=64M count=1 2>/dev/null";
  ChildLimits limits = plenty;
  EXPECT_EQ(runScript(size("8589934592") + allocate, limits).status, 0);
  limits.memoryBytes = std::size_t{32} << 20;
  EXPECT_EQ(runScript(size("33554432") + allocate, limits).status, 1);
}

TEST(RunChild, NoTimeLimitIsALimitToo) {
  const ChildResult result = runScript("echo x", {.time = Seconds(std::numeric_limits<double>::infinity())});
  EXPECT_EQ(textOf(result.output), "x\n");
}

TEST(RunChild, AProgramThatCannotBeLaunchedIsAnErrorThatNamesIt) {
  const TemporaryFolder folder;
  folder.write("text", "no program");
  const auto failure = [&](std::string_view name) -> std::string {
    try {
      runChild(folder / name, {}, plenty);
    } catch (const SystemError& error) {
      return error.what();
    }
    return "launched";
  };
  EXPECT_EQ(failure("missing"), "missing: No such file or directory");
  EXPECT_EQ(failure("text"), "text: Permission denied");
}

TEST(RunChild, LeavesNoZombieAndNoDescriptor) {
  const std::size_t before = openDescriptors();
  runScript("true");
  runScript("kill -9 $$");
  runScript("trap '' TERM; sleep 600", shortAll);
  EXPECT_THROW(runChild("/nowhere/tool", {}, plenty), SystemError);
  EXPECT_EQ(openDescriptors(), before);
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was not reaped";
  EXPECT_EQ(errno, ECHILD);
}

TEST(RunChild, ManyAtOnceKeepTheirOutputApart) {
  const TemporaryFolder folder;
  const fs::path tool = writeTool(folder, "tool", "echo $1; echo $1 >&2");
  std::atomic<int> wrong = 0;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 8; ++thread)
      threads.emplace_back([&, thread] {
        for (int round = 0; round < 10; ++round) {
          const std::string word = std::to_string(thread * 100 + round);
          if (textOf(runChild(tool, {word}, plenty).output) != word + "\n") ++wrong;
        }
      });
  }
  EXPECT_EQ(wrong, 0);
}

TEST(RunChild, WorksInAProgramWithoutStandardDescriptors) {
  const TemporaryFolder folder;
  const fs::path tool = writeTool(folder, "tool", "echo out; echo error >&2");
  EXPECT_EXIT(
      {
        for (int descriptor = 0; descriptor <= 2; ++descriptor)
          ::close(descriptor);
        ::_exit(textOf(runChild(tool, {}, plenty).output) == "out\n" ? 0 : 1);
      },
      testing::ExitedWithCode(0), "");
}

TEST(KillRunningChildren, EndsThemAndTheirGrandchildrenAtOnce) {
  const TemporaryFolder folder;
  const LifeLine line(folder / "fifo");
  const fs::path tool = writeTool(folder, "tool", "exec 3>$1; trap '' TERM; sleep 600 & echo >&3; wait");
  ChildResult result;
  std::jthread thread([&] { result = runChild(tool, {(folder / "fifo").string()}, {.time = Seconds(600)}); });
  ASSERT_TRUE(line.spoke());
  killRunningChildren();
  thread.join();
  EXPECT_EQ(result.status, SIGKILL);
  EXPECT_FALSE(result.timedOut);
  EXPECT_TRUE(line.cut());
}

TEST(KillRunningChildren, WithoutChildrenNothingHappens) {
  killRunningChildren();
}

}  // namespace
}  // namespace tq::test

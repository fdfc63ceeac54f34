#include <atomic>
#include <cerrno>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "Support/Faults/FileFaults.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

std::string temporaryName(const std::string& process, const std::string& random = "0123456789abcdef") {
  return ".tarquel-" + process + "-" + random + ".tmp";
}

/// A process that is writing a file in `folder` until it is killed.
class Writer {
 public:
  explicit Writer(const fs::path& folder) {
    int ready[2];
    if (::pipe(ready) != 0) throw std::runtime_error("no pipe");
    process_ = ::fork();
    if (process_ == 0) {
      const Descriptor open(::open(folder.c_str(), O_RDONLY | O_DIRECTORY));
      TemporaryFile file(open.get(), folder / "a", 0600, ModeFailure::isAnError);
      file.write(viewOf("half of"));
      if (::write(ready[1], "r", 1) == 1)
        while (true)
          ::pause();
      ::_exit(1);
    }
    ::close(ready[1]);
    char byte = 0;
    const ssize_t count = ::read(ready[0], &byte, 1);
    ::close(ready[0]);
    if (count != 1) throw std::runtime_error("the writer did not start");
  }

  ~Writer() { kill(); }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  void kill() {
    if (process_ <= 0) return;
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, 0);
    process_ = 0;
  }

 private:
  pid_t process_ = 0;
};

class AbandonedTemporaries : public testing::Test {
 protected:
  Names namesAfterCleanUp() const {
    removeAbandonedTemporaries(folder.path());
    return namesIn(folder.path());
  }

  TemporaryFolder folder;
};

TEST_F(AbandonedTemporaries, OfDeadRunsAreRemovedAndNothingElse) {
  folder.write(temporaryName("99999999"), "half");
  folder.write(temporaryName("99999998", "fedcba9876543210"), "");
  fs::permissions(folder.write(temporaryName("99999997"), "half"), fs::perms(0400));
  folder.write("clip.description.md", "kept");
  EXPECT_EQ(namesAfterCleanUp(), Names{"clip.description.md"});
}

TEST_F(AbandonedTemporaries, AreKnownByTheirLockAndNotByTheNumberInTheName) {
  folder.write(temporaryName(std::to_string(::getpid())), "of a run that had this number before");
  folder.write(temporaryName("1"), "of a run whose number is another program's now");
  EXPECT_EQ(namesAfterCleanUp(), Names{});
}

TEST_F(AbandonedTemporaries, AreNotWhatThisProcessIsWriting) {
  const Descriptor open(::open(folder.path().c_str(), O_RDONLY | O_DIRECTORY));
  TemporaryFile file(open.get(), folder / "a", std::nullopt, ModeFailure::isAnError);
  file.write(viewOf("whole"));
  EXPECT_EQ(namesAfterCleanUp().size(), 1u);
  std::jthread([&] { removeAbandonedTemporaries(folder.path()); }).join();
  file.putInPlace();
  EXPECT_EQ(namesAfterCleanUp(), Names{"a"});
  EXPECT_EQ(contentOf(folder / "a"), "whole");
}

TEST_F(AbandonedTemporaries, AreWhatAnotherProcessWasWritingOnceItIsDead) {
  Writer writer(folder.path());
  const Names whileItWrites = namesIn(folder.path());
  ASSERT_EQ(whileItWrites.size(), 1u);
  EXPECT_EQ(namesAfterCleanUp(), whileItWrites);
  writer.kill();
  EXPECT_EQ(namesIn(folder.path()), whileItWrites);
  EXPECT_EQ(namesAfterCleanUp(), Names{});
}

TEST_F(AbandonedTemporaries, HaveExactlySuchANameAndNoOther) {
  const std::string random = "0123456789abcdef";
  Names names{".tarquel-x-y.tmp",
              "tarquel-1-a.tmp",
              ".tarquel-12-ab.tmp",
              ".tarquel-12-ab.tmp.bak",
              ".tarquel.tmp",
              ".tarquel-.tmp",
              ".tarquel--.tmp",
              ".tarquel-12.tmp",
              ".tarquel-12-.tmp",
              ".tmp",
              temporaryName("12").substr(1),
              temporaryName("12") + ".bak",
              temporaryName("12") + " ",
              "." + temporaryName("12"),
              temporaryName(""),
              temporaryName("-12"),
              temporaryName("1x"),
              temporaryName("12", "0123456789ABCDEF"),
              temporaryName("12", "0123456789abcdeg"),
              temporaryName("12", "0123456789abcde"),
              temporaryName("12", "0123456789abcdef0"),
              temporaryName("12", "01234567-9abcdef"),
              ".tarquel-12-" + random,
              ".tarquel-12-" + random + ".TMP",
              ".Tarquel-12-" + random + ".tmp"};
  for (const std::string& name : names)
    folder.write(name, "somebody's");
  std::sort(names.begin(), names.end());
  EXPECT_EQ(namesAfterCleanUp(), names);
}

TEST_F(AbandonedTemporaries, AreFilesAndNoFoldersLinksOrPipes) {
  folder.write("target", "precious");
  fs::create_directory(folder / "folder");
  fs::create_directory(folder / temporaryName("1"));
  folder.write(temporaryName("2") + "/content", "precious");
  fs::create_symlink("target", folder / temporaryName("3"));
  fs::create_symlink("folder", folder / temporaryName("4"));
  fs::create_symlink("nowhere", folder / temporaryName("5"));
  ASSERT_EQ(::mkfifo((folder / temporaryName("6")).c_str(), 0600), 0);
  const Names before = namesIn(folder.path());
  EXPECT_EQ(namesAfterCleanUp(), before);
  EXPECT_EQ(contentOf(folder / "target"), "precious");
  EXPECT_EQ(contentOf(folder / (temporaryName("2") + "/content")), "precious");
}

TEST_F(AbandonedTemporaries, AreSoughtInThatOneFolderOnly) {
  folder.write("below/" + temporaryName("1"), "half");
  namesAfterCleanUp();
  EXPECT_EQ(namesIn(folder / "below"), Names{temporaryName("1")});
}

TEST_F(AbandonedTemporaries, OfAnotherUserAreLeftToThatUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a file away";
  const fs::path file = folder.write(temporaryName("1"), "half");
  ASSERT_EQ(::chown(file.c_str(), 65'534, 65'534), 0);
  EXPECT_EQ(namesAfterCleanUp(), Names{temporaryName("1")});
}

TEST_F(AbandonedTemporaries, ThatCannotBeReachedLockedOrRemovedKeepNoOtherFromGoing) {
  for (const FileCall call : {FileCall::open, FileCall::inspect, FileCall::lock, FileCall::remove}) {
    for (const char* process : {"1", "2", "3"})
      folder.write(temporaryName(process), "half");
    // The first open is that of the folder.
    const int second = call == FileCall::open ? 2 : 1;
    const FileFaults faults(folder.path(), [&](FileCall made, int index) {
      return made == call && index == second ? FileFate{.error = EACCES} : FileFate();
    });
    EXPECT_EQ(namesAfterCleanUp().size(), 1u) << nameOf(call);
    EXPECT_EQ(faults.count(call), second + 2) << nameOf(call);
  }
}

TEST_F(AbandonedTemporaries, StayWhereThereAreNoLocks) {
  folder.write(temporaryName("1"), "half");
  const FileFaults faults(folder.path(), [](FileCall call, int) {
    return call == FileCall::lock ? FileFate{.error = ENOTSUP} : FileFate();
  });
  EXPECT_EQ(namesAfterCleanUp(), Names{temporaryName("1")});
  writeFileAtomically(folder / "a", viewOf("a write goes on all the same"));
  EXPECT_EQ(contentOf(folder / "a"), "a write goes on all the same");
}

TEST_F(AbandonedTemporaries, InAFolderThatCannotBeListedAreNoFailure) {
  removeAbandonedTemporaries(folder / "missing");
  removeAbandonedTemporaries(folder.write("file", ""));
  removeAbandonedTemporaries("");
  folder.write(temporaryName("1"), "half");
  const FileFaults faults(folder.path(), [](FileCall call, int) {
    return call == FileCall::open ? FileFate{.error = EACCES} : FileFate();
  });
  EXPECT_EQ(namesAfterCleanUp().size(), 2u);
}

// The moment between the creation of a file and its lock

TEST_F(AbandonedTemporaries, ThatWereRemovedTooEarlyAreMadeAgain) {
  int locks = 0;
  const FileFaults cleanUp(folder.path(), [&](FileCall call, int) {
    if (call != FileCall::lock || ++locks > 3) return FileFate();
    for (const std::string& name : namesIn(folder.path()))
      fs::remove(folder / name);
    return FileFate();
  });
  writeFileAtomically(folder / "a", viewOf("content"), 0600);
  EXPECT_EQ(locks, 4);
  EXPECT_EQ(contentOf(folder / "a"), "content");
  EXPECT_EQ(namesIn(folder.path()), Names{"a"});
}

TEST_F(AbandonedTemporaries, ThatACleanUpHoldsAreGivenUpToIt) {
  const FileFaults cleanUp(folder.path(), [](FileCall call, int index) {
    return call == FileCall::lock && index < 3 ? FileFate{.error = EWOULDBLOCK} : FileFate();
  });
  writeFileAtomically(folder / "a", viewOf("content"));
  EXPECT_EQ(cleanUp.count(FileCall::lock), 4);
  EXPECT_EQ(contentOf(folder / "a"), "content");
  EXPECT_EQ(namesIn(folder.path()), Names{"a"});
}

TEST_F(AbandonedTemporaries, AreNotFoundByACleanUpBetweenAnyTwoStepsOfAWrite) {
  int steps = 0;
  for (int chosen = 0; chosen <= steps; ++chosen) {
    int step = 0;
    const FileFaults cleanUp(folder.path(), [&](FileCall, int) {
      if (step++ == chosen) removeAbandonedTemporaries(folder.path());
      return FileFate();
    });
    writeFileAtomically(folder / "a", viewOf(std::to_string(chosen)));
    EXPECT_EQ(contentOf(folder / "a"), std::to_string(chosen));
    EXPECT_EQ(namesIn(folder.path()), Names{"a"});
    steps = step;
  }
  EXPECT_GE(steps, 14);
}

TEST_F(AbandonedTemporaries, NeverMakeAWriteFailThatRunsBesideTheCleanUp) {
  std::atomic<bool> finished = false;
  std::jthread cleanUp([&] {
    while (!finished)
      removeAbandonedTemporaries(folder.path());
  });
  {
    std::vector<std::jthread> writers;
    for (const char* name : {"a", "b"})
      writers.emplace_back([this, name] {
        for (int round = 0; round < 40; ++round)
          EXPECT_NO_THROW(writeFileAtomically(folder / name, viewOf(std::to_string(round))));
      });
  }
  finished = true;
  cleanUp.join();
  EXPECT_EQ(contentOf(folder / "a"), "39");
  EXPECT_EQ(contentOf(folder / "b"), "39");
  EXPECT_EQ(namesIn(folder.path()), (Names{"a", "b"}));
}

}  // namespace
}  // namespace tq::test

#include <cerrno>
#include <gtest/gtest.h>

#include "Support/Faults/FaultTrials.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/FileSystem/TemporaryFile.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

// The tool itself

TEST(FileFaults, SeeEveryCallOfAnAtomicWrite) {
  const TemporaryFolder folder;
  const FileFaults calls(folder.path());
  writeFileAtomically(folder / "a", viewOf("content"), 0600);
  EXPECT_EQ(calls.count(FileCall::open), 2) << "the folder and the temporary file";
  EXPECT_EQ(calls.count(FileCall::lock), 1);
  EXPECT_EQ(calls.count(FileCall::duplicate), 1);
  EXPECT_EQ(calls.count(FileCall::inspect), 3) << "the old file, the new one's name and its mode";
  EXPECT_EQ(calls.count(FileCall::write), 1);
  EXPECT_EQ(calls.count(FileCall::sync), 2) << "the file and the folder";
  EXPECT_EQ(calls.count(FileCall::rename), 1);
  EXPECT_EQ(calls.count(FileCall::close), 3) << "the file, its lock and the folder";
  EXPECT_EQ(calls.count(FileCall::setMode), 0) << "the file is created with its mode";
  EXPECT_EQ(calls.count(FileCall::remove), 0);
}

TEST(FileFaults, LeaveOtherFoldersAlone) {
  const TemporaryFolder folder;
  const TemporaryFolder other;
  const FileFaults faults(folder.path(), [](FileCall, int) { return FileFate{.error = EIO}; });
  writeFileAtomically(other / "a", viewOf("content"));
  EXPECT_EQ(contentOf(other / "a"), "content");
  for (const FileCall call : fileCalls)
    EXPECT_EQ(faults.count(call), 0) << nameOf(call);
  EXPECT_THROW(writeFileAtomically(folder / "a", viewOf("content")), SystemError);
}

TEST(FileFaults, KnowAPlaceByAllItsNames) {
  const TemporaryFolder folder;
  fs::create_directory(folder / "deep");
  const FileFaults calls(folder / "deep");
  readFile(folder.write("beside", ""));
  EXPECT_EQ(calls.count(FileCall::open), 0);
  readFile(folder.write("deep/a", ""));
  EXPECT_EQ(calls.count(FileCall::open), 1);
  fileExists(folder / "deep/../deep/./a");
  fileExists(folder / "deep");
  fs::create_directory_symlink("deep", folder / "link");
  fileExists(folder / "link/a");
  EXPECT_EQ(calls.count(FileCall::inspect), 4);
}

TEST(FileFaults, EndWithTheirObject) {
  const TemporaryFolder folder;
  {
    const FileFaults faults(folder.path(), [](FileCall, int) { return FileFate{.error = EIO}; });
    EXPECT_THROW(writeFileAtomically(folder / "a", viewOf("content")), SystemError);
  }
  writeFileAtomically(folder / "a", viewOf("content"));
  EXPECT_EQ(contentOf(folder / "a"), "content");
}

// What is proven with it

/// The file "a", of which there is an old content or none, is written anew.
class FaultyWrite : public testing::TestWithParam<std::optional<std::string>> {
 protected:
  void prepare() const {
    for (const std::string& name : namesIn(folder.path()))
      fs::remove(folder / name);
    if (GetParam()) fs::permissions(folder.write("a", *GetParam()), fs::perms(0640));
  }

  void write() const { writeFileAtomically(folder / "a", viewOf(newContent)); }

  /// Nothing but the file, which is whole.
  void expectOldOrNew() const {
    const std::vector<std::string> names = namesIn(folder.path());
    if (names.empty()) {
      EXPECT_EQ(GetParam(), std::nullopt) << "the file is gone";
      return;
    }
    ASSERT_EQ(names, std::vector<std::string>{"a"});
    const std::string content = contentOf(folder / "a");
    EXPECT_TRUE(content == newContent || content == GetParam()) << content.size() << " bytes";
    EXPECT_TRUE(!GetParam() || fs::status(folder / "a").permissions() == fs::perms(0640));
  }

  void expectNew() const {
    ASSERT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
    EXPECT_EQ(contentOf(folder / "a"), newContent);
  }

  TemporaryFolder folder;
  std::string newContent = std::string(300, 'n');
};

TEST_P(FaultyWrite, LeavesTheOldFileOrTheNewOneWhateverFails) {
  const Strikes strikes = failEveryCall({.folder = folder.path(),
                                         .prepare = [&] { prepare(); },
                                         .attempt = [&] { write(); },
                                         .check =
                                             [&](const std::optional<std::string>& error) {
                                               expectOldOrNew();
                                               if (!error) expectNew();
                                               EXPECT_TRUE(!error || error->starts_with("a: ")) << *error;
                                               write();
                                               expectNew();
                                             }});
  for (const FileCall call : {FileCall::open, FileCall::lock, FileCall::duplicate, FileCall::inspect, FileCall::write,
                              FileCall::sync, FileCall::close, FileCall::rename})
    EXPECT_GE(strikes.count(call), 1u) << nameOf(call);
}

TEST_P(FaultyWrite, LeavesTheOldFileOrTheNewOneAndRubbishThatIsKnownWhenItIsKilled) {
  const int killed = killAtEveryCall({.folder = folder.path(),
                                      .prepare = [&] { prepare(); },
                                      .attempt = [&] { write(); },
                                      .check =
                                          [&](const auto&) {
                                            removeAbandonedTemporaries(folder.path());
                                            expectOldOrNew();
                                            write();
                                            expectNew();
                                          }});
  EXPECT_GE(killed, 12);
}

INSTANTIATE_TEST_SUITE_P(, FaultyWrite, testing::Values(std::optional<std::string>(), "the old content"),
                         [](const auto& test) { return test.param ? "OverAFile" : "OfANewFile"; });

TEST(FaultyWriteWithAMode, ReportsAModeThatCannotBeGivenOrPassesItOver) {
  const TemporaryFolder folder;
  for (const int error : {EPERM, ENOTSUP, EIO}) {
    folder.write("a", "old");
    fs::permissions(folder / "a", fs::perms(0644));
    const FileFaults faults(folder.path(), [&](FileCall call, int) {
      return call == FileCall::setMode ? FileFate{.error = error} : FileFate();
    });
    // More than the umask lets through, so that the mode has to be set.
    EXPECT_THROW(writeFileAtomically(folder / "a", viewOf("new"), 0666), SystemError);
    EXPECT_EQ(contentOf(folder / "a"), "old");
    writeFileAtomically(folder / "a", viewOf("new"), 0666, ModeFailure::isIgnored);
    EXPECT_EQ(contentOf(folder / "a"), "new");
    EXPECT_EQ(fs::status(folder / "a").permissions(), fs::perms(0644));
    EXPECT_EQ(faults.count(FileCall::setMode), 2);
    EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
  }
}

TEST(FaultyWriteWithAMode, IsCreatedWithThatModeBeforeItsFirstByte) {
  const TemporaryFolder folder;
  std::vector<fs::perms> modes;
  const FileFaults watch(folder.path(), [&](FileCall call, int) {
    if (call == FileCall::write)
      for (const auto& entry : fs::directory_iterator(folder.path()))
        modes.push_back(entry.status().permissions());
    return FileFate();
  });
  writeFileAtomically(folder / "a", viewOf("new"), 0600);
  EXPECT_EQ(modes, std::vector{fs::perms(0600)});
}

TEST_P(FaultyWrite, ReportsEveryFailureThatMatters) {
  const std::vector<std::pair<FileCall, int>> calls{
      {FileCall::inspect, 0},   {FileCall::open, 0},   {FileCall::open, 1},
      {FileCall::duplicate, 0}, {FileCall::write, 0},  {FileCall::sync, 0},
      {FileCall::close, 0},     {FileCall::rename, 0}, {FileCall::sync, 1}};
  for (const auto& [failing, at] : calls) {
    prepare();
    const FileFaults faults(folder.path(), [failing = failing, at = at](FileCall call, int index) {
      return call == failing && index == at ? FileFate{.error = EIO} : FileFate();
    });
    EXPECT_THROW(write(), SystemError) << nameOf(failing) << " " << at;
  }
}

TEST(FaultyWriteTwice, ReportsTheFirstFailureAndWhatItLeavesIsRemovedAtTheNextStart) {
  const TemporaryFolder folder;
  folder.write("a", "old");
  std::string text;
  {
    const FileFaults faults(folder.path(), [](FileCall call, int) {
      if (call == FileCall::write) return FileFate{.error = ENOSPC};
      if (call == FileCall::remove) return FileFate{.error = EIO};
      return FileFate();
    });
    try {
      writeFileAtomically(folder / "a", viewOf("new"));
    } catch (const SystemError& error) {
      text = error.what();
    }
    EXPECT_EQ(faults.count(FileCall::remove), 1);
  }
  EXPECT_EQ(text, "a: No space left on device");
  EXPECT_EQ(contentOf(folder / "a"), "old");
  EXPECT_EQ(namesIn(folder.path()).size(), 2u);
  removeAbandonedTemporaries(folder.path());
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"a"});
}

TEST(FaultyWriteOnAFolder, ThatKnowsNoSyncIsNoFailure) {
  const TemporaryFolder folder;
  for (const int error : {EINVAL, ENOTSUP}) {
    const FileFaults faults(folder.path(), [&](FileCall call, int index) {
      return call == FileCall::sync && index == 1 ? FileFate{.error = error} : FileFate();
    });
    writeFileAtomically(folder / "a", viewOf("new"));
    EXPECT_EQ(faults.count(FileCall::sync), 2);
  }
}

TEST(FaultyWriteInFull, AWriteThatMovesNothingIsAnError) {
  const TemporaryFolder folder;
  const FileFaults faults(folder.path(),
                          [](FileCall call, int) { return FileFate{.most = call == FileCall::write ? 0u : 1u}; });
  EXPECT_THROW(writeFileAtomically(folder / "a", viewOf("new")), SystemError);
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST(FaultyReplacement, LeavesBothFilesOrPutsTheNewOneInPlaceWhateverFails) {
  const TemporaryFolder folder;
  const Strikes strikes = failEveryCall({.folder = folder.path(),
                                         .prepare =
                                             [&] {
                                               folder.write("a", "old");
                                               fs::permissions(folder.write("finished", "new"), fs::perms(0600));
                                             },
                                         .attempt = [&] { replaceFile(folder / "finished", folder / "a"); },
                                         .check =
                                             [&](const std::optional<std::string>& error) {
                                               const bool isDone = !fs::exists(folder / "finished");
                                               EXPECT_TRUE(isDone || error);
                                               EXPECT_EQ(contentOf(folder / "a"), isDone ? "new" : "old");
                                               if (isDone) return;
                                               EXPECT_EQ(contentOf(folder / "finished"), "new");
                                               replaceFile(folder / "finished", folder / "a");
                                               EXPECT_EQ(contentOf(folder / "a"), "new");
                                             }});
  EXPECT_EQ(strikes.at(FileCall::sync), 6) << "the file and the folder, with three errors each";
  EXPECT_EQ(strikes.at(FileCall::rename), 3);
}

TEST(FaultyRead, IsReportedWhateverFails) {
  const TemporaryFolder folder;
  const std::string content(300, 'c');
  folder.write("a", content);
  std::string text;
  const Strikes strikes = failEveryCall({.folder = folder.path(),
                                         .prepare = [&] { text = "nothing"; },
                                         .attempt = [&] { text = textOf(readFile(folder / "a")); },
                                         .check =
                                             [&](const std::optional<std::string>& error) {
                                               EXPECT_EQ(text, error ? "nothing" : content);
                                               EXPECT_TRUE(!error || error->starts_with("a: ")) << *error;
                                             }});
  for (const FileCall call : {FileCall::open, FileCall::inspect, FileCall::read, FileCall::close})
    EXPECT_GE(strikes.count(call), 1u) << nameOf(call);
}

}  // namespace
}  // namespace tq::test

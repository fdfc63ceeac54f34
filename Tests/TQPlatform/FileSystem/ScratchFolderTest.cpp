#include <cerrno>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "Support/Faults/FileFaults.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/FileSystem/ScratchFolder.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr const char* abandoned = ".tarquel-0A1B2C3D-0000-4000-8000-00000000000F.work";

class ScratchFolders : public testing::Test {
 protected:
  std::vector<std::string> namesAfterCleanUp() const {
    removeAbandonedScratchFolders(folder.path());
    return namesIn(folder.path());
  }

  TemporaryFolder folder;
};

TEST_F(ScratchFolders, AreHiddenAndGoWithAllThatIsInThem) {
  {
    const ScratchFolder scratch(folder.path());
    EXPECT_THAT(namesIn(folder.path()), ElementsAre(MatchesRegex("\\.tarquel-[0-9A-F-]+\\.work")));
    fs::create_directories(scratch / "below");
    folder.write((scratch.path().filename() / "below/a.mp4").string(), "half");
    EXPECT_TRUE(fs::exists(scratch / "below/a.mp4"));
  }
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST_F(ScratchFolders, AreEachOfTheirOwn) {
  const ScratchFolder one(folder.path()), other(folder.path());
  EXPECT_NE(one.path(), other.path());
}

TEST_F(ScratchFolders, WhereNoneCanBeMadeTheErrorNamesThePlace) {
  try {
    const ScratchFolder scratch(folder / "missing");
    ADD_FAILURE();
  } catch (const SystemError& error) {
    EXPECT_STREQ(error.what(), "missing: No such file or directory");
  }
}

TEST_F(ScratchFolders, ThatCannotBeOpenedAreRemovedAndToldOf) {
  const FileFaults faults(folder.path(), [](FileCall call, int) {
    return call == FileCall::open ? FileFate{.error = EMFILE} : FileFate();
  });
  EXPECT_THROW(ScratchFolder{folder.path()}, SystemError);
  EXPECT_THAT(namesIn(folder.path()), IsEmpty());
}

TEST_F(ScratchFolders, OfDeadRunsAreRemovedWithTheirContentAndNothingElse) {
  folder.write(std::string(abandoned) + "/below/a.mp4", "half");
  folder.write("a_00.mp4", "kept");
  EXPECT_THAT(namesAfterCleanUp(), ElementsAre("a_00.mp4"));
}

TEST_F(ScratchFolders, InUseStay) {
  const ScratchFolder scratch(folder.path());
  folder.write((scratch.path().filename() / "a.mp4").string(), "half");
  namesAfterCleanUp();
  EXPECT_TRUE(fs::exists(scratch / "a.mp4"));
}

TEST_F(ScratchFolders, HaveExactlySuchANameAndNoOther) {
  const std::string id = "0A1B2C3D-0000-4000-8000-00000000000F";
  std::vector<std::string> names{".tarquel-.work",
                                 ".tarquel.work",
                                 ".tarquel-" + id,
                                 "tarquel-" + id + ".work",
                                 ".tarquel-" + id + ".tmp",
                                 ".tarquel-" + id + "0.work",
                                 ".tarquel-0a1b2c3d-0000-4000-8000-00000000000f.work",
                                 "." + id + ".work"};
  for (const std::string& name : names)
    folder.write(name + "/a.mp4", "somebody's");
  std::ranges::sort(names);
  EXPECT_EQ(namesAfterCleanUp(), names);
}

TEST_F(ScratchFolders, AreFoldersAndNoFilesOrLinks) {
  folder.write("target/a.mp4", "precious");
  fs::create_directory_symlink("target", folder / abandoned);
  EXPECT_THAT(namesAfterCleanUp(), ElementsAre(abandoned, "target"));
  EXPECT_EQ(contentOf(folder / "target/a.mp4"), "precious");
  fs::remove(folder / abandoned);
  folder.write(abandoned, "a file");
  EXPECT_THAT(namesAfterCleanUp(), ElementsAre(abandoned, "target"));
}

TEST_F(ScratchFolders, LinksInThemAreRemovedAndNotFollowed) {
  folder.write("target/a.mp4", "precious");
  fs::create_directory(folder / abandoned);
  fs::create_directory_symlink("../target", folder / (std::string(abandoned) + "/link"));
  EXPECT_THAT(namesAfterCleanUp(), ElementsAre("target"));
  EXPECT_EQ(contentOf(folder / "target/a.mp4"), "precious");
}

TEST_F(ScratchFolders, OfAnotherUserAreLeftToThatUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the superuser can give a folder away";
  fs::create_directory(folder / abandoned);
  ASSERT_EQ(::chown((folder / abandoned).c_str(), 65'534, 65'534), 0);
  EXPECT_THAT(namesAfterCleanUp(), ElementsAre(abandoned));
}

TEST_F(ScratchFolders, ThatCannotBeOpenedOrLockedStay) {
  for (const FileCall call : {FileCall::open, FileCall::inspect, FileCall::lock}) {
    folder.write(std::string(abandoned) + "/a.mp4", "half");
    const FileFaults faults(
        folder.path(), [call](FileCall made, int) { return made == call ? FileFate{.error = EACCES} : FileFate(); });
    EXPECT_THAT(namesAfterCleanUp(), ElementsAre(abandoned)) << nameOf(call);
  }
}

TEST_F(ScratchFolders, InAPlaceThatCannotBeListedAreNoFailure) {
  removeAbandonedScratchFolders(folder / "missing");
  removeAbandonedScratchFolders(folder.write("file", ""));
  removeAbandonedScratchFolders("");
}

// The moment between the making of a folder and its lock

TEST_F(ScratchFolders, ThatACleanUpTakesTooEarlyAreMadeAgain) {
  for (const FileCall moment : {FileCall::open, FileCall::lock, FileCall::inspect}) {
    const FileFaults cleanUp(folder.path(), [&](FileCall call, int index) {
      if (call == moment && index < 3)
        for (const std::string& name : namesIn(folder.path()))
          fs::remove_all(folder / name);
      return FileFate();
    });
    const ScratchFolder scratch(folder.path());
    EXPECT_TRUE(fs::is_directory(scratch.path())) << nameOf(moment);
    EXPECT_GE(cleanUp.count(FileCall::makeFolder), 3) << nameOf(moment);
  }
}

TEST_F(ScratchFolders, ThatACleanUpHoldsAreGivenUpToIt) {
  const FileFaults cleanUp(folder.path(), [](FileCall call, int index) {
    return call == FileCall::lock && index == 0 ? FileFate{.error = EWOULDBLOCK} : FileFate();
  });
  const ScratchFolder scratch(folder.path());
  EXPECT_EQ(cleanUp.count(FileCall::makeFolder), 2);
}

TEST_F(ScratchFolders, ServeWhereThereAreNoLocks) {
  const FileFaults faults(folder.path(), [](FileCall call, int) {
    return call == FileCall::lock ? FileFate{.error = ENOTSUP} : FileFate();
  });
  const ScratchFolder scratch(folder.path());
  EXPECT_TRUE(fs::is_directory(scratch.path()));
}

}  // namespace
}  // namespace tq::test

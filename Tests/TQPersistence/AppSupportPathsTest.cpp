#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/AppSupportPaths.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;
using Names = std::vector<std::string>;

TEST(BaseFolder, IsTheDataHomeWhenThatIsAbsolute) {
  EXPECT_EQ(AppSupportPaths::baseFolder("/data", "/home/me"), "/data");
}

TEST(BaseFolder, IsBelowTheHomeFolderOtherwise) {
  const fs::path standard = "/home/me/.local/share";
  EXPECT_EQ(AppSupportPaths::baseFolder(std::nullopt, "/home/me"), standard);
  EXPECT_EQ(AppSupportPaths::baseFolder("", "/home/me"), standard);
  EXPECT_EQ(AppSupportPaths::baseFolder("relative/data", "/home/me"), standard);
}

TEST(AppSupportPaths, NamesEveryPrivateFile) {
  const TemporaryFolder base;
  const AppSupportPaths paths(base.path());
  EXPECT_EQ(paths.appSupportDirectory(), base / "tarquel");
  EXPECT_EQ(paths.settingsURL(), base / "tarquel/settings.json");
  EXPECT_EQ(paths.queueURL(), base / "tarquel/queue.json");
  EXPECT_EQ(paths.uiStateURL(), base / "tarquel/ui-state.json");
  EXPECT_EQ(paths.secretsURL(), base / "tarquel/secrets.json");
  EXPECT_EQ(paths.semanticIndexDirectory(), base / "tarquel/semantic-index");
  EXPECT_EQ(AppSupportPaths::bundleId, "com.tarquel.app");
}

TEST(AppSupportPaths, TheUsersPathsFollowTheEnvironment) {
  const TemporaryFolder user;
  const EnvironmentVariable home("HOME", (user / "home").string());
  {
    const EnvironmentVariable dataHome("XDG_DATA_HOME", (user / "data").string());
    EXPECT_EQ(AppSupportPaths::ofUser().queueURL(), user / "data/tarquel/queue.json");
  }
  const EnvironmentVariable dataHome("XDG_DATA_HOME", std::nullopt);
  EXPECT_EQ(AppSupportPaths::ofUser().queueURL(), user / "home/.local/share/tarquel/queue.json");
}

TEST(AppSupportPaths, NothingIsTouchedBeforeTheFirstAccess) {
  const TemporaryFolder base;
  const AppSupportPaths paths(base / "deep/base");
  EXPECT_TRUE(namesIn(base.path()).empty());
}

TEST(AppSupportPaths, EveryMemberCreatesTheFolderForItsOwnerAlone) {
  using Member = fs::path (AppSupportPaths::*)() const;
  for (const Member member :
       {&AppSupportPaths::appSupportDirectory, &AppSupportPaths::settingsURL, &AppSupportPaths::queueURL,
        &AppSupportPaths::uiStateURL, &AppSupportPaths::secretsURL, &AppSupportPaths::semanticIndexDirectory}) {
    const TemporaryFolder base;
    (AppSupportPaths(base / "deep/base").*member)();
    ASSERT_TRUE(fs::is_directory(base / "deep/base/tarquel"));
    EXPECT_EQ(fs::status(base / "deep/base/tarquel").permissions(), fs::perms::owner_all);
  }
}

TEST(AppSupportPaths, TheSemanticIndexFolderIsNotCreated) {
  const TemporaryFolder base;
  EXPECT_FALSE(fs::exists(AppSupportPaths(base.path()).semanticIndexDirectory()));
}

TEST(AppSupportPaths, AFolderThatCannotBeCreatedIsNoFailureHere) {
  const TemporaryFolder base;
  base.write("file", "in the way");
  EXPECT_EQ(AppSupportPaths(base / "file").settingsURL(), base / "file/tarquel/settings.json");
}

TEST(AppSupportPaths, EveryAccessTakesOverTheLegacyFolder) {
  const TemporaryFolder base;
  const AppSupportPaths paths(base.path());
  base.write("Tarquel/settings.json", "old");
  EXPECT_EQ(contentOf(paths.settingsURL()), "old");
  EXPECT_EQ(namesIn(base.path()), Names{"tarquel"});
  base.write("Tarquel/queue.json", "late");
  EXPECT_EQ(contentOf(paths.queueURL()), "late");
}

TEST(AppSupportPaths, WhatDeadRunsLeftHalfWrittenIsRemovedFromBothFolders) {
  const TemporaryFolder base;
  const char* rubbish = ".tarquel-1-0123456789abcdef.tmp";
  base.write("tarquel/settings.json", "kept");
  base.write(std::string("tarquel/") + rubbish, "half");
  base.write(std::string("tarquel/semantic-index/") + rubbish, "half");
  base.write(std::string("tarquel/elsewhere/") + rubbish, "not ours");
  AppSupportPaths(base.path()).removeAbandonedTemporaries();
  EXPECT_EQ(namesIn(base / "tarquel"), (Names{"elsewhere", "semantic-index", "settings.json"}));
  EXPECT_TRUE(namesIn(base / "tarquel/semantic-index").empty());
  EXPECT_EQ(namesIn(base / "tarquel/elsewhere"), Names{rubbish});
}

TEST(AppSupportPaths, WhereThereIsNothingYetNothingIsRemoved) {
  const TemporaryFolder base;
  AppSupportPaths(base.path()).removeAbandonedTemporaries();
  AppSupportPaths(base.write("file", "in the way")).removeAbandonedTemporaries();
  EXPECT_EQ(namesIn(base.path()), (Names{"file", "tarquel"}));
}

class Migration : public testing::Test {
 protected:
  void SetUp() override { fs::create_directory(current); }
  void migrate() const { AppSupportPaths::migrateLegacyDirectory(legacy, current); }

  TemporaryFolder base;
  fs::path legacy = base / "Tarquel";
  fs::path current = base / "tarquel";
};

TEST_F(Migration, WithoutALegacyFolderNothingHappens) {
  migrate();
  EXPECT_EQ(namesIn(base.path()), Names{"tarquel"});
}

TEST_F(Migration, AllChildrenMoveAndTheLegacyFolderGoes) {
  base.write("Tarquel/settings.json", "s");
  base.write("Tarquel/semantic-index/a/b", "deep");
  fs::create_symlink("nowhere", legacy / "dangling");
  migrate();
  EXPECT_EQ(namesIn(base.path()), Names{"tarquel"});
  EXPECT_EQ(namesIn(current), (Names{"dangling", "semantic-index", "settings.json"}));
  EXPECT_EQ(contentOf(current / "semantic-index/a/b"), "deep");
}

TEST_F(Migration, AnEmptyLegacyFolderGoes) {
  fs::create_directory(legacy);
  migrate();
  EXPECT_EQ(namesIn(base.path()), Names{"tarquel"});
}

TEST_F(Migration, ANameThatIsTakenStaysInBothFolders) {
  base.write("Tarquel/settings.json", "old");
  base.write("Tarquel/queue.json", "queue");
  base.write("tarquel/settings.json", "new");
  migrate();
  EXPECT_EQ(contentOf(current / "settings.json"), "new");
  EXPECT_EQ(contentOf(legacy / "settings.json"), "old");
  EXPECT_EQ(contentOf(current / "queue.json"), "queue");
  EXPECT_EQ(namesIn(legacy), Names{"settings.json"});
}

TEST_F(Migration, FoldersOfOneNameAreNotMerged) {
  base.write("Tarquel/semantic-index/a", "old");
  fs::create_directory(current / "semantic-index");
  migrate();
  EXPECT_EQ(contentOf(legacy / "semantic-index/a"), "old");
  EXPECT_TRUE(namesIn(current / "semantic-index").empty());
}

TEST_F(Migration, ADanglingLinkTakesItsNameToo) {
  base.write("Tarquel/settings.json", "old");
  fs::create_symlink("nowhere", current / "settings.json");
  migrate();
  EXPECT_TRUE(fs::is_symlink(current / "settings.json"));
  EXPECT_EQ(contentOf(legacy / "settings.json"), "old");
}

TEST_F(Migration, TwoNamesOfOneFolderAreLeftAlone) {
  // What a file system does that does not tell capitals from small letters, here done by a link.
  fs::create_symlink("tarquel", legacy);
  migrate();
  EXPECT_EQ(namesIn(base.path()), (Names{"Tarquel", "tarquel"}));
  base.write("tarquel/settings.json", "s");
  migrate();
  EXPECT_EQ(contentOf(current / "settings.json"), "s");
}

TEST_F(Migration, TheLiveFolderIsNotRemovedUnderItsOtherNameEvenWhenItIsEmpty) {
  AppSupportPaths::migrateLegacyDirectory(current / ".." / "tarquel", current);
  EXPECT_EQ(namesIn(base.path()), Names{"tarquel"});
}

TEST_F(Migration, AChildThatCannotBeMovedStaysAndIsTriedAgain) {
  fs::remove(current);
  base.write("Tarquel/settings.json", "old");
  migrate();
  EXPECT_EQ(contentOf(legacy / "settings.json"), "old");
  fs::create_directory(current);
  migrate();
  EXPECT_EQ(contentOf(current / "settings.json"), "old");
  EXPECT_FALSE(fs::exists(legacy));
}

TEST_F(Migration, AFileOfTheLegacyNameIsKept) {
  base.write("Tarquel", "somebody's file");
  migrate();
  EXPECT_EQ(contentOf(legacy), "somebody's file");
}

}  // namespace
}  // namespace tq::test

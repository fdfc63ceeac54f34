#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

#include "Support/FolderListings.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Unprivileged.hpp"
#include "TQPlatform/FileSystem/FolderReader.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;
using Kinds = std::map<std::string, std::optional<FileKind>>;

class FolderReaderTest : public testing::Test {
 protected:
  Kinds kinds() const {
    Kinds kinds;
    FolderReader reader(folder_.path());
    while (const auto entry = reader.next())
      kinds.emplace(entry->name, entry->kind);
    return kinds;
  }

  const TemporaryFolder folder_;
};

TEST_F(FolderReaderTest, TellsEveryEntryAndItsKind) {
  folder_.write("file", "");
  folder_.write(".hidden", "");
  folder_.write("\xFF\n", "");
  folder_.write("folder/below", "");
  fs::create_symlink("file", folder_ / "link");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(kinds(), (Kinds{{"file", FileKind::regular},
                            {".hidden", FileKind::regular},
                            {"\xFF\n", FileKind::regular},
                            {"folder", FileKind::folder},
                            {"link", FileKind::other},
                            {"pipe", FileKind::other}}));
}

TEST_F(FolderReaderTest, AnEmptyFolderHasNoEntries) {
  EXPECT_EQ(kinds(), Kinds{});
}

TEST_F(FolderReaderTest, WhereTheListingDoesNotTellAKindALookDoes) {
  folder_.write("file", "123");
  test::FolderListings listings(folder_.path());
  listings.hideKinds();
  FolderReader reader(folder_.path());
  EXPECT_EQ(reader.next()->kind, std::nullopt);
  EXPECT_EQ(reader.look()->kind, FileKind::regular);
  EXPECT_EQ(reader.look()->size, 3);
}

TEST_F(FolderReaderTest, ALookDoesNotFollowALinkAndFindsNothingThatIsGone) {
  fs::create_symlink("/", folder_ / "link");
  FolderReader reader(folder_.path());
  ASSERT_TRUE(reader.next());
  EXPECT_EQ(reader.look()->kind, FileKind::other);
  fs::remove(folder_ / "link");
  EXPECT_FALSE(reader.look());
}

TEST_F(FolderReaderTest, TheIdentityIsThatOfTheFolderHoweverItIsReached) {
  const TemporaryFolder other;
  fs::create_directory_symlink(folder_.path(), other / "link");
  const auto identity = FolderReader(folder_.path()).identity();
  EXPECT_EQ(FolderReader(other / "link").identity(), identity);
  EXPECT_EQ(FolderReader(folder_ / ".").identity(), identity);
  EXPECT_NE(FolderReader(other.path()).identity(), identity);
}

TEST_F(FolderReaderTest, AFolderThatMayOnlyBeListedHasAnIdentityToo) {
  const test::Unprivileged user;
  folder_.write("file", "");
  fs::permissions(folder_.path(), fs::perms::owner_read);
  FolderReader reader(folder_.path());
  EXPECT_NO_THROW(reader.identity());
  EXPECT_EQ(reader.next()->name, "file");
  EXPECT_FALSE(reader.look());
}

TEST_F(FolderReaderTest, WhatCannotBeListedIsRefused) {
  const test::Unprivileged user;
  fs::create_directory(folder_ / "locked");
  fs::permissions(folder_ / "locked", fs::perms::none);
  EXPECT_THROW(FolderReader(folder_ / "locked"), SystemError);
  EXPECT_THROW(FolderReader(folder_ / "missing"), SystemError);
  EXPECT_THROW(FolderReader(folder_.write("file", "")), SystemError);
  EXPECT_THROW(FolderReader(""), SystemError);
}

TEST_F(FolderReaderTest, AListingThatBreaksOffIsToldFromItsEnd) {
  folder_.write("file", "");
  test::FolderListings listings(folder_.path());
  listings.setBroken(true);
  FolderReader reader(folder_.path());
  EXPECT_EQ(reader.next()->name, "file");
  EXPECT_THROW(reader.next(), SystemError);
}

}  // namespace
}  // namespace tq

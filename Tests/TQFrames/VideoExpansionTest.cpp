#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/FolderListings.hpp"
#include "Support/TemporaryFolder.hpp"
#include "Support/Unprivileged.hpp"
#include "TQFrames/VideoExpansion.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::TemporaryFolder;
using Paths = std::vector<fs::path>;

TEST(ExpandToVideos, KeepsTheOrderOfTheInputsAndSkipsWhatIsNoVideo) {
  const TemporaryFolder folder;
  const auto second = folder.write("b.mov", "");
  const auto notes = folder.write("notes.txt", "");
  const auto first = folder.write("a.MP4", "");
  EXPECT_EQ(expandToVideos({second, notes, folder / "missing.mov", first}), (Paths{second, first}));
}

TEST(ExpandToVideos, SortsTheClipsOfAFolderByPathAsText) {
  const TemporaryFolder folder;
  const auto nested = folder.write("a/z.mov", "");
  const auto dashed = folder.write("a-b.mov", "");
  const auto upper = folder.write("B.mov", "");
  // By bytes: 'B' before 'a', and '-' before '/'.
  EXPECT_EQ(expandToVideos({folder.path()}), (Paths{upper, dashed, nested}));
}

TEST(ExpandToVideos, LeavesOutHiddenFilesAndTheContentOfHiddenFolders) {
  const TemporaryFolder folder;
  folder.write(".hidden.mov", "");
  folder.write(".cache/clip.mov", "");
  const auto seen = folder.write("clip.mov", "");
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{seen});
}

TEST(ExpandToVideos, TakesALinkThatIsNamedButNoneInsideAFolder) {
  const TemporaryFolder folder, outside;
  const auto target = outside.write("target.mov", "");
  fs::create_symlink(target, folder / "link.mov");
  fs::create_directory_symlink(outside.path(), folder / "away");
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{});
  EXPECT_EQ(expandToVideos({folder / "link.mov"}), Paths{folder / "link.mov"});
}

TEST(ExpandToVideos, ReachesAFolderThroughALink) {
  const TemporaryFolder folder, outside;
  const auto clip = outside.write("clip.mov", "");
  fs::create_directory_symlink(outside.path(), folder / "away");
  EXPECT_EQ(expandToVideos({folder / "away"}), Paths{fs::canonical(clip)});
}

TEST(ExpandToVideos, ListsAClipOnceWhateverItsSpelling) {
  const TemporaryFolder folder;
  const auto clip = folder.write("a/clip.mov", "");
  EXPECT_EQ(expandToVideos({folder.path() / "a" / ".." / "a" / "clip.mov", clip, folder.path()}), Paths{clip});
}

TEST(ExpandToVideos, ADetourThroughALinkLeadsWhereTheSystemFollowsIt) {
  const TemporaryFolder folder, outside;
  const auto beyond = outside.write("clip.mov", "");
  fs::create_directory(outside / "sub");
  fs::create_directory_symlink(outside / "sub", folder / "link");
  const fs::path detour = folder.path() / "link" / ".." / "clip.mov";
  EXPECT_EQ(expandToVideos({detour}), Paths{detour});
  EXPECT_EQ(expandToVideos({detour.parent_path()}), Paths{beyond});
}

TEST(ExpandToVideos, WhatCannotBeReadIsSkippedAlone) {
  const test::Unprivileged user;
  const TemporaryFolder folder;
  folder.write("b/locked.mov", "");
  const Paths clips{folder.write("a.mov", ""), folder.write("a/clip.mov", ""), folder.write("c/clip.mov", "")};
  fs::permissions(folder / "b", fs::perms::none);
  EXPECT_EQ(expandToVideos({folder / "b", folder.path()}), clips);
}

TEST(ExpandToVideos, AListingThatBreaksOffCostsWhatItDidNotGiveAlone) {
  const TemporaryFolder folder;
  const Paths clips{folder.write("a/clip.mov", ""), folder.write("b/first.mov", ""), folder.write("c/clip.mov", "")};
  test::FolderListings listings(folder / "b");
  listings.setBroken(true);
  EXPECT_EQ(expandToVideos({folder.path()}), clips);
}

TEST(ExpandToVideos, AFolderThatALinkReplacesDuringTheWalkLeadsNowhereElse) {
  const TemporaryFolder folder, outside;
  outside.write("secret.mov", "");
  folder.write("sub/clip.mov", "");
  test::FolderListings listings(folder.path());
  listings.beforeEach([&] {
    fs::remove_all(folder / "sub");
    fs::create_directory_symlink(outside.path(), folder / "sub");
  });
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{});
}

TEST(ExpandToVideos, WhereAListingDoesNotTellKindsTheFilesAreAsked) {
  const TemporaryFolder folder;
  const Paths clips{folder.write("a.mov", ""), folder.write("sub/clip.mov", "")};
  fs::create_symlink(clips[0], folder / "link.mov");
  test::FolderListings listings(folder.path());
  listings.hideKinds();
  EXPECT_EQ(expandToVideos({folder.path()}), clips);
}

TEST(ExpandToVideos, PipesAndSocketsInAFolderAreNoClips) {
  const TemporaryFolder folder;
  ASSERT_EQ(::mkfifo((folder / "pipe.mp4").c_str(), 0600), 0);
  ASSERT_EQ(::mknod((folder / "socket.mp4").c_str(), S_IFSOCK | 0600, 0), 0);
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{});
}

TEST(ExpandToVideos, AHiddenClipThatIsNamedIsTakenAndSoIsAHiddenFolder) {
  const TemporaryFolder folder;
  const auto clip = folder.write(".hidden.mov", "");
  const auto inside = folder.write(".cache/clip.mov", "");
  EXPECT_EQ(expandToVideos({clip, folder / ".cache"}), (Paths{clip, inside}));
}

TEST(ExpandToVideos, AClipAndItsFolderGiveItOnceAtItsFirstPlace) {
  const TemporaryFolder folder;
  const auto a = folder.write("a.mov", ""), b = folder.write("b.mov", "");
  EXPECT_EQ(expandToVideos({b, folder.path(), a}), (Paths{b, a}));
}

TEST(ExpandToVideos, CapitalsSortBeforeSmallLetters) {
  const TemporaryFolder folder;
  const auto lower = folder.write("a/a.mov", ""), upper = folder.write("a/B.mov", "");
  EXPECT_EQ(expandToVideos({folder.path()}), (Paths{upper, lower}));
}

TEST(ExpandToVideos, AFolderNamedLikeAClipIsAFolder) {
  const TemporaryFolder folder;
  const auto inside = folder.write("shoot.mov/one.mov", "");
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{inside});
  EXPECT_EQ(expandToVideos({folder / "shoot.mov"}), Paths{inside});
}

TEST(ExpandToVideos, NamesOfAnyBytesPassUnchanged) {
  const TemporaryFolder folder;
  const auto odd = folder.write("-take\n1 \xF0\x9F\x8E\xAC.mkv", ""), noText = folder.write("\xFF\xFE.mov", "");
  EXPECT_EQ(expandToVideos({folder.path()}), (Paths{odd, noText}));
}

}  // namespace
}  // namespace tq

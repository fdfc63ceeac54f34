#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
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

TEST(ExpandToVideos, AFolderNamedLikeAClipIsAFolder) {
  const TemporaryFolder folder;
  const auto inside = folder.write("shoot.mov/one.mov", "");
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{inside});
  EXPECT_EQ(expandToVideos({folder / "shoot.mov"}), Paths{inside});
}

TEST(ExpandToVideos, NamesWithLineBreaksAndEmojiPassUnchanged) {
  const TemporaryFolder folder;
  const auto odd = folder.write("-take\n1 \xF0\x9F\x8E\xAC.mkv", "");
  EXPECT_EQ(expandToVideos({folder.path()}), Paths{odd});
}

}  // namespace
}  // namespace tq

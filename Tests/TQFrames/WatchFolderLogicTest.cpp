#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQFrames/WatchFolderLogic.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using test::TemporaryFolder;
using FileEvent = WatchFolderLogic::FileEvent;
using Snapshot = WatchFolderLogic::Snapshot;
using URLs = std::vector<WatchFolderLogic::URL>;

constexpr Date now(1'700'000'000s);
constexpr double debounce = 1.5;

WatchFolderLogic::Reduction reduce(const Snapshot& previous, const std::vector<FileEvent>& current, Date at = now,
                                   const std::vector<std::string>& globs = {}) {
  return WatchFolderLogic::reduce(previous, current, at, debounce, globs);
}

const FileEvent oldClip{.url = "/in/clip.mov", .modified = now - 10s, .size = 100};

TEST(WatchFolderReduce, AFileModifiedAtTheCutoffExactlyIsStable) {
  const FileEvent clip{"/in/clip.mov", now - 1500ms, 1};
  EXPECT_EQ(reduce({}, {clip}), (WatchFolderLogic::Reduction{{clip.url}, {clip}}));
}

TEST(WatchFolderReduce, AFileModifiedJustAfterTheCutoffIsLeftForALaterCall) {
  const FileEvent clip{"/in/clip.mov", now - 1500ms + 1ns, 1};
  EXPECT_EQ(reduce({}, {clip}), WatchFolderLogic::Reduction{});
  EXPECT_EQ(reduce({}, {clip}, now + 1ns).emit, URLs{clip.url});
}

TEST(WatchFolderReduce, AFileFromTheFutureWaitsForItsDate) {
  const FileEvent clip{"/in/clip.mov", now + 1h, 1};
  EXPECT_EQ(reduce({}, {clip}).emit, URLs{});
  EXPECT_EQ(reduce({}, {clip}, now + 2h).emit, URLs{clip.url});
}

TEST(WatchFolderReduce, AFileWithoutADateIsStable) {
  const FileEvent clip{"/in/clip.mov", Date::min(), 0};
  EXPECT_EQ(reduce({}, {clip}).emit, URLs{clip.url});
}

TEST(WatchFolderReduce, AFileOfAnOldDateIsReportedAtOnceAndOnlyOnce) {
  const auto first = reduce({}, {oldClip});
  EXPECT_EQ(first.emit, URLs{oldClip.url});
  EXPECT_EQ(reduce(first.next, {oldClip}, now + 1min), (WatchFolderLogic::Reduction{{}, first.next}));
}

TEST(WatchFolderReduce, AFileWrittenForTenSecondsIsReportedOnceAfterItsLastWrite) {
  Snapshot snapshot;
  std::vector<Date> reports;
  for (Date time = now; time <= now + 15s; time += 500ms) {
    const Date lastWrite = std::min(time, now + 10s);
    auto result = reduce(snapshot, {{"/in/clip.mov", lastWrite, (lastWrite - now).count()}}, time);
    if (!result.emit.empty()) reports.push_back(time);
    snapshot = std::move(result.next);
  }
  EXPECT_EQ(reports, std::vector<Date>{now + 11500ms});
}

TEST(WatchFolderReduce, ATouchedFileIsReportedAgainWithItsNewDate) {
  FileEvent touched = oldClip;
  touched.modified += 5s;
  const auto result = reduce({oldClip}, {touched});
  EXPECT_EQ(result.emit, URLs{oldClip.url});
  EXPECT_EQ(result.next, (Snapshot{touched}));
}

TEST(WatchFolderReduce, AnEarlierDateIsANewStateToo) {
  FileEvent restored = oldClip;
  restored.modified -= 1h;
  EXPECT_EQ(reduce({oldClip}, {restored}).emit, URLs{oldClip.url});
}

TEST(WatchFolderReduce, AnotherSizeOfTheSameDateIsANewState) {
  FileEvent grown = oldClip;
  grown.size += 1;
  EXPECT_EQ(reduce({oldClip}, {grown}).emit, URLs{oldClip.url});
}

TEST(WatchFolderReduce, AReportedFileThatIsWrittenAgainKeepsItsOldEntryUntilItIsStable) {
  FileEvent writing = oldClip;
  writing.modified = now;
  const Snapshot known{oldClip};
  EXPECT_EQ(reduce(known, {writing}), (WatchFolderLogic::Reduction{{}, known}));
}

TEST(WatchFolderReduce, AFileThatVanishesAndReturnsUnchangedIsNotReported) {
  const auto gone = reduce({oldClip}, {});
  EXPECT_EQ(gone.next, (Snapshot{oldClip}));
  EXPECT_EQ(reduce(gone.next, {oldClip}).emit, URLs{});
}

TEST(WatchFolderReduce, AFileThatVanishesAndReturnsWithANewDateIsReported) {
  FileEvent returned = oldClip;
  returned.modified += 1s;
  EXPECT_EQ(reduce(reduce({oldClip}, {}).next, {returned}).emit, URLs{oldClip.url});
}

TEST(WatchFolderReduce, WhatIsExcludedOrNoVideoNeverEntersTheSnapshot) {
  const auto result =
      reduce({}, {{"/in/notes.txt", now - 1h, 1}, {"/in/draft-1.mov", now - 1h, 1}, oldClip}, now, {"draft*"});
  EXPECT_EQ(result.emit, URLs{oldClip.url});
  EXPECT_EQ(result.next, (Snapshot{oldClip}));
}

TEST(WatchFolderReduce, OnlyTheNameIsTestedAndNeverTheFolder) {
  const FileEvent clip{"/draft/clip.mov", now - 1h, 1};
  EXPECT_EQ(reduce({}, {clip}, now, {"*draft*", "/draft/*"}).emit, URLs{clip.url});
}

TEST(WatchFolderReduce, ReportsInTheOrderOfTheListing) {
  const FileEvent b{"/in/b.mov", now - 1h, 1}, a{"/in/a.MP4", now - 2h, 1};
  EXPECT_EQ(reduce({}, {b, a}).emit, (URLs{b.url, a.url}));
}

TEST(WatchFolderReduce, ADateBeyondThoseOfTheClockIsNeverStableAndSeededAllTheSame) {
  const FileEvent clip{"/in/clip.mov", Date::max(), 1};
  EXPECT_EQ(reduce({}, {clip}, now + 24h * 365 * 100).emit, URLs{});
  EXPECT_EQ(WatchFolderLogic::reduce({}, {clip}, Date::max(), 0, {}).next, Snapshot{clip});
}

TEST(WatchFolderReduce, AFileThatIsListedTwiceIsMeasuredByThePreviousStateBothTimes) {
  EXPECT_EQ(reduce({}, {oldClip, oldClip}), (WatchFolderLogic::Reduction{{oldClip.url, oldClip.url}, {oldClip}}));
}

TEST(WatchFolderReduce, NoTimeIsNeededWhereTheDebounceIsNone) {
  const FileEvent clip{"/in/clip.mov", now, 1};
  EXPECT_EQ(WatchFolderLogic::reduce({}, {clip}, now, 0, {}).emit, URLs{clip.url});
}

TEST(IsCandidate, AVideoByItsNameThatIsNotExcluded) {
  EXPECT_TRUE(WatchFolderLogic::isCandidate("Clip.MOV", {}));
  EXPECT_TRUE(WatchFolderLogic::isCandidate("\xFF\n.mp4", {"*.mov"}));
  EXPECT_FALSE(WatchFolderLogic::isCandidate("clip.mov", {"*.MOV"}));
  EXPECT_FALSE(WatchFolderLogic::isCandidate("clip.description.json", {}));
  EXPECT_FALSE(WatchFolderLogic::isCandidate("mov", {}));
  EXPECT_FALSE(WatchFolderLogic::isCandidate(".mov", {}));
}

TEST(IsExcluded, AnyOneGlobIsEnough) {
  EXPECT_TRUE(WatchFolderLogic::isExcluded("a.mov", {"*.mp4", "a*"}));
  EXPECT_FALSE(WatchFolderLogic::isExcluded("b.mov", {"*.mp4", "a*"}));
  EXPECT_FALSE(WatchFolderLogic::isExcluded("b.mov", {}));
}

TEST(IsExcluded, SpacesAndTabsAtTheEndsDoNotCountButLineBreaksDo) {
  EXPECT_TRUE(WatchFolderLogic::isExcluded("a.mov", {" \ta.mov\t "}));
  EXPECT_TRUE(WatchFolderLogic::isExcluded("take 1.mov", {" take 1.mov"}));
  EXPECT_FALSE(WatchFolderLogic::isExcluded("a.mov", {"a.mov\n"}));
}

TEST(IsExcluded, AGlobOfOnlySpacesIsIgnored) {
  EXPECT_FALSE(WatchFolderLogic::isExcluded("a.mov", {"   ", "\t", ""}));
  EXPECT_FALSE(WatchFolderLogic::isExcluded("", {" "}));
}

struct GlobCase {
  const char* name;
  const char* pattern;
  bool matches;
};

class MatchesGlob : public testing::TestWithParam<GlobCase> {};

TEST_P(MatchesGlob, AsTheTableSays) {
  const auto& [name, pattern, matches] = GetParam();
  EXPECT_EQ(WatchFolderLogic::matchesGlob(name, pattern), matches) << name << " by " << pattern;
}

INSTANTIATE_TEST_SUITE_P(Texts, MatchesGlob,
                         testing::Values(GlobCase{"Clip.MOV", "*.mov", true}, GlobCase{"clip.mov", "*.MOV", true},
                                         GlobCase{"\xC3\x84.mov", "\xC3\xA4.*", true},  // A with two dots, both cases
                                         GlobCase{"clip.mov", "clip", false}, GlobCase{"clip", "clip.mov", false},
                                         GlobCase{"", "", true}, GlobCase{"a", "", false}));

INSTANTIATE_TEST_SUITE_P(QuestionMarks, MatchesGlob,
                         testing::Values(GlobCase{"a", "?", true}, GlobCase{"", "?", false}, GlobCase{"ab", "?", false},
                                         GlobCase{"e\xCC\x81", "?", true},          // one character of two code points
                                         GlobCase{"\xC3\xA9\xC3\xA9", "?", false},  // two characters
                                         GlobCase{"a?", "a?", true}, GlobCase{"*", "?", true},
                                         GlobCase{"\xFF", "?", true},  // a byte that is no text shows as one character
                                         GlobCase{"\xFF\n.mov", "??.mov", true}));

INSTANTIATE_TEST_SUITE_P(Stars, MatchesGlob,
                         testing::Values(GlobCase{"", "*", true}, GlobCase{"", "**", true}, GlobCase{"a", "a**", true},
                                         GlobCase{"abc", "a*c*", true}, GlobCase{"abcbd", "a*bd", true},
                                         GlobCase{"abab", "*ab", true}, GlobCase{"aab", "*ab", true},
                                         GlobCase{"abcb", "a*c", false}, GlobCase{"abc", "*?c", true},
                                         GlobCase{"c", "*?c", false}, GlobCase{"abc", "*?*?*?*", true},
                                         GlobCase{"ab", "*?*?*?*", false}));

// A star in the name stands for itself first, and the pattern's star is used up by it.
INSTANTIATE_TEST_SUITE_P(StarsInTheName, MatchesGlob,
                         testing::Values(GlobCase{"*", "*", true}, GlobCase{"*", "**", true},
                                         GlobCase{"a*", "a*", true}, GlobCase{"*a", "*", false},
                                         GlobCase{"*a.mov", "*.mov", false}, GlobCase{"a*b", "*b", true}));

INSTANTIATE_TEST_SUITE_P(NoOtherSigns, MatchesGlob,
                         testing::Values(GlobCase{"a", "[a]", false}, GlobCase{"[a]", "[a]", true},
                                         GlobCase{"?", "\\?", false}, GlobCase{"\\x", "\\?", true},
                                         GlobCase{"a.mov", "{a,b}.mov", false}));

TEST(MatchesGlobCost, ManyStarsEndSoon) {
  std::string pattern;
  for (int i = 0; i < 60; ++i)
    pattern += "*a";
  std::string name(250, 'a');
  name.back() = 'b';
  EXPECT_FALSE(WatchFolderLogic::matchesGlob(name, pattern));
}

class ShouldEnqueue : public testing::Test {
 protected:
  fs::path writeAt(const TemporaryFolder& folder, std::string_view name, Date date) {
    const auto file = folder.write(name, "");
    fs::last_write_time(file, std::chrono::file_clock::from_sys(date));
    return file;
  }

  const TemporaryFolder folder_;
  const fs::path clip_ = writeAt(folder_, "clip.take2.mov", now);
};

TEST_F(ShouldEnqueue, AClipWithoutSidecarIsNew) {
  folder_.write("clip.description.json", "");
  folder_.write("clip.take2.description (2).json", "");
  folder_.write("clip.take2.description.md", "");
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, AClipOfTheSidecarsDateIsDone) {
  writeAt(folder_, "clip.take2.description.json", now);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, AClipNewerThanItsSidecarIsDoneAgain) {
  writeAt(folder_, "clip.take2.description.json", now - 1ns);
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, AClipOlderThanItsSidecarIsDone) {
  writeAt(folder_, "clip.take2.description.json", now + 1s);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, TheSidecarDirectoryStandsForTheClipsOwn) {
  const TemporaryFolder sidecars;
  writeAt(folder_, "clip.take2.description.json", now + 1s);
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip_, sidecars.path()));
  writeAt(sidecars, "clip.take2.description.json", now + 1s);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(clip_, sidecars.path()));
}

TEST_F(ShouldEnqueue, AClipOfUnknownDateIsNotTakenUp) {
  writeAt(folder_, "gone.description.json", now);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(folder_ / "gone.mov", std::nullopt));
}

TEST_F(ShouldEnqueue, AMissingClipWithoutSidecarCountsAsNew) {
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(folder_ / "gone.mov", std::nullopt));
}

TEST_F(ShouldEnqueue, TheDateOfAFileIsThatOfItsContentAndAbsentWithoutOne) {
  EXPECT_EQ(WatchFolderLogic::modificationDate(clip_), now);
  EXPECT_EQ(WatchFolderLogic::modificationDate(folder_ / "gone.mov"), std::nullopt);
}

TEST_F(ShouldEnqueue, ALinkCountsAsWhatItPointsTo) {
  const TemporaryFolder elsewhere;
  fs::create_symlink(writeAt(elsewhere, "sidecar", now - 1s), folder_ / "clip.take2.description.json");
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
  writeAt(elsewhere, "sidecar", now);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, ALinkThatLeadsNowhereIsNoSidecar) {
  fs::create_symlink("nowhere", folder_ / "clip.take2.description.json");
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip_, std::nullopt));
}

TEST_F(ShouldEnqueue, NamesOfAnyBytesHaveTheirSidecars) {
  const auto clip = writeAt(folder_, "\xFF\n.mov", now);
  EXPECT_TRUE(WatchFolderLogic::shouldEnqueue(clip, std::nullopt));
  writeAt(folder_, "\xFF\n.description.json", now);
  EXPECT_FALSE(WatchFolderLogic::shouldEnqueue(clip, std::nullopt));
}

}  // namespace
}  // namespace tq

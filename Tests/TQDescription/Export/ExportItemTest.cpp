#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExportFixture.hpp"
#include "TQDescription/Export/ExportItem.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;

Shot shotAt(std::optional<std::string> timecode, std::optional<std::string> notes = std::nullopt) {
  Shot shot;
  shot.timecode = std::move(timecode);
  shot.framingNotes = std::move(notes);
  return shot;
}

DescriptionResult tenSeconds(std::vector<Shot> shots) {
  DescriptionResult result;
  result.source.filename = "a.mov";
  result.source.durationSeconds = 10;
  result.source.frameRate = 25;
  result.shots = std::move(shots);
  result.global.overallSummaryOneLine = "A street.";
  return result;
}

std::vector<ExportRange> rangesOf(const DescriptionResult& result, bool wholeClip = false) {
  return ExportItem::make("/clips/a.mov", result, wholeClip).ranges;
}

ExportRange whole(double end = 10) {
  return {0, end, "A street."};
}

TEST(ExportItemMake, KeepsTheClipAndItsRecord) {
  const DescriptionResult result = tenSeconds({});
  const ExportItem item = ExportItem::make("/clips/a.mov", result, true);
  EXPECT_EQ(item.mediaURL, "/clips/a.mov");
  EXPECT_EQ(*item.result, result);
}

TEST(ExportItemMake, AWholeClipIsOneRangeWhateverItsShots) {
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:00"), shotAt("00:00:05")}), true), ElementsAre(whole()));
}

TEST(ExportItemMake, AWholeClipWithoutASummaryHasNoName) {
  DescriptionResult result = tenSeconds({});
  result.global.overallSummaryOneLine.reset();
  EXPECT_THAT(rangesOf(result, true), ElementsAre(ExportRange{0, 10, std::nullopt}));
}

TEST(ExportItemMake, ADurationBelowZeroCountsAsZero) {
  DescriptionResult result = tenSeconds({});
  result.source.durationSeconds = -3;
  EXPECT_THAT(rangesOf(result, true), ElementsAre(whole(0)));
}

TEST(ExportItemMake, EveryShotReachesToTheNextAndTheLastToTheEnd) {
  EXPECT_THAT(
      rangesOf(tenSeconds({shotAt("00:00:01", "one"), shotAt("00:00:04.5", "two"), shotAt("00:00:08", "three")})),
      ElementsAre(ExportRange{1, 4.5, "one"}, ExportRange{4.5, 8, "two"}, ExportRange{8, 10, "three"}));
}

TEST(ExportItemMake, ShotsAreTakenInTheOrderOfTheirTimes) {
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:08", "three"), shotAt("00:00:01", "one"), shotAt("00:00:04", "two")})),
              ElementsAre(ExportRange{1, 4, "one"}, ExportRange{4, 8, "two"}, ExportRange{8, 10, "three"}));
}

TEST(ExportItemMake, OfShotsAtTheSameTimeOnlyTheLastGivesARange) {
  EXPECT_THAT(
      rangesOf(tenSeconds({shotAt("00:00:04", "first"), shotAt("00:00:00", "start"), shotAt("0:0:4.0", "second")})),
      ElementsAre(ExportRange{0, 4, "start"}, ExportRange{4, 10, "second"}));
}

TEST(ExportItemMake, ShotsWithoutATimeThatCanBeReadArePassedOver) {
  EXPECT_THAT(rangesOf(tenSeconds({shotAt(std::nullopt, "none"), shotAt("00:00:01", "one"), shotAt("soon", "bad"),
                                   shotAt("00:00:04", "two")})),
              ElementsAre(ExportRange{1, 4, "one"}, ExportRange{4, 10, "two"}));
}

TEST(ExportItemMake, FewerThanTwoTimesGiveTheWholeClip) {
  EXPECT_THAT(rangesOf(tenSeconds({})), ElementsAre(whole()));
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:05", "one")})), ElementsAre(whole()));
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:05", "one"), shotAt("00:05", "bad")})), ElementsAre(whole()));
}

TEST(ExportItemMake, AShotAtOrBehindTheEndGivesNoRange) {
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:00", "one"), shotAt("00:00:10", "end")})),
              ElementsAre(ExportRange{0, 10, "one"}));
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:00", "one"), shotAt("00:00:12", "behind")})),
              ElementsAre(ExportRange{0, 12, "one"}))
      << "only the last shot knows the end of the clip";
}

TEST(ExportItemMake, WithoutAnyRangeTheWholeClipIsTaken) {
  EXPECT_THAT(rangesOf(tenSeconds({shotAt("00:00:12"), shotAt("00:00:12")})), ElementsAre(whole()));
}

TEST(ExportItemMake, AClipWithoutADurationKeepsTheRangesBetweenItsShots) {
  DescriptionResult result = tenSeconds({shotAt("00:00:01", "one"), shotAt("00:00:03", "two")});
  result.source.durationSeconds = -1;
  EXPECT_THAT(rangesOf(result), ElementsAre(ExportRange{1, 3, "one"}));
}

std::optional<std::string> nameWith(std::optional<std::string> notes, std::optional<std::vector<std::string>> tags,
                                    std::optional<std::string> oneLine) {
  DescriptionResult result = tenSeconds({shotAt("00:00:00", std::move(notes)), shotAt("00:00:05")});
  result.shots.front().tags = std::move(tags);
  result.global.overallSummaryOneLine = std::move(oneLine);
  return rangesOf(result).front().name;
}

TEST(ExportItemMake, ARangeIsNamedByNotesThenTagThenSummary) {
  EXPECT_EQ(nameWith("notes", {{"tag"}}, "line"), "notes");
  EXPECT_EQ(nameWith("", {{"tag", "other"}}, "line"), "tag");
  EXPECT_EQ(nameWith(std::nullopt, {{"tag"}}, "line"), "tag");
  EXPECT_EQ(nameWith(std::nullopt, {{"", "other"}}, "line"), "line") << "only the first tag is looked at";
  EXPECT_EQ(nameWith(std::nullopt, std::vector<std::string>{}, "line"), "line");
  EXPECT_EQ(nameWith(std::nullopt, std::nullopt, ""), "");
  EXPECT_EQ(nameWith(std::nullopt, std::nullopt, std::nullopt), std::nullopt);
  EXPECT_EQ(nameWith(" ", std::nullopt, "line"), " ") << "a blank is a name";
}

TEST(ExportItem, TheFrameRateIsTheRecordsOrTwentyFive) {
  for (const double rate : {0.0, -1.0})
    EXPECT_EQ(exportItem("a.mov", {}, rate).frameRate(), 25.0) << rate;
  EXPECT_EQ(exportItem("a.mov", {}, 0.5).frameRate(), 0.5);
}

TEST(ExportItem, TheDurationIsTheRecordsAsItStands) {
  EXPECT_EQ(exportItem("a.mov", {}, 25, -2.5).durationSeconds(), -2.5);
}

TEST(ExportRange, ItsDurationIsNeverNegative) {
  EXPECT_EQ((ExportRange{.startSeconds = 1, .endSeconds = 3.5}).durationSeconds(), 2.5);
  EXPECT_EQ((ExportRange{.startSeconds = 3, .endSeconds = 1}).durationSeconds(), 0.0);
}

TEST(ExportItem, EqualOnesHashEquallyAndEveryPartCounts) {
  const ExportItem item = ExportItem::make("/a.mov", tenSeconds({}), true);
  EXPECT_EQ(hashOf(item), hashOf(ExportItem(item)));
  ExportItem moved = item, described = item, cut = item, renamed = item;
  moved.mediaURL = "/b.mov";
  described.result = DescriptionResult();
  cut.ranges.front().endSeconds = 9;
  renamed.ranges.front().name.reset();
  for (const ExportItem& other : {moved, described, cut, renamed}) {
    EXPECT_NE(item, other);
    EXPECT_NE(hashOf(item), hashOf(other));
  }
}

TEST(TimelineFrameRate, IsThatOfTheFirstItem) {
  EXPECT_EQ(timelineFrameRate({exportItem("film.mov", {}, 24), exportItem("tape.mov", {}, 30)}), 24.0);
  EXPECT_EQ(timelineFrameRate({}), 25.0);
}

}  // namespace
}  // namespace tq::test

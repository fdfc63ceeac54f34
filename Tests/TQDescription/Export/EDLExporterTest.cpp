#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

#include "ExportFixture.hpp"
#include "TQDescription/Export/EDLExporter.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);)
    lines.push_back(line);
  return lines;
}

/// The event lines alone.
std::vector<std::string> eventsOf(const std::vector<ExportItem>& items) {
  std::vector<std::string> events = linesOf(EDLExporter::exportItems(items, "t"));
  std::erase_if(events, [](const std::string& line) { return !line.starts_with(' ') && !std::isdigit(line[0]); });
  return events;
}

TEST(EDL, WithoutItemsThereAreTheTwoHeadLinesAlone) {
  EXPECT_EQ(EDLExporter::exportItems({}, "Cut"), "TITLE: Cut\nFCM: NON-DROP FRAME\n");
  EXPECT_EQ(EDLExporter::exportItems({exportItem("a.mov", {})}, ""), "TITLE: \nFCM: NON-DROP FRAME\n");
}

TEST(EDL, EveryRangeIsAnEventWithItsClipAndItsComment) {
  EXPECT_EQ(EDLExporter::exportItems({exportItem("a.mov", {{1, 3, "one"}, {10, 10.48, "two"}}),
                                      exportItem("b c.mp4", {{0, 60, std::nullopt}})},
                                     "Cut"),
            "TITLE: Cut\n"
            "FCM: NON-DROP FRAME\n"
            "001  AX       V     C        00:00:01:00 00:00:03:00 00:00:00:00 00:00:02:00\n"
            "* FROM CLIP NAME: a.mov\n"
            "* COMMENT: one\n"
            "002  AX       V     C        00:00:10:00 00:00:10:12 00:00:02:00 00:00:02:12\n"
            "* FROM CLIP NAME: a.mov\n"
            "* COMMENT: two\n"
            "003  AX       V     C        00:00:00:00 00:01:00:00 00:00:02:12 00:01:02:12\n"
            "* FROM CLIP NAME: b c.mp4\n");
}

TEST(EDL, AnEmptyNameGivesNoComment) {
  EXPECT_THAT(EDLExporter::exportItems({exportItem("a.mov", {{0, 1, ""}})}, "t"), Not(HasSubstr("COMMENT")));
  EXPECT_THAT(EDLExporter::exportItems({exportItem("a.mov", {{0, 1, " "}})}, "t"), HasSubstr("* COMMENT:  \n"));
}

TEST(EDL, RecordTimesCountInTheRateOfTheFirstItem) {
  EXPECT_THAT(eventsOf({exportItem("a.mov", {{0, 1.5, "x"}}, 50), exportItem("b.mov", {{0, 1.5, "y"}}, 24)}),
              ElementsAre("001  AX       V     C        00:00:00:00 00:00:01:25 00:00:00:00 00:00:01:25",
                          "002  AX       V     C        00:00:00:00 00:00:01:12 00:00:01:25 00:00:03:00"));
}

TEST(EDL, ARateOfZeroCountsAsTwentyFive) {
  EXPECT_THAT(eventsOf({exportItem("a.mov", {{0, 1.48, "x"}}, 0)}),
              ElementsAre("001  AX       V     C        00:00:00:00 00:00:01:12 00:00:00:00 00:00:01:12"));
}

TEST(EDL, TheCountIsNonDropFrameAtTheRatesOfBroadcast) {
  EXPECT_THAT(eventsOf({exportItem("a.mov", {{0, 3600, "x"}}, 29.97)}),
              ElementsAre("001  AX       V     C        00:00:00:00 00:59:56:12 00:00:00:00 00:59:56:12"));
}

TEST(EDL, AnEventWithoutLengthLeavesThePositionAlone) {
  EXPECT_THAT(eventsOf({exportItem("a.mov", {{5, 3, "x"}, {4, 4, "y"}, {1, 2, "z"}})}),
              ElementsAre("001  AX       V     C        00:00:05:00 00:00:03:00 00:00:00:00 00:00:00:00",
                          "002  AX       V     C        00:00:04:00 00:00:04:00 00:00:00:00 00:00:00:00",
                          "003  AX       V     C        00:00:01:00 00:00:02:00 00:00:00:00 00:00:01:00"));
}

TEST(EDL, EachRecordInIsTheRecordOutBeforeItAlsoOverHours) {
  std::vector<ExportRange> ranges;
  for (int index = 0; index < 1200; ++index)
    ranges.push_back({index * 0.1, index * 0.1 + 13.337, "x"});
  const auto events = eventsOf({exportItem("a.mov", ranges, 23.976)});
  ASSERT_THAT(events, SizeIs(1200));
  EXPECT_THAT(events[998], StartsWith("999  AX"));
  EXPECT_THAT(events[999], StartsWith("1000  AX")) << "the number grows where three digits are not enough";
  std::string recordOut = "00:00:00:00";
  for (const std::string& event : events) {
    const std::string times = event.substr(event.size() - 47);
    EXPECT_EQ(times.substr(24, 11), recordOut);
    recordOut = times.substr(36);
  }
  EXPECT_EQ(recordOut, "04:26:28:09") << "16004.4 s are 383721.49 frames";
}

TEST(EDL, TitleAndCommentStayOnTheirLine) {
  EXPECT_EQ(EDLExporter::exportItems({exportItem("a.mov", {{0, 1, "x\ny\rz\r\n\nend"}})}, "My\r\ncut\n"),
            "TITLE: My  cut \n"
            "FCM: NON-DROP FRAME\n"
            "001  AX       V     C        00:00:00:00 00:00:01:00 00:00:00:00 00:00:01:00\n"
            "* FROM CLIP NAME: a.mov\n"
            "* COMMENT: x y z   end\n");
}

TEST(EDL, TheNameOfTheClipIsUnaltered) {
  for (const std::string& name : awkwardTexts())
    EXPECT_THAT(linesOf(EDLExporter::exportItems({exportItem(name, {{0, 1, name}})}, name)),
                testing::Contains("* FROM CLIP NAME: " + name));
}

TEST(EDL, ALineBreakInTheNameOfTheClipStaysAsWell) {
  EXPECT_THAT(EDLExporter::exportItems({exportItem("a\nb.mov", {{0, 1, {}}})}, "t"),
              HasSubstr("* FROM CLIP NAME: a\nb.mov\n"));
}

TEST(EDL, AwkwardTextsMakeNoOtherLines) {
  for (const auto& texts : {awkwardTexts(), malformedTexts(), charactersOutsideXML()})
    for (const std::string& text : texts) {
      const std::string edl = EDLExporter::exportItems({exportItem(text, {{0, 1, text}})}, text);
      const std::string shown = validUTF8(text);
      EXPECT_TRUE(isValidUTF8(edl));
      std::vector<std::string> expected{"TITLE: " + shown, "FCM: NON-DROP FRAME",
                                        "001  AX       V     C        00:00:00:00 00:00:01:00 00:00:00:00 00:00:01:00",
                                        "* FROM CLIP NAME: " + shown};
      if (!shown.empty()) expected.push_back("* COMMENT: " + shown);
      EXPECT_EQ(linesOf(edl), expected);
      EXPECT_EQ(edl.back(), '\n');
    }
}

}  // namespace
}  // namespace tq::test

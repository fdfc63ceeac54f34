#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <regex>

#include "ExportFixture.hpp"
#include "TQCore/FileURL.hpp"
#include "TQDescription/Export/FCPXMLExporter.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "XMLDocument.hpp"

namespace tq::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The times that all `attribute`s of an element have, in the order of the document.
std::vector<FrameDuration> timesOf(const std::string& text, const std::string& element, const std::string& attribute) {
  const std::regex pattern("<" + element + " [^>]*" + attribute + R"re(="(\d+)/(\d+)s")re");
  std::vector<FrameDuration> times;
  for (std::sregex_iterator match(text.begin(), text.end(), pattern), end; match != end; ++match)
    times.push_back({std::stoll((*match)[1]), std::stoll((*match)[2])});
  return times;
}

// Times

TEST(FCPXMLRationalTime, IsAWholeNumberOfFrames) {
  EXPECT_EQ(FCPXMLExporter::rationalTime(1, 29.97), "30030/30000s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(1, 23.976), "24024/24000s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(2, 25), "50/25s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(2, 12.5), "2500/1250s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(3600, 59.94), "215999784/60000s");
}

TEST(FCPXMLRationalTime, ZeroKeepsItsDenominator) {
  EXPECT_EQ(FCPXMLExporter::rationalTime(0, 25), "0/25s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(-3, 29.97), "0/30000s");
  EXPECT_EQ(FCPXMLExporter::rationalTime(3, 0), "0/1s");
}

TEST(FCPXMLRationalTime, ValuesBeyondAllReasonDoNotOverflow) {
  EXPECT_EQ(FCPXMLExporter::rationalTime(1e300, 29.97), "9016206453995732992/30000s");
}

TEST(FCPXMLFrameDuration, IsTheFractionOfTheText) {
  for (const double rate : {23.976, 24.0, 25.0, 29.97, 30.0, 50.0, 59.94, 60.0, 12.5, 0.0, 119.88}) {
    const FrameDuration duration = FCPXMLExporter::frameDurationRational(rate);
    EXPECT_EQ(std::to_string(duration.num) + "/" + std::to_string(duration.den) + "s",
              Timecode::fcpxmlFrameDuration(rate));
    EXPECT_NE(duration.den, 0);
  }
}

// The document

TEST(FCPXML, WithoutItemsItIsAnEmptySequence) {
  EXPECT_EQ(FCPXMLExporter::exportItems({}, "Cut"), R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.10">
  <resources>
  </resources>
  <library>
    <event name="Cut">
      <project name="Cut">
        <sequence format="r1" duration="0/25s">
          <spine>
          </spine>
        </sequence>
      </project>
    </event>
  </library>
</fcpxml>
)");
}

TEST(FCPXML, EveryByteIsInItsPlace) {
  const ExportItem first = exportItem("a b.mov", {{1, 3, "one & two"}, {10, 10.48, std::nullopt}});
  const ExportItem second = exportItem("c.mp4", {{0.5, 2, ""}}, 29.97, 12.25);
  EXPECT_EQ(FCPXMLExporter::exportItems({first, second}, "My <cut>"), R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE fcpxml>
<fcpxml version="1.10">
  <resources>
    <format id="r1" name="FFVideoFormat" frameDuration="1/25s"/>
    <format id="r2" name="FFVideoFormat" frameDuration="1001/30000s"/>
    <asset id="r3" name="a b.mov" start="0s" duration="1500/25s" hasVideo="1" format="r1">
      <media-rep kind="original-media" src="file:///clips/a%20b.mov"/>
    </asset>
    <asset id="r4" name="c.mp4" start="0s" duration="367367/30000s" hasVideo="1" format="r2">
      <media-rep kind="original-media" src="file:///clips/c.mp4"/>
    </asset>
  </resources>
  <library>
    <event name="My &lt;cut&gt;">
      <project name="My &lt;cut&gt;">
        <sequence format="r1" duration="100/25s">
          <spine>
          <asset-clip ref="r3" offset="0/25s" name="one &amp; two" start="25/25s" duration="50/25s" format="r1"/>
          <asset-clip ref="r3" offset="50/25s" name="a b.mov" start="250/25s" duration="12/25s" format="r1"/>
          <asset-clip ref="r4" offset="62/25s" name="" start="15015/30000s" duration="45045/30000s" format="r2"/>
          </spine>
        </sequence>
      </project>
    </event>
  </library>
</fcpxml>
)");
}

TEST(FCPXML, FormatsAreOneForEachFrameDurationInOrderOfAppearance) {
  const std::string text = FCPXMLExporter::exportItems(
      {exportItem("a.mov", {}, 29.97), exportItem("b.mov", {}, 25), exportItem("c.mov", {}, 30000.0 / 1001),
       exportItem("d.mov", {}, 0), exportItem("e.mov", {}, 12.5)},
      "t");
  EXPECT_THAT(text, HasSubstr("<format id=\"r1\" name=\"FFVideoFormat\" frameDuration=\"1001/30000s\"/>\n"
                              "    <format id=\"r2\" name=\"FFVideoFormat\" frameDuration=\"1/25s\"/>\n"
                              "    <format id=\"r3\" name=\"FFVideoFormat\" frameDuration=\"100/1250s\"/>\n"
                              "    <asset id=\"r4\" name=\"a.mov\""));
  const XMLDocument document(text);
  for (const auto& [name, format] : {std::pair("a", "r1"), {"b", "r2"}, {"c", "r1"}, {"d", "r2"}, {"e", "r3"}})
    EXPECT_EQ(document.value("//asset[@name='" + std::string(name) + ".mov']/@format"), format);
  EXPECT_EQ(document.value("//sequence/@format"), "r1");
}

TEST(FCPXML, AnItemWithoutRangesIsAnAssetWithoutClips) {
  const std::string text = FCPXMLExporter::exportItems({exportItem("a.mov", {})}, "t");
  EXPECT_THAT(text, HasSubstr("<asset id=\"r2\""));
  EXPECT_THAT(text, Not(HasSubstr("asset-clip")));
  EXPECT_THAT(text, HasSubstr("duration=\"0/25s\">\n          <spine>\n          </spine>"));
}

TEST(FCPXML, ANegativeDurationOfAClipOrARangeCountsAsZero) {
  const ExportItem item = exportItem("a.mov", {{5, 3, "x"}, {1, 2, "y"}}, 25, -1);
  const std::string text = FCPXMLExporter::exportItems({item}, "t");
  EXPECT_THAT(text, HasSubstr(R"(start="0s" duration="0/25s")"));
  EXPECT_THAT(text, HasSubstr(R"(offset="0/25s" name="x" start="125/25s" duration="0/25s")"));
  EXPECT_THAT(text, HasSubstr(R"(offset="0/25s" name="y" start="25/25s" duration="25/25s")"));
}

TEST(FCPXML, AnEmptyProjectNameIsWrittenAsSuch) {
  EXPECT_THAT(FCPXMLExporter::exportItems({}, ""), HasSubstr("<event name=\"\">\n      <project name=\"\">"));
}

TEST(FCPXML, OffsetsCountInTheRateOfTheFirstItem) {
  const std::string text = FCPXMLExporter::exportItems(
      {exportItem("a.mov", {{0, 10, "x"}}, 23.976), exportItem("b.mov", {{0, 10, "y"}}, 60)}, "t");
  EXPECT_THAT(text, HasSubstr(R"(offset="240240/24000s" name="y" start="0/60s" duration="600/60s")"));
  EXPECT_THAT(text, HasSubstr(R"(<sequence format="r1" duration="480480/24000s">)"));
}

TEST(FCPXML, IdentifiersAreUniqueAndReferencesResolve) {
  std::vector<ExportItem> items;
  for (int index = 0; index < 60; ++index)
    items.push_back(exportItem(std::to_string(index) + ".mov", {{0, 1, "x"}, {1, 2.5, "y"}}, index % 7 * 10 + 5));
  const XMLDocument document(FCPXMLExporter::exportItems(items, "t"));
  ASSERT_TRUE(document.isWellFormed());
  EXPECT_EQ(document.value("count(//asset)"), "60");
  EXPECT_EQ(document.value("count(//asset-clip)"), "120");
  EXPECT_EQ(document.value("count(//*[@id = preceding::*/@id])"), "0");
  EXPECT_EQ(document.value("count(//*[@format][not(@format = //format/@id)])"), "0");
  EXPECT_EQ(document.value("count(//asset-clip[not(@ref = //asset/@id)])"), "0");
  for (int format = 1; format <= 7; ++format) {
    const std::string matching = "[@format = 'r" + std::to_string(format) + "']";
    EXPECT_EQ(document.value("count(//asset-clip" + matching + ")"),
              document.value("2 * count(//asset" + matching + ")"));
  }
}

TEST(FCPXML, ClipsFollowEachOtherWithoutGapsAndFillTheSequence) {
  // Lengths of whole frames, so that rounding cannot open a gap.
  for (const double rate : {24000.0 / 1001, 24.0, 25.0, 30000.0 / 1001, 30.0, 50.0, 60000.0 / 1001, 60.0, 12.5}) {
    std::vector<ExportRange> ranges;
    for (int index = 0; index < 2000; ++index)
      ranges.push_back({index / rate, (2 * index + 37) / rate, "x"});
    const std::string text = FCPXMLExporter::exportItems({exportItem("a.mov", ranges, rate)}, "t");
    const auto offsets = timesOf(text, "asset-clip", "offset"), durations = timesOf(text, "asset-clip", "duration");
    ASSERT_EQ(offsets.size(), 2000u);
    ASSERT_EQ(durations.size(), 2000u);
    std::int64_t position = 0;
    for (std::size_t index = 0; index < offsets.size(); ++index) {
      ASSERT_EQ(offsets[index].num, position) << rate << " " << index;
      ASSERT_EQ(offsets[index].den, durations[index].den);
      position += durations[index].num;
    }
    EXPECT_EQ(timesOf(text, "sequence", "duration"), (std::vector<FrameDuration>{{position, offsets.front().den}}));
  }
}

// Hostile texts

TEST(FCPXML, AwkwardNamesAreReadBackAsTheyWere) {
  for (const std::string& text : awkwardTexts()) {
    const XMLDocument document(FCPXMLExporter::exportItems({exportItem(text, {{0, 1, text}})}, text));
    ASSERT_TRUE(document.isWellFormed()) << text.substr(0, 60);
    for (const char* element : {"//event", "//project", "//asset", "//asset-clip"})
      EXPECT_EQ(document.value(element + std::string("/@name")), text) << element;
    EXPECT_EQ(document.value("//media-rep/@src"), fileURL("/clips/" + text));
  }
}

TEST(FCPXML, MalformedTextIsReplacedInNamesAndKeptInTheAddress) {
  for (const std::string& text : malformedTexts()) {
    const XMLDocument document(FCPXMLExporter::exportItems({exportItem(text, {{0, 1, text}})}, text));
    ASSERT_TRUE(document.isWellFormed());
    EXPECT_EQ(document.value("//asset-clip/@name"), validUTF8(text));
    EXPECT_EQ(parseFileURL(document.value("//media-rep/@src")), "/clips/" + text);
  }
}

TEST(FCPXML, StaysWellFormedWithCharactersThatXMLCannotHold) {
  std::string all;
  for (const std::string& character : charactersOutsideXML())
    all += character;
  const XMLDocument document(FCPXMLExporter::exportItems({exportItem(all, {{0, 1, all}})}, all));
  ASSERT_TRUE(document.isWellFormed());
  EXPECT_EQ(document.value("string-length(//asset-clip/@name)"), "31");
  EXPECT_EQ(document.value("translate(//asset-clip/@name, '\uFFFD', '')"), "");
}

TEST(FCPXML, StaysWellFormedWithLineBreaksAndTabs) {
  const XMLDocument document(FCPXMLExporter::exportItems({exportItem("a.mov", {{0, 1, "a\nb\tc\r\nd"}})}, "x\ny"));
  ASSERT_TRUE(document.isWellFormed());
  EXPECT_EQ(document.value("//asset-clip/@name"), "a b c d") << "as XML reads them";
}

TEST(FCPXML, ThePathOfTheClipIsAFileAddress) {
  ExportItem item = exportItem("x", {});
  item.mediaURL = "/v/Tom & Jerry's \"50%\" <#1?>/caf\u00E9;\U0001F600.mov";
  EXPECT_THAT(FCPXMLExporter::exportItems({item}, "t"),
              HasSubstr("src=\"file:///v/Tom%20&amp;%20Jerry&apos;s%20%2250%25%22%20%3C%231%3F%3E/"
                        "caf%C3%A9;%F0%9F%98%80.mov\"/>"));
}

}  // namespace
}  // namespace tq::test

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <regex>

#include "ExportFixture.hpp"
#include "TQDescription/Export/FCPXMLExporter.hpp"
#include "XMLDocument.hpp"

namespace tq::test {
namespace {

/// What the public reference of FCPXML 1.10 (https://developer.apple.com/documentation/professional-video-applications/
/// fcpxml-reference) says of the elements that belong into a project of clips: their order, the attributes that they
/// must have and may have, and which of those are identifiers and references.
constexpr const char* definition = R"(
<!ELEMENT fcpxml (resources?, (library | event*))>
<!ATTLIST fcpxml version CDATA #FIXED "1.10">
<!ELEMENT resources (asset | format)*>
<!ELEMENT format EMPTY>
<!ATTLIST format id ID #REQUIRED name CDATA #IMPLIED frameDuration CDATA #IMPLIED fieldOrder CDATA #IMPLIED
  width CDATA #IMPLIED height CDATA #IMPLIED colorSpace CDATA #IMPLIED>
<!ELEMENT asset (media-rep+)>
<!ATTLIST asset id ID #REQUIRED name CDATA #IMPLIED uid CDATA #IMPLIED start CDATA #IMPLIED duration CDATA #IMPLIED
  hasVideo CDATA #IMPLIED format IDREF #IMPLIED hasAudio CDATA #IMPLIED audioSources CDATA #IMPLIED
  audioChannels CDATA #IMPLIED audioRate CDATA #IMPLIED videoSources CDATA #IMPLIED>
<!ELEMENT media-rep EMPTY>
<!ATTLIST media-rep kind (original-media | proxy-media) "original-media" sig CDATA #IMPLIED src CDATA #REQUIRED
  suggestedFilename CDATA #IMPLIED>
<!ELEMENT library (event*)>
<!ATTLIST library location CDATA #IMPLIED>
<!ELEMENT event (project | asset-clip)*>
<!ATTLIST event name CDATA #IMPLIED uid CDATA #IMPLIED>
<!ELEMENT project (sequence)>
<!ATTLIST project name CDATA #IMPLIED uid CDATA #IMPLIED id CDATA #IMPLIED modDate CDATA #IMPLIED>
<!ELEMENT sequence (spine)>
<!ATTLIST sequence format IDREF #REQUIRED duration CDATA #IMPLIED tcStart CDATA #IMPLIED tcFormat (DF | NDF) #IMPLIED>
<!ELEMENT spine (asset-clip)*>
<!ATTLIST spine lane CDATA #IMPLIED offset CDATA #IMPLIED name CDATA #IMPLIED format IDREF #IMPLIED>
<!ELEMENT asset-clip EMPTY>
<!ATTLIST asset-clip ref IDREF #REQUIRED lane CDATA #IMPLIED offset CDATA #IMPLIED name CDATA #IMPLIED
  start CDATA #IMPLIED duration CDATA #IMPLIED enabled (0 | 1) "1" format IDREF #IMPLIED tcStart CDATA #IMPLIED
  tcFormat (DF | NDF) #IMPLIED>
)";

using Attributes = std::map<std::string, std::string>;

/// The attributes of every `element`, in the order of the document.
std::vector<Attributes> elementsOf(const std::string& text, const std::string& element) {
  const std::regex tag("<" + element + R"re((( [A-Za-z]+="[^"]*")*)/?>)re"), attribute(R"re(([A-Za-z]+)="([^"]*)")re");
  std::vector<Attributes> elements;
  for (std::sregex_iterator found(text.begin(), text.end(), tag), end; found != end; ++found) {
    const std::string inside = (*found)[1];
    Attributes& attributes = elements.emplace_back();
    for (std::sregex_iterator each(inside.begin(), inside.end(), attribute); each != end; ++each)
      attributes[(*each)[1]] = (*each)[2];
  }
  return elements;
}

/// "1001/24000s" as the two numbers.
FrameDuration fraction(const std::string& time) {
  std::smatch parts;
  if (!std::regex_match(time, parts, std::regex(R"((\d+)/([1-9]\d*)s)"))) throw std::runtime_error("no time: " + time);
  return {std::stoll(parts[1]), std::stoll(parts[2])};
}

/// How many frames a time comes to; -1 where it is no whole number of them.
std::int64_t framesIn(const std::string& time, const std::string& frameDuration) {
  const FrameDuration whole = fraction(time), frame = fraction(frameDuration);
  const std::int64_t numerator = whole.num * frame.den, denominator = whole.den * frame.num;
  return numerator % denominator == 0 ? numerator / denominator : -1;
}

constexpr double rates[] = {24000.0 / 1001, 23.976, 24, 25, 30000.0 / 1001, 29.97,  30,  50, 60000.0 / 1001,
                            59.94,          60,     15, 48, 12.5,           119.88, 240, 1,  7.77};

/// Every rate is that of one item; ranges touch the start, the borders of hours and the end.
std::vector<ExportItem> itemsOfEveryRate() {
  std::vector<ExportItem> items;
  for (const double rate : rates)
    items.push_back(exportItem("clip " + std::to_string(items.size()) + ".mov",
                               {{0, 1, "one"}, {1.001, 2.345, {}}, {3599.99, 3600.01, "border"}, {7199, 90'000.5, ""}},
                               rate, 90'000.5));
  return items;
}

TEST(FCPXMLStructure, FollowsTheDefinitionOfTheFormat) {
  EXPECT_TRUE(XMLDocument(FCPXMLExporter::exportItems(itemsOfEveryRate(), "Cut")).isValidBy(definition));
  EXPECT_TRUE(XMLDocument(FCPXMLExporter::exportItems({exportItem("a.mov", {})}, "")).isValidBy(definition));
}

TEST(FCPXMLStructure, AwkwardNamesChangeNothingAboutIt) {
  for (const auto& texts : {awkwardTexts(), malformedTexts(), charactersOutsideXML()})
    for (const std::string& text : texts)
      EXPECT_TRUE(
          XMLDocument(FCPXMLExporter::exportItems({exportItem(text, {{0, 1, text}})}, text)).isValidBy(definition))
          << text.substr(0, 60);
}

TEST(FCPXMLStructure, TheDefinitionRefusesWhatTheFormatDoes) {
  const std::string text = FCPXMLExporter::exportItems(itemsOfEveryRate(), "Cut");
  for (const auto& [from, to] : {std::pair(R"(version="1.10")", R"(version="1.9")"),
                                 {R"(id="r2")", R"(id="r1")"},
                                 {R"(ref="r16")", R"(ref="r99")"},
                                 {R"(<sequence format="r1")", "<sequence"},
                                 {R"(<media-rep kind="original-media")", R"(<media-rep kind="copy")"},
                                 {"</spine>", "</spine><spine/>"},
                                 {"<resources>", "<resources><library/>"}}) {
    std::string broken = text;
    ASSERT_NE(broken.find(from), std::string::npos) << from;
    broken.replace(broken.find(from), std::string(from).size(), to);
    EXPECT_FALSE(XMLDocument(broken).isValidBy(definition)) << to;
  }
}

TEST(FCPXMLStructure, EveryTimeIsAWholeNumberOfTheFramesThatItsFormatCounts) {
  const std::vector<ExportItem> items = itemsOfEveryRate();
  const std::string text = FCPXMLExporter::exportItems(items, "Cut");
  std::map<std::string, std::string> frameDurations;
  for (const Attributes& format : elementsOf(text, "format"))
    frameDurations[format.at("id")] = format.at("frameDuration");
  const Attributes sequence = elementsOf(text, "sequence").at(0);
  const std::string& timelineFrame = frameDurations.at(sequence.at("format"));

  const std::vector<Attributes> assets = elementsOf(text, "asset"), clips = elementsOf(text, "asset-clip");
  ASSERT_EQ(assets.size(), items.size());
  ASSERT_EQ(clips.size(), 4 * items.size());
  double position = 0;
  for (std::size_t index = 0; index < items.size(); ++index) {
    const double rate = items[index].frameRate();
    const std::string& frame = frameDurations.at(assets[index].at("format"));
    EXPECT_EQ(frame, Timecode::fcpxmlFrameDuration(rate));
    EXPECT_EQ(framesIn(assets[index].at("duration"), frame), Timecode::frames(90'000.5, rate));
    for (std::size_t number = 0; number < 4; ++number) {
      const ExportRange& range = items[index].ranges[number];
      const Attributes& clip = clips[4 * index + number];
      EXPECT_EQ(clip.at("ref"), assets[index].at("id"));
      EXPECT_EQ(clip.at("format"), assets[index].at("format"));
      EXPECT_EQ(framesIn(clip.at("start"), frame), Timecode::frames(range.startSeconds, rate)) << rate;
      EXPECT_EQ(framesIn(clip.at("duration"), frame), Timecode::frames(range.durationSeconds(), rate)) << rate;
      EXPECT_EQ(framesIn(clip.at("offset"), timelineFrame), Timecode::frames(position, rates[0])) << rate;
      position += range.durationSeconds();
    }
  }
  EXPECT_EQ(framesIn(sequence.at("duration"), timelineFrame), Timecode::frames(position, rates[0]));
}

}  // namespace
}  // namespace tq::test

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ExportFixture.hpp"
#include "TQDescription/Export/CSVMarkersExporter.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;

const std::string head = "file,tc_in,tc_out,name\n";

/// The fields of every line, read as RFC 4180 says.
std::vector<std::vector<std::string>> readCSV(const std::string& text) {
  std::vector<std::vector<std::string>> lines(1, {""});
  bool quoted = false;
  for (std::size_t index = 0; index < text.size(); ++index) {
    const char c = text[index];
    std::string& field = lines.back().back();
    if (quoted && c == '"' && index + 1 < text.size() && text[index + 1] == '"') {
      field += text[++index];
    } else if (c == '"') {
      quoted = !quoted;
    } else if (!quoted && c == ',') {
      lines.back().emplace_back();
    } else if (!quoted && c == '\n') {
      lines.push_back({""});
    } else {
      field += c;
    }
  }
  EXPECT_FALSE(quoted);
  EXPECT_THAT(lines.back(), ElementsAre("")) << "the text ends in one line feed";
  lines.pop_back();
  return lines;
}

std::string csvOf(const std::string& filename, const std::optional<std::string>& name) {
  return CSVMarkersExporter::exportItems({exportItem(filename, {{0, 1, name}})});
}

TEST(CSVMarkers, WithoutItemsThereIsTheHeadAlone) {
  EXPECT_EQ(CSVMarkersExporter::exportItems({}), head);
  EXPECT_EQ(CSVMarkersExporter::exportItems({exportItem("a.mov", {})}), head);
}

TEST(CSVMarkers, EveryRangeOfEveryItemIsALine) {
  EXPECT_EQ(CSVMarkersExporter::exportItems({exportItem("a.mov", {{0, 1.5, "one"}, {1.5, 61, "two"}}),
                                             exportItem("b.mp4", {{3599.96, 3600, std::nullopt}})}),
            head +
                "a.mov,00:00:00:00,00:00:01:13,one\na.mov,00:00:01:13,00:01:01:00,two\n"
                "b.mp4,00:59:59:24,01:00:00:00,\n");
}

TEST(CSVMarkers, TimesCountInTheRateOfTheirItem) {
  EXPECT_EQ(CSVMarkersExporter::exportItems({exportItem("a.mov", {{0, 3600, "x"}}, 29.97),
                                             exportItem("b.mov", {{0, 1.5, "y"}}, 50),
                                             exportItem("c.mov", {{0, 1.48, "z"}}, 0)}),
            head +
                "a.mov,00:00:00:00,00:59:56:12,x\nb.mov,00:00:00:00,00:00:01:25,y\n"
                "c.mov,00:00:00:00,00:00:01:12,z\n");
}

TEST(CSVMarkers, ATimeBeforeTheStartIsTheStart) {
  EXPECT_EQ(CSVMarkersExporter::exportItems({exportItem("a.mov", {{-2, -1, "x"}})}),
            head + "a.mov,00:00:00:00,00:00:00:00,x\n");
}

TEST(CSVMarkers, AFieldIsQuotedOnlyWhereItMustBe) {
  EXPECT_EQ(csvOf("a b;c.mov", "it's 50% | ok"), head + "a b;c.mov,00:00:00:00,00:00:01:00,it's 50% | ok\n");
  EXPECT_EQ(csvOf("a,b.mov", "x"), head + "\"a,b.mov\",00:00:00:00,00:00:01:00,x\n");
  EXPECT_EQ(csvOf("a.mov", "x\ny"), head + "a.mov,00:00:00:00,00:00:01:00,\"x\ny\"\n");
  EXPECT_EQ(csvOf("a.mov", "x\ry"), head + "a.mov,00:00:00:00,00:00:01:00,\"x\ry\"\n");
  EXPECT_EQ(csvOf("a.mov", "x\r\ny"), head + "a.mov,00:00:00:00,00:00:01:00,\"x\r\ny\"\n");
}

TEST(CSVMarkers, AQuoteInsideIsDoubled) {
  EXPECT_EQ(csvOf("a.mov", R"(say "hi", ok)"), head + "a.mov,00:00:00:00,00:00:01:00," + R"("say ""hi"", ok")" + "\n");
  EXPECT_EQ(csvOf("a.mov", "\""), head + "a.mov,00:00:00:00,00:00:01:00,\"\"\"\"\n");
}

TEST(CSVMarkers, TextThatASpreadsheetTakesForAFormulaStaysAsItIs) {
  for (const std::string name : {"=1+1", "+49", "-dash", "@SUM(A1)"})
    EXPECT_EQ(csvOf(name, name), head + name + ",00:00:00:00,00:00:01:00," + name + "\n");
}

TEST(CSVMarkers, WhatIsReadBackIsWhatWasWritten) {
  std::vector<std::string> texts = awkwardTexts();
  for (const char* text : {"\n", "\r", "\r\n", "a\nb", "\"\n\"", "tab\there", "\x01\x7F"})
    texts.emplace_back(text);
  for (const std::string& text : texts) {
    const auto lines = readCSV(csvOf(text, text));
    ASSERT_EQ(lines.size(), 2u) << text.substr(0, 40);
    EXPECT_THAT(lines[1], ElementsAre(text, "00:00:00:00", "00:00:01:00", text));
  }
}

TEST(CSVMarkers, MalformedTextIsReplacedAndDisturbsNothing) {
  for (const std::string& text : malformedTexts()) {
    const std::string csv = csvOf(text, text);
    EXPECT_TRUE(isValidUTF8(csv));
    const auto lines = readCSV(csv);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_THAT(lines[1], ElementsAre(validUTF8(text), "00:00:00:00", "00:00:01:00", validUTF8(text)));
  }
}

}  // namespace
}  // namespace tq::test

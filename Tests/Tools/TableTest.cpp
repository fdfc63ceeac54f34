#include <gtest/gtest.h>
#include <sstream>

#include "Tools/Shared/Table.hpp"

namespace tq::tools {
namespace {

using Rows = std::vector<std::vector<std::string>>;

std::string shown(const Rows& rows, std::optional<int> columns,
                  const std::vector<Alignment>& alignments = {Alignment::right, Alignment::left, Alignment::left}) {
  Table table(alignments);
  for (const auto& row : rows)
    table.add(row);
  std::ostringstream out;
  table.print(out, columns);
  return out.str();
}

TEST(Table, WithoutRowsIsNothing) {
  EXPECT_EQ(shown({}, 80), "");
  EXPECT_EQ(shown({}, std::nullopt), "");
}

TEST(Table, OnATerminalColumnsAreAligned) {
  EXPECT_EQ(shown({{"100%", "a.mov", "One."}, {"5%", "long.mov", "Two."}}, 80),
            "100%  a.mov     One.\n"
            "  5%  long.mov  Two.\n");
}

TEST(Table, WideAndMarkedTextIsAlignedByWhatIsSeen) {
  EXPECT_EQ(shown({{"1", "日本.mov", "x"}, {"2", "cafe\u0301.mov", "x"}, {"3", "a.mov", "x"}}, 80),
            "1  日本.mov  x\n"
            "2  cafe\u0301.mov  x\n"
            "3  a.mov     x\n");
}

TEST(Table, ElsewhereCellsAreSeparatedByTabsAndWhole) {
  const std::string longText(500, 'x');
  EXPECT_EQ(shown({{"100%", "a.mov", longText}, {"", "", ""}}, std::nullopt), "100%\ta.mov\t" + longText + "\n\t\t\n");
}

TEST(Table, WhatCouldBreakALineIsShownAsAnEscape) {
  EXPECT_EQ(shown({{"a\tb", "c\nd", "\x1b[31m"}}, std::nullopt), "a\\tb\tc\\nd\t\\x1b[31m\n");
  EXPECT_EQ(shown({{"a\tb", "c\nd", "\xff"}}, 80), "a\\tb  c\\nd  \uFFFD\n");
}

TEST(Table, LinesAreCutToTheTerminal) {
  EXPECT_EQ(shown({{"1", "a.mov", "A very long text"}}, 20), "1  a.mov  A very l…\n");
  EXPECT_EQ(shown({{"1", "a.mov", "Ends here."}}, 20), "1  a.mov  Ends here.\n");
}

TEST(Table, NoColumnTakesMoreThanHalfOfTheTerminal) {
  EXPECT_EQ(shown({{"1", "a-very-long-name-of-a-clip.mov", "Text"}}, 20), "1  a-very-l…   Text\n");
}

TEST(Table, OnATerminalAColumnWithoutContentTakesNoRoom) {
  EXPECT_EQ(shown({{"", "a.mov", ""}, {"", "b.mov", "x"}}, 80), "a.mov\nb.mov  x\n");
  EXPECT_EQ(shown({{"", "", "x"}}, 80), "x\n");
}

TEST(Table, LinesEndWithoutBlanks) {
  EXPECT_EQ(shown({{"1", "a", ""}, {"2", "long", "x"}}, 80), "1  a\n2  long  x\n");
}

TEST(Table, AnAbsurdlyNarrowTerminalStillGetsARowALine) {
  const std::string text = shown({{"100%", "a.mov", "One."}, {"5%", "b.mov", "Two."}}, 1);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 2);
  EXPECT_NO_THROW(shown({{"100%", "a.mov", "One."}}, 0));
}

}  // namespace
}  // namespace tq::tools

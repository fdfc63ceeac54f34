#include <gtest/gtest.h>

#include "Tools/Shared/PlainText.hpp"

namespace tq::tools {
namespace {

TEST(Printable, LeavesOrdinaryTextAlone) {
  EXPECT_EQ(printable("Ein Café – 港 👩‍👩‍👧.mp4"), "Ein Café – 港 👩‍👩‍👧.mp4");
  EXPECT_EQ(printable(""), "");
}

TEST(Printable, ShowsLineBreaksAndTabsAsEscapes) {
  EXPECT_EQ(printable("a\nb\rc\td"), "a\\nb\\x0dc\\td");
}

TEST(Printable, TakesTheForceOutOfTerminalSequences) {
  EXPECT_EQ(printable("\x1b[2J\x1b]0;title\x07"), "\\x1b[2J\\x1b]0;title\\x07");
  EXPECT_EQ(printable("\x7f"), "\\x7f");
}

TEST(Printable, TakesTheForceOutOfEightBitControls) {
  EXPECT_EQ(printable("\u009b2J"), "\\x9b2J");
  EXPECT_EQ(printable("\u0080\u009f"), "\\x80\\x9f");
  EXPECT_EQ(printable("\u00a0\u00bf"), "\u00a0\u00bf");
}

TEST(Printable, ShowsMarksThatTurnTheDirection) {
  EXPECT_EQ(printable("a\u202egpj.exe"), "a\\u202egpj.exe");
  EXPECT_EQ(printable("\u202a\u202b\u202c\u202d"), "\\u202a\\u202b\\u202c\\u202d");
  EXPECT_EQ(printable("\u2066\u2067\u2068\u2069"), "\\u2066\\u2067\\u2068\\u2069");
  EXPECT_EQ(printable("\u2029\u202f\u2065\u206a"), "\u2029\u202f\u2065\u206a");
}

TEST(Printable, ReplacesBytesThatAreNoText) {
  EXPECT_EQ(printable("caf\xe9.mp4"), "caf\ufffd.mp4");
  EXPECT_EQ(printable("\xc2"), "\ufffd");
}

TEST(Fitted, LeavesWhatFits) {
  EXPECT_EQ(fitted("", 0), "");
  EXPECT_EQ(fitted("harbour", 7), "harbour");
  EXPECT_EQ(fitted("harbour", 80), "harbour");
}

TEST(Fitted, MarksTheCutWithinTheWidth) {
  EXPECT_EQ(fitted("harbour", 6), "harb…");
  EXPECT_EQ(fitted("harbour", 2), "…");
  EXPECT_EQ(fitted("harbour", 1), "…");
}

TEST(Fitted, CountsCharactersBeyondASCIITwice) {
  EXPECT_EQ(fitted("港港港", 6), "港港港");
  EXPECT_EQ(fitted("港港港", 5), "港…");
}

TEST(Fitted, NeverCutsACharacterInTwo) {
  const std::string family = "👩‍👩‍👧";
  EXPECT_EQ(fitted("ab" + family + "c", 12), "ab…") << "five code points, drawn side by side by many terminals";
  EXPECT_EQ(fitted("ab" + family + "c", 13), "ab" + family + "c");
}

TEST(RoughDuration, SpeaksInTheUnitThatMatters) {
  EXPECT_EQ(roughDuration(-5), "about 1 s");
  EXPECT_EQ(roughDuration(0), "about 1 s");
  EXPECT_EQ(roughDuration(0.2), "about 1 s");
  EXPECT_EQ(roughDuration(40), "about 40 s");
  EXPECT_EQ(roughDuration(99), "about 99 s");
  EXPECT_EQ(roughDuration(100), "about 2 min");
  EXPECT_EQ(roughDuration(149), "about 2 min");
  EXPECT_EQ(roughDuration(150), "about 3 min");
  EXPECT_EQ(roughDuration(99 * 60), "about 99 min");
  EXPECT_EQ(roughDuration(130 * 60), "about 2 h 10 min");
}

}  // namespace
}  // namespace tq::tools

#include <gtest/gtest.h>
#include <random>
#include <unicode/ubrk.h>
#include <unicode/utext.h>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr std::string_view family = "👨‍👩‍👧";
constexpr std::string_view accented = "e\u0301";  // two code points

TEST(IsValidUTF8, AcceptsWellFormedText) {
  for (const std::string_view text : {"", "abc", "é", "€", "😀", "\xEF\xBF\xBF"})
    EXPECT_TRUE(isValidUTF8(text)) << text;
}

TEST(IsValidUTF8, RefusesMalformedSequences) {
  for (const std::string_view text : {"\xff", "a\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
    EXPECT_FALSE(isValidUTF8(text));
}

TEST(ValidUTF8, ReplacesEachMalformedSequenceAndNothingElse) {
  EXPECT_EQ(validUTF8("a\xff\xfeé\xE2\x82z"), "a\uFFFD\uFFFDé\uFFFDz");
  EXPECT_EQ(validUTF8("clean é"), "clean é");
}

TEST(IsPlainASCII, HoldsWhereEachByteIsACharacter) {
  for (const std::string_view text : {"", "abc", "a\nb\t~"})
    EXPECT_TRUE(isPlainASCII(text)) << text;
  EXPECT_TRUE(isPlainASCII(std::string_view("\0", 1)));
  for (const std::string_view text : {"a\r\n", "\r", "é", "\xff"})
    EXPECT_FALSE(isPlainASCII(text)) << text;
}

TEST(CharacterCount, CountsASCIIByBytes) {
  EXPECT_EQ(characterCount(""), 0u);
  EXPECT_EQ(characterCount("plain text\n"), 11u);
}

TEST(CharacterCount, CountsWhatAReaderSees) {
  EXPECT_EQ(characterCount(accented), 1u);
  EXPECT_EQ(characterCount(family), 1u);
  EXPECT_EQ(characterCount("🇩🇪🇫🇷"), 2u);
  EXPECT_EQ(characterCount("日本"), 2u);
}

TEST(CharacterCount, TakesCarriageReturnAndLineFeedForOne) {
  EXPECT_EQ(characterCount("a\r\nb"), 3u);
  EXPECT_EQ(characterCount("a\n\rb"), 4u);
}

TEST(CharacterCount, CountsAMalformedSequenceAsItsReplacement) {
  for (const std::string_view text : {"\xff\xff", "a\xE2\x82z", "é\xff", "\xff\u0301"})
    EXPECT_EQ(characterCount(text), characterCount(validUTF8(text)));
  EXPECT_EQ(characterCount("\xff\xff"), 2u);
}

TEST(ColumnWidth, IsTwoForWideTextAndEmoji) {
  EXPECT_EQ(columnWidth(""), 0u);
  EXPECT_EQ(columnWidth("clip.mov"), 8u);
  EXPECT_EQ(columnWidth("日本.mov"), 8u);
  EXPECT_EQ(columnWidth("ﾊﾝ"), 2u) << "half-width forms";
  EXPECT_EQ(columnWidth("Ａ"), 2u) << "full-width forms";
  EXPECT_EQ(columnWidth("😀"), 2u);
  EXPECT_EQ(columnWidth("שלום мир"), 8u);
}

TEST(ColumnWidth, MarksAndFormattingCharactersTakeNoRoom) {
  EXPECT_EQ(columnWidth(accented), 1u);
  EXPECT_EQ(columnWidth("é"), 1u);
  EXPECT_EQ(columnWidth("a\u200d\u202eb"), 2u);
  EXPECT_EQ(columnWidth("a\r\n"), 1u);
}

TEST(ColumnWidth, AMalformedSequenceIsAsWideAsItsReplacement) {
  EXPECT_EQ(columnWidth("é\xff\xE2\x82"), columnWidth("é\uFFFD\uFFFD"));
}

using Views = std::vector<std::string_view>;

TEST(Characters, AreWhatAReaderSees) {
  EXPECT_EQ(characters(""), Views{});
  EXPECT_EQ(characters("ab"), (Views{"a", "b"}));
  EXPECT_EQ(characters("é日e\u0301x"), (Views{"é", "日", accented, "x"}));
  EXPECT_EQ(characters("a\r\nb\r"), (Views{"a", "\r\n", "b", "\r"}));
  EXPECT_EQ(characters("👨‍👩‍👧🇩🇪🇫🇷🇩"), (Views{family, "🇩🇪", "🇫🇷", "🇩"}));
  EXPECT_EQ(characters("\u0600a각"), (Views{"\u0600a", "각"}));
}

TEST(Characters, MayHoldANUL) {
  const std::string_view text("a\0b\0\u0301", 6);
  EXPECT_EQ(characters(text), (Views{"a", text.substr(1, 1), "b", text.substr(3, 1), "\u0301"}));
}

/// The boundaries as the library finds them in one walk over the whole text.
Views charactersByICU(std::string_view text) {
  UErrorCode code = U_ZERO_ERROR;
  UText* const source = utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &code);
  UBreakIterator* const breaks = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &code);
  ubrk_setUText(breaks, source, &code);
  EXPECT_TRUE(U_SUCCESS(code));
  Views all;
  std::size_t start = 0;
  for (std::int32_t end = ubrk_next(breaks); end != UBRK_DONE; end = ubrk_next(breaks)) {
    all.push_back(text.substr(start, static_cast<std::size_t>(end) - start));
    start = static_cast<std::size_t>(end);
  }
  ubrk_close(breaks);
  utext_close(source);
  return all;
}

TEST(Characters, AreThoseOfAWholeWalkInAnyMixture) {
  const std::vector<std::string> pieces{
      "a",      " ",      "Z",      "\r",     "\n",      "\r\n",   "\t",     std::string(1, '\0'),
      "é",      "ß",      "日",     "ی",      "א",       "\u0301", "\uFE0F", "\u200D",
      "\u20E3", "👨",      "👩",      "🏽",   "🇩",       "🇪",      "#",      "각",
      "\u1100", "\u1161", "\u11A8", "\u0600", "\u0915",  "\u094D", "\u0937", "\u0E33",
      "\u2028", "\u200B", "\u0903", "\xff",   "\xE2\x82"};
  std::mt19937 random(1);
  for (int round = 0; round < 20'000; ++round) {
    std::string text;
    for (std::size_t length = random() % 12; length > 0; --length)
      text += pieces[random() % pieces.size()];
    ASSERT_EQ(characters(text), charactersByICU(text)) << testing::PrintToString(text);
  }
}

TEST(IsWhiteSpace, IsToldByTheFirstCodePoint) {
  for (const std::string_view character : {" ", "\t", "\n", "\r\n", "\u00A0", "\u3000", "\u2028", " \u0301", " \u200D"})
    EXPECT_TRUE(isWhiteSpace(character)) << character;
  for (const std::string_view character : {"a", "\u200B", "\uFEFF", "\u0600 ", "\xff", ""})
    EXPECT_FALSE(isWhiteSpace(character)) << character;
  EXPECT_FALSE(isWhiteSpace(std::string_view("\0", 1)));
}

TEST(IsLetterOrNumber, LooksAtTheFirstCodePointOfACharacter) {
  for (const char* character : {"a", "Z", "7", "é", "e\u0301", "ß", "中", "七", "٣", "Ⅷ", "½", "ª", "ʰ"})
    EXPECT_TRUE(isLetterOrNumber(character)) << character;
  for (const char* character : {"", "-", "_", ".", ":", "/", " ", "\n", "\r\n", "€", "😀", "\u0301", "\xff", "\xc3"})
    EXPECT_FALSE(isLetterOrNumber(character)) << character;
  EXPECT_FALSE(isLetterOrNumber(std::string_view("\0", 1)));
}

TEST(CharacterPrefix, CutsASCII) {
  EXPECT_EQ(characterPrefix("abcdef", 3), "abc");
  EXPECT_EQ(characterPrefix("abc", 3), "abc");
  EXPECT_EQ(characterPrefix("abc", 9), "abc");
  EXPECT_EQ(characterPrefix("abc", 0), "");
}

TEST(CharacterPrefix, NeverCutsThroughACharacter) {
  const std::string text = "a" + std::string(family) + std::string(accented) + "z";
  EXPECT_EQ(characterPrefix(text, 2), "a" + std::string(family));
  EXPECT_EQ(characterPrefix(text, 3), "a" + std::string(family) + std::string(accented));
  EXPECT_EQ(characterPrefix(text, 4), text);
}

TEST(CharacterPrefix, KeepsTheAccentOfAnASCIILetterAtItsEnd) {
  EXPECT_EQ(characterPrefix("abe\u0301d", 3), "abe\u0301");
}

TEST(CharacterPrefix, KeepsCarriageReturnAndLineFeedTogether) {
  EXPECT_EQ(characterPrefix("\r\nb", 1), "\r\n");
  EXPECT_EQ(characterPrefix("a\r\nb", 2), "a\r\n");
}

TEST(Trimmed, TakesWhiteSpaceOffBothEnds) {
  EXPECT_EQ(trimmed("  a b \t\r\n"), "a b");
  EXPECT_EQ(trimmed(" \n "), "");
  EXPECT_EQ(trimmed(""), "");
  EXPECT_EQ(trimmed("a"), "a");
}

TEST(Trimmed, KnowsUnicodeWhiteSpace) {
  EXPECT_EQ(trimmed("\u00A0\u2003\u3000\u0085x\u2028\u2029\u202F"), "x");
}

TEST(Trimmed, LeavesWhatOnlyLooksBlank) {
  for (const std::string_view text : {"\u200Bx\u200B", "\uFEFFx", "\x1cx"})
    EXPECT_EQ(trimmed(text), text);
}

TEST(Trimmed, LeavesMalformedBytes) {
  EXPECT_EQ(trimmed(" \xff \xE2\x82 "), "\xff \xE2\x82");
}

TEST(Lowercased, FoldsASCII) {
  EXPECT_EQ(lowercased("Clip.MOV [AZ@`]"), "clip.mov [az@`]");
}

TEST(Lowercased, IsFullUnicodeInTheRootLocale) {
  EXPECT_EQ(lowercased("ÄÖÉ ЖЯ"), "äöé жя");
  EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδος");    // final sigma
  EXPECT_EQ(lowercased("İI"), "i\u0307i");  // no Turkish dotless i
  EXPECT_EQ(lowercased("ȺȺȺȺ"), "ⱥⱥⱥⱥ");    // two bytes become three
}

TEST(Lowercased, LeavesMalformedBytes) {
  EXPECT_EQ(lowercased("A\xffÉ\xE2\x82"), "a\xffé\xE2\x82");
}

TEST(ASCIIHostName, IsTheNameThatIsLookedUp) {
  EXPECT_EQ(asciiHostName("bücher.example"), "xn--bcher-kva.example");
  EXPECT_EQ(asciiHostName("BÜCHER.Example"), "xn--bcher-kva.example");
  EXPECT_EQ(asciiHostName("straße.example"), "xn--strae-oqa.example");
  EXPECT_EQ(asciiHostName("例え.テスト"), "xn--r8jz45g.xn--zckzah");
}

TEST(ASCIIHostName, IsAbsentForWhatCanBeNoName) {
  EXPECT_EQ(asciiHostName(""), std::nullopt);
  EXPECT_EQ(asciiHostName("ü\xff.example"), std::nullopt);
  EXPECT_EQ(asciiHostName("ü..example"), std::nullopt);
  EXPECT_EQ(asciiHostName(std::string(300, 'a')), std::nullopt);
}

}  // namespace
}  // namespace tq

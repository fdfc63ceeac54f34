#include <gtest/gtest.h>

#include "ExportFixture.hpp"
#include "TQDescription/Export/XMLText.hpp"

namespace tq::test {
namespace {

TEST(XMLEscaped, ReplacesTheFiveCharactersThatMeanSomething) {
  EXPECT_EQ(xmlEscaped(R"(<a href="x">Tom & 'Jerry'</a>)"),
            "&lt;a href=&quot;x&quot;&gt;Tom &amp; &apos;Jerry&apos;&lt;/a&gt;");
}

TEST(XMLEscaped, AnEntityIsEscapedOnceMore) {
  EXPECT_EQ(xmlEscaped("&amp;"), "&amp;amp;");
  EXPECT_EQ(xmlEscaped("&lt;"), "&amp;lt;");
}

TEST(XMLEscaped, EverythingElseStaysAsItIs) {
  for (const std::string text : {"", "plain", "caf\u00E9 \u05E9 \U0001F600", "a\tb\nc\rd", "\x7F\u0085\u2028", "%=;`"})
    EXPECT_EQ(xmlEscaped(text), text);
}

TEST(XMLEscaped, CharactersThatADocumentCannotHoldAreReplaced) {
  for (const std::string& character : charactersOutsideXML())
    EXPECT_EQ(xmlEscaped("a" + character + "b"), "a\uFFFDb") << static_cast<int>(character[0]);
}

TEST(XMLEscaped, NeighboursOfThoseCharactersStay) {
  for (const std::string text : {"\uFFFD", "\uFFFC", "\uFFBF", "\uFEFF", "\U0001FFFE", "\U0010FFFF", "\uE000"})
    EXPECT_EQ(xmlEscaped(text), text);
}

TEST(XMLEscaped, MalformedUTF8IsReplaced) {
  EXPECT_EQ(xmlEscaped("caf\xC3"), "caf\uFFFD");
  EXPECT_EQ(xmlEscaped("a\xFF&"), "a\uFFFD&amp;");
}

}  // namespace
}  // namespace tq::test

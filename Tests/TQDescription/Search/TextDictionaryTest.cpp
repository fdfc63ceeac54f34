#include <gtest/gtest.h>

#include "TQDescription/Search/TextDictionary.hpp"

namespace tq {
namespace {

TEST(TextDictionary, NumbersTextsInTheOrderOfTheirArrival) {
  TextDictionary texts;
  EXPECT_EQ(texts.add("sea"), 0u);
  EXPECT_EQ(texts.add("beach"), 1u);
  EXPECT_EQ(texts.add("sea"), 0u);
  EXPECT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts.text(0), "sea");
  EXPECT_EQ(texts.text(1), "beach");
}

TEST(TextDictionary, FindsOnlyWhatWasAdded) {
  TextDictionary texts;
  EXPECT_EQ(texts.find("sea"), std::nullopt);
  texts.add("sea");
  EXPECT_EQ(texts.find("sea"), 0u);
  EXPECT_EQ(texts.find("se"), std::nullopt);
  EXPECT_EQ(texts.size(), 1u);
}

TEST(TextDictionary, TakesAnyBytesAndNoneAtAll) {
  const std::vector<std::string> all{"",    std::string("\0", 1), std::string("\0\0", 2), std::string("a\0b", 3), "a",
                                     "\xff"};
  TextDictionary texts;
  for (const std::string& text : all)
    texts.add(text);
  for (std::uint32_t number = 0; number < all.size(); ++number) {
    EXPECT_EQ(texts.text(number), all[number]);
    EXPECT_EQ(texts.find(all[number]), number);
  }
}

TEST(TextDictionary, SortsByBytes) {
  TextDictionary texts;
  for (const std::string_view text : {"é", "b", "a", "ab", "B", ""})
    texts.add(text);
  EXPECT_EQ(texts.inOrderOfBytes(), (std::vector<TextDictionary::Number>{5, 4, 2, 3, 1, 0}));
}

/// So many that about ten of them have a hash of 32 bits that another has, whatever the hash.
TEST(TextDictionary, TellsTextsOfTheSameHashApart) {
  constexpr std::uint32_t count = 300'000;
  TextDictionary texts;
  for (std::uint32_t number = 0; number < count; ++number)
    ASSERT_EQ(texts.add(std::to_string(number)), number);
  for (std::uint32_t number = 0; number < count; ++number)
    ASSERT_EQ(texts.find(std::to_string(number)), number);
}

}  // namespace
}  // namespace tq

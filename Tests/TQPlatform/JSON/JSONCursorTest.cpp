#include <bit>
#include <charconv>
#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <random>

#include "TQPlatform/JSON/JSONCursor.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<float> floatsIn(std::string_view text) {
  JSONCursor cursor(text);
  std::vector<float> numbers;
  cursor.readFloats(numbers);
  cursor.finish();
  return numbers;
}

void skip(std::string_view text) {
  JSONCursor cursor(text);
  cursor.skipValue();
  cursor.finish();
}

bool isSkipped(std::string_view text) {
  try {
    skip(text);
    return true;
  } catch (const JSONError&) {
    return false;
  }
}

bool isJSON(std::string_view text) {
  try {
    parseJSON(text);
    return true;
  } catch (const JSONError&) {
    return false;
  }
}

std::string textOf(const std::vector<float>& numbers) {
  std::string text;
  appendJSONFloats(text, numbers);
  return text;
}

std::uint32_t bitsOf(float number) {
  return std::bit_cast<std::uint32_t>(number);
}

/// The nearest float to a decimal text, as the standard library finds it.
float nearestFloat(const std::string& text) {
  float number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  EXPECT_TRUE(error == std::errc() && end == text.data() + text.size()) << text;
  return number;
}

// Structure.

TEST(JSONCursor, GoesThroughListsAndObjectsInTheirOrder) {
  JSONCursor cursor(" [ { \"b\" : \"x\" , \"a\" : [ 1 , 2 ] } , { } ] \n");
  std::vector<std::string> seen;
  std::vector<float> numbers;
  cursor.readList([&] {
    seen.push_back("element");
    cursor.readObject([&](const std::string& key) {
      seen.push_back(key);
      if (key == "a")
        cursor.readFloats(numbers);
      else
        seen.push_back(cursor.readString());
    });
  });
  cursor.finish();
  EXPECT_THAT(seen, ElementsAre("element", "b", "x", "a", "element"));
  EXPECT_THAT(numbers, ElementsAre(1.0F, 2.0F));
}

TEST(JSONCursor, TellsEqualKeysAsOftenAsTheyStandThere) {
  JSONCursor cursor(R"({"a":1,"a":2})");
  int count = 0;
  cursor.readObject([&](const std::string& key) {
    EXPECT_EQ(key, "a");
    cursor.skipValue();
    ++count;
  });
  EXPECT_EQ(count, 2);
}

TEST(JSONCursor, GoesThroughTheInsideOfAList) {
  const auto elements = [](std::string_view text) {
    std::vector<std::string> found;
    JSONCursor cursor(text);
    cursor.readElements([&] { found.push_back(cursor.readString()); });
    return found;
  };
  EXPECT_EQ(elements(R"( "a" ,"b")"), (std::vector<std::string>{"a", "b"}));
  for (const char* broken : {"", " ", R"("a",)", R"(,"a")", R"("a" "b")", R"("a"])"})
    EXPECT_THROW(elements(broken), JSONError) << broken;
}

TEST(JSONCursor, ReadsBehindAByteOrderMark) {
  EXPECT_THAT(floatsIn("\xEF\xBB\xBF[1]"), ElementsAre(1.0F));
}

TEST(JSONCursor, AnythingBehindTheValueIsRefused) {
  for (const char* text : {"[1]]", "[1] x", "[1],", "[1][2]"})
    EXPECT_THROW(floatsIn(text), JSONError) << text;
  EXPECT_THROW(floatsIn(std::string_view("[1]\0", 4)), JSONError);
}

TEST(JSONCursor, AnotherKindOfValueIsRefused) {
  const auto read = [](std::string_view text, auto operation) {
    JSONCursor cursor(text);
    operation(cursor);
  };
  for (const char* text : {"{}", "\"a\"", "1", "null", "", "]"})
    EXPECT_THROW(read(text, [](JSONCursor& cursor) { cursor.readList([] {}); }), JSONError) << text;
  for (const char* text : {"[]", "\"a\"", "1", "null", "", "}"})
    EXPECT_THROW(read(text, [](JSONCursor& cursor) { cursor.readObject([](const auto&) {}); }), JSONError) << text;
  for (const char* text : {"[]", "{}", "1", "null", "", "'a'"})
    EXPECT_THROW(read(text, [](JSONCursor& cursor) { cursor.readString(); }), JSONError) << text;
}

TEST(JSONCursor, SaysWhereTheTextIsBroken) {
  try {
    floatsIn("[1, 2, x]");
    FAIL();
  } catch (const JSONError& error) {
    EXPECT_STREQ(error.what(), "not the JSON that was expected at byte 8");
  }
}

// Texts.

TEST(JSONCursor, ReadsTextsWithEscapesAndBeyondASCII) {
  for (const auto& [json, text] :
       std::vector<std::pair<std::string, std::string>>{{R"("")", ""},
                                                        {R"("clip 1.mov")", "clip 1.mov"},
                                                        {R"("\"\\\/\b\f\n\r\t")", "\"\\/\b\f\n\r\t"},
                                                        {R"("\u00e9\ud83d\ude00")", "é😀"},
                                                        {R"("é😀")", "é😀"},
                                                        {R"("a\\")", "a\\"},
                                                        {R"("\u0000")", std::string(1, '\0')}})
    EXPECT_EQ(JSONCursor(json).readString(), text) << json;
}

TEST(JSONCursor, BrokenTextsAreRefused) {
  for (const std::string json :
       {R"("a)", R"(")", R"("\")", R"("\)", R"("\x")", R"("\ud800")", "\"a\nb\"", "\"\xff\"", "\"\xc0\x80\""})
    EXPECT_THROW(JSONCursor(json).readString(), JSONError) << json;
  EXPECT_THROW(JSONCursor(std::string_view("\"\0\"", 3)).readString(), JSONError);
}

// Stepping over.

TEST(JSONCursor, StepsOverWhatIsJSONAndRefusesWhatIsNot) {
  for (const char* text : {"null",
                           "true",
                           "false",
                           "0",
                           "-0",
                           "1.5",
                           "-1e5",
                           "1E+5",
                           "\"\\u00e9\"",
                           "[]",
                           "{}",
                           "[1,[2,{\"a\":[]}],null]",
                           "{\"a\":1,\"a\":\"\\n\"}",
                           " [ ] ",
                           "18446744073709551616",
                           "1e999",
                           "",
                           "nul",
                           "nulll",
                           "tru",
                           "True",
                           "NaN",
                           "01",
                           "1.",
                           ".5",
                           "+1",
                           "-",
                           "1e",
                           "1-2",
                           "1 2",
                           "[1,]",
                           "[,]",
                           "[1 2]",
                           "[",
                           "]",
                           "{",
                           "{\"a\"}",
                           "{\"a\":}",
                           "{\"a\":1,}",
                           "{a:1}",
                           "{1:2}",
                           "[}",
                           "{]",
                           "\"\xff\"",
                           "[\"\\ud800\"]",
                           "[\"\t\"]",
                           "// x\n1",
                           "\x0c",
                           "'a'"})
    EXPECT_EQ(isSkipped(text), isJSON(text)) << text;
}

TEST(JSONCursor, GoesAsDeepAsTheReaderOfTrees) {
  for (const std::string& pair : {std::string("[]"), std::string("{}")})
    for (std::size_t levels = 254; levels < 260; ++levels) {
      std::string text;
      for (std::size_t level = 1; level < levels; ++level)
        text += pair == "[]" ? "[" : "{\"a\":";
      text += pair;
      for (std::size_t level = 1; level < levels; ++level)
        text += pair[1];
      EXPECT_EQ(isSkipped(text), isJSON(text)) << levels;
    }
  EXPECT_FALSE(isSkipped(std::string(1'000'000, '[')));
}

// Floats.

TEST(JSONCursor, ReadsNumbersOfEveryForm) {
  EXPECT_THAT(floatsIn("[]"), IsEmpty());
  EXPECT_THAT(floatsIn(" [ 0 , -1,2.5e0,\n1E2 ,\t-0.125, 1e-2 ] "),
              ElementsAre(0.0F, -1.0F, 2.5F, 100.0F, -0.125F, 0.01F));
}

TEST(JSONCursor, ReplacesTheNumbersOfTheListBefore) {
  JSONCursor cursor("[[1,2],[3]]");
  std::vector<float> numbers{7};
  cursor.readList([&] { cursor.readFloats(numbers); });
  EXPECT_THAT(numbers, ElementsAre(3.0F));
}

TEST(JSONCursor, KeepsTheSignOfZero) {
  for (const char* text : {"[-0]", "[-0.0]", "[-0e5]", "[-1e-999]", "[-0.000000000000000000000000]"})
    EXPECT_EQ(bitsOf(floatsIn(text).front()), bitsOf(-0.0F)) << text;
}

TEST(JSONCursor, ANumberIsRoundedOnceToTheNearestFloat) {
  // Just beside the middle of two floats, where a rounding to a double in between would lose the side.
  for (const std::string text :
       {"1.00000005960464477539062500000000001", "1.00000005960464477539062499999999999", "1.000000059604644775390625",
        "1.000000178813934326171875", "0.1", "16777217", "16777217.000000001", "123456789012345678", "9007199254740993",
        "1.17549435e-38", "1e-45", "3.4028235e38", "0.000000000000000000000001", "12345678901234567890.5"})
    EXPECT_EQ(floatsIn("[" + text + "]").front(), nearestFloat(text)) << text;
}

TEST(JSONCursor, RandomDecimalsBecomeTheNearestFloat) {
  std::mt19937_64 random(1);
  for (int round = 0; round < 20'000; ++round) {
    std::string text = std::to_string(random() >> (random() % 64));
    if (const std::size_t places = random() % text.size(); places > 0) text.insert(text.size() - places, ".");
    if (random() % 4 == 0) text += "e" + std::to_string(static_cast<int>(random() % 50) - 30);
    EXPECT_EQ(floatsIn("[" + text + "]").front(), nearestFloat(text)) << text;
  }
}

TEST(JSONCursor, TooSmallANumberIsZeroAndTooLargeAOneIsRefused) {
  EXPECT_THAT(floatsIn("[1e-46,1e-400,1e-99999]"), ElementsAre(0.0F, 0.0F, 0.0F));
  for (const char* text : {"[3.5e38]", "[-1e39]", "[1e308]", "[1e999]", "[1e99999999999999999999]"})
    EXPECT_THROW(floatsIn(text), JSONError) << text;
}

TEST(JSONCursor, WhatIsNoNumberIsRefusedInAListOfThem) {
  for (const char* text : {"[null]", "[true]", "[\"1\"]", "[[1]]", "[{}]", "[NaN]", "[nan]", "[inf]", "[Infinity]",
                           "[-]",    "[01]",   "[-01]",   "[1.]",  "[.5]", "[+1]",  "[1e]",  "[1e+]", "[0x1]",
                           "[1,]",   "[,1]",   "[1 2]",   "[1",    "[1,",  "[-",    "[1.",   "[1e",   "["})
    EXPECT_THROW(floatsIn(text), JSONError) << text;
}

TEST(AppendJSONFloats, WritesTheShortestTextThatIsReadBack) {
  EXPECT_EQ(textOf({}), "[]");
  EXPECT_EQ(textOf({0, -0.0F, 1, 0.1F, -2.5F, 1e-5F, 1.5e20F, 16777216}), "[0,-0,1,0.1,-2.5,1e-05,1.5e+20,16777216]");
  std::string text = "x";
  appendJSONFloats(text, std::vector{1.0F});
  EXPECT_EQ(text, "x[1]");
}

TEST(AppendJSONFloats, EveryFloatIsTheSameOnceWrittenAndRead) {
  using Limits = std::numeric_limits<float>;
  std::vector<float> numbers{Limits::max(),        Limits::lowest(), Limits::min(), -Limits::min(),
                             Limits::denorm_min(), -1.17549435e-38F, 0.0F,          -0.0F};
  std::mt19937 random(2);
  while (numbers.size() < 100'000)
    if (const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random())); std::isfinite(number))
      numbers.push_back(number);
  const std::vector<float> again = floatsIn(textOf(numbers));
  ASSERT_EQ(again.size(), numbers.size());
  for (std::size_t index = 0; index < numbers.size(); ++index)
    ASSERT_EQ(bitsOf(again[index]), bitsOf(numbers[index])) << numbers[index];
  EXPECT_TRUE(isJSON(textOf(numbers)));
}

TEST(AppendJSONFloats, RefusesNumbersThatAreNotFinite) {
  for (const float number : {std::nanf(""), HUGE_VALF, -HUGE_VALF})
    EXPECT_THROW(textOf({1, number}), JSONError);
}

}  // namespace
}  // namespace tq

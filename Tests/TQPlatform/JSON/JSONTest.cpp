#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "TQPlatform/JSON/JSON.hpp"

namespace tq {
namespace {

std::string compact(const JSONValue& value) {
  return writeJSON(value, JSONLayout::compact);
}

std::string failureOf(std::string_view text) {
  try {
    parseJSON(text);
  } catch (const JSONError& error) {
    return error.what();
  }
  return "no failure";
}

TEST(ParseJSON, ReadsEveryKind) {
  const JSONValue value = parseJSON(R"( {"a": [null, true, -3, 2.5, "x"], "b": {}} )");
  EXPECT_EQ(value, JSONValue(JSONValue::Object{{"a", JSONValue::Array{nullptr, true, -3, 2.5, "x"}},
                                               {"b", JSONValue::Object{}}}));
}

TEST(ParseJSON, KeepsTheLastOfEqualKeys) {
  EXPECT_EQ(compact(parseJSON(R"({"a": 1, "a": [2]})")), R"({"a":[2]})");
}

TEST(ParseJSON, ResolvesEscapesAndSurrogatePairs) {
  EXPECT_EQ(*parseJSON(R"("\"\\\/\b\f\n\r\t\u00e9\ud83d\ude00")").asString(), "\"\\/\b\f\n\r\té😀");
}

TEST(ParseJSON, KeepsAnEscapedZeroInsideText) {
  EXPECT_EQ(*parseJSON(R"("a\u0000b")").asString(), std::string("a\0b", 3));
}

TEST(ParseJSON, ReadsTextBehindAByteOrderMark) {
  EXPECT_EQ(compact(parseJSON("\xEF\xBB\xBF[1]")), "[1]");
}

TEST(ParseJSON, KeepsIntegersOf64BitsExactly) {
  EXPECT_EQ(parseJSON("9223372036854775807").asInteger(), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(parseJSON("-9223372036854775808").asInteger(), std::numeric_limits<std::int64_t>::min());
}

TEST(ParseJSON, KeepsLargerIntegersAsDoubles) {
  EXPECT_EQ(parseJSON("9223372036854775808").asDouble(), 0x1p63);
  EXPECT_EQ(parseJSON("36893488147419103232").asDouble(), 0x1p65);
}

TEST(ParseJSON, ReadsDoublesThatPrintShortest) {
  EXPECT_EQ(parseJSON("0.1").asDouble(), 0.1);
  EXPECT_EQ(parseJSON("1e-400").asDouble(), 0.0);
}

TEST(ParseJSON, AllowsNestingUpTo256Levels) {
  EXPECT_NO_THROW(parseJSON(std::string(256, '[') + std::string(256, ']')));
}

TEST(ParseJSON, RefusesDeeperNesting) {
  EXPECT_EQ(failureOf(std::string(257, '[') + std::string(257, ']')), "the JSON is nested more than 256 levels deep");
  EXPECT_EQ(failureOf(std::string(1'000'000, '[')), "the JSON is nested more than 256 levels deep");
}

TEST(ParseJSON, CountsDepthNotContainers) {
  std::string text = "[";
  for (int index = 0; index < 1000; ++index)
    text += "{},";
  EXPECT_NO_THROW(parseJSON(text + "1]"));
}

class BrokenJSON : public testing::TestWithParam<std::string_view> {};

TEST_P(BrokenJSON, IsRefused) {
  EXPECT_THROW(parseJSON(GetParam()), JSONError);
}

INSTANTIATE_TEST_SUITE_P(Texts, BrokenJSON,
                         testing::Values("", " ", "{", "[1,]", "{\"a\":1,}", "{a:1}", "'a'", "1 2", "[1] ]", "01", "+1",
                                         ".5", "1.", "NaN", "Infinity", "tru", "// x\n1", "\"a\nb\"", "\"\\x41\"",
                                         "\"\\ud800\"", "\"\xff\"", "\"\xc0\x80\"", "\"\xed\xa0\x80\"", "[1\xc2\xa0]"));

TEST(ParseJSON, RefusesAZeroByteInsteadOfStoppingThere) {
  EXPECT_EQ(failureOf(std::string_view("1\0 garbage", 11)), "no valid JSON at line 1, column 2");
}

TEST(ParseJSON, NamesThePlaceInLinesAndCharacters) {
  EXPECT_EQ(failureOf("{\n \"é\" x}"), "no valid JSON at line 2, column 6");
}

TEST(ParseJSON, SaysWhenTheTextIsCutOff) {
  EXPECT_EQ(failureOf(R"({"summary": "half a sen)"), "the JSON text ends too early");
  EXPECT_EQ(failureOf(""), "the JSON text ends too early");
}

TEST(ParseJSON, SaysWhenANumberIsTooLarge) {
  EXPECT_EQ(failureOf("[1e999]"), "a number at line 1, column 6 is too large");
}

TEST(JSONValue, IntegersAreNumbersWithoutAFraction) {
  for (const char* text : {"2", "2.0", "2e0", "20e-1", "0.2e1"})
    EXPECT_EQ(parseJSON(text).asInteger(), 2) << text;
}

TEST(JSONValue, FractionsAndNumbersBeyond64BitsAreNoIntegers) {
  for (const char* text : {"2.5", "9223372036854775808", "-9223372036854777856", "1e300", "true", "\"2\"", "null"})
    EXPECT_FALSE(parseJSON(text).asInteger()) << text;
  EXPECT_FALSE(JSONValue(std::nan("")).asInteger());
}

TEST(JSONValue, AnyNumberIsADoubleAndNothingElseIs) {
  EXPECT_EQ(parseJSON("2").asDouble(), 2.0);
  EXPECT_EQ(parseJSON("2.5").asDouble(), 2.5);
  for (const char* text : {"true", "\"2\"", "null", "[2]"})
    EXPECT_FALSE(parseJSON(text).asDouble()) << text;
}

TEST(JSONValue, TrueAndFalseAreNoNumbersAndNumbersNeitherOfThem) {
  EXPECT_EQ(parseJSON("true").asBool(), true);
  EXPECT_EQ(parseJSON("false").asBool(), false);
  EXPECT_FALSE(parseJSON("1").asBool());
  EXPECT_FALSE(parseJSON("0").asBool());
}

TEST(JSONValue, FindsMembersOfObjectsOnly) {
  const JSONValue value = parseJSON(R"({"a": 1})");
  ASSERT_NE(value.find("a"), nullptr);
  EXPECT_EQ(value.find("a")->asInteger(), 1);
  EXPECT_EQ(value.find("b"), nullptr);
  EXPECT_EQ(JSONValue(JSONValue::Array{1}).find("a"), nullptr);
}

TEST(JSONValue, NamesItsKindForUsers) {
  const JSONValue value = parseJSON(R"([null, true, 1, 1.5, "", [], {}])");
  std::vector<std::string_view> names;
  for (const JSONValue& element : *value.asArray())
    names.push_back(element.kindName());
  EXPECT_EQ(names, (std::vector<std::string_view>{"null", "true or false", "a number", "a number", "text", "a list",
                                                  "an object"}));
}

TEST(WriteJSON, PrettyMeansTwoBlanksALevelAndSortedKeys) {
  EXPECT_EQ(writeJSON(parseJSON(R"({"b": [1, {"c": null}], "a": true, "B": {}, "d": []})"), JSONLayout::pretty),
            "{\n"
            "  \"B\": {},\n"
            "  \"a\": true,\n"
            "  \"b\": [\n"
            "    1,\n"
            "    {\n"
            "      \"c\": null\n"
            "    }\n"
            "  ],\n"
            "  \"d\": []\n"
            "}");
}

TEST(WriteJSON, CompactHasNoBlanks) {
  EXPECT_EQ(compact(parseJSON(R"({ "b" : [ 1 , 2 ], "a" : "x y" })")), R"({"a":"x y","b":[1,2]})");
}

TEST(WriteJSON, LeavesSlashesAndEverythingBeyondASCIIAsTheyAre) {
  EXPECT_EQ(compact("a/b é 😀 \x7f \xE2\x80\xA8"), "\"a/b é 😀 \x7f \xE2\x80\xA8\"");
}

TEST(WriteJSON, EscapesQuotesBackslashesAndControlCharacters) {
  EXPECT_EQ(compact(std::string("\"\\\b\f\n\r\t\x01\x1f\0", 10)), R"("\"\\\b\f\n\r\t\u0001\u001f\u0000")");
}

TEST(WriteJSON, WritesDoublesShortestAndNeverLikeIntegers) {
  EXPECT_EQ(compact(JSONValue::Array{30.0, 29.97, 0.1, -0.0, 1e15, 1e-5}), "[30.0,29.97,0.1,-0.0,1e+15,1e-05]");
  EXPECT_EQ(compact(JSONValue::Array{30, std::int64_t{-9'007'199'254'740'993}}), "[30,-9007199254740993]");
}

TEST(WriteJSON, RefusesNumbersThatAreNotFinite) {
  for (const double number : {std::nan(""), HUGE_VAL, -HUGE_VAL})
    EXPECT_THROW(compact(JSONValue::Array{number}), JSONError);
}

TEST(WriteJSON, RefusesTextAndKeysThatAreNotUTF8WithAMessageThatIs) {
  try {
    compact("clip\xff.mov");
    FAIL();
  } catch (const JSONError& error) {
    EXPECT_STREQ(error.what(), "JSON cannot hold text that is not UTF-8: clip\uFFFD.mov");
  }
  EXPECT_THROW(compact(JSONValue::Object{{"\xff", 1}}), JSONError);
}

TEST(WriteJSON, EscapesAtTheStartInTheMiddleAndAtTheEnd) {
  EXPECT_EQ(compact("\nab\"\\cd\t"), R"("\nab\"\\cd\t")");
  EXPECT_EQ(compact(""), R"("")");
}

TEST(WriteJSONList, IsTheTextOfTheSameListWhole) {
  const JSONValue::Array all{"a", JSONValue::Object{{"b", 1}, {"c", JSONValue::Array{}}}, JSONValue::Array{2.5}};
  for (std::size_t count = 0; count <= all.size(); ++count) {
    const JSONValue::Array list(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count));
    for (const JSONLayout layout : {JSONLayout::compact, JSONLayout::pretty})
      EXPECT_EQ(writeJSONList(
                    count, [&](std::size_t index) { return all[index]; }, layout),
                writeJSON(list, layout));
  }
}

TEST(WriteJSONList, RefusesAnElementThatJSONCannotHold) {
  EXPECT_THROW(writeJSONList(
                   1, [](std::size_t) { return JSONValue("\xff"); }, JSONLayout::pretty),
               JSONError);
}

TEST(WriteJSON, IsReadBackUnchanged) {
  const JSONValue value = parseJSON(R"({"a": [1, 2.5, 1e300, -0.0, "é\u0000\\"], "b": {"c": [[], {}]}, "": null})");
  EXPECT_EQ(parseJSON(compact(value)), value);
  EXPECT_EQ(parseJSON(writeJSON(value, JSONLayout::pretty)), value);
}

}  // namespace
}  // namespace tq

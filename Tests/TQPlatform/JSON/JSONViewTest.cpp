#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TQPlatform/JSON/JSONDocument.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// A value of the same content as `view`, made of its answers alone.
JSONValue copyOf(JSONView view) {
  if (view.isNull()) return nullptr;
  if (const auto boolean = view.asBool()) return *boolean;
  if (const auto text = view.asString()) return *text;
  if (view.isInteger()) return view.asInteger().value();
  if (const auto number = view.asDouble()) return *number;
  if (view.isArray()) {
    JSONValue::Array elements;
    view.forEachElement([&](JSONView element) { elements.push_back(copyOf(element)); });
    return elements;
  }
  JSONValue::Object members;
  view.forEachMember([&](std::string_view key, JSONView value) { members[std::string(key)] = copyOf(value); });
  return members;
}

/// All that a view says of itself, its parts left aside.
std::string answersOf(JSONView view) {
  std::string answers(view.kindName());
  answers += view.isNull() ? " null" : "";
  answers += view.isInteger() ? " integer" : "";
  answers += view.isArray() ? " list" : "";
  answers += view.isObject() ? " object" : "";
  if (const auto boolean = view.asBool()) answers += *boolean ? " true" : " false";
  if (const auto integer = view.asInteger()) answers += " " + std::to_string(*integer);
  if (const auto number = view.asDouble()) answers += " " + std::to_string(*number);
  if (const auto text = view.asString()) answers.append(" \"").append(*text).append("\"");
  return answers + " " + std::to_string(view.elementCount());
}

class JSONViews : public testing::TestWithParam<std::string_view> {};

TEST_P(JSONViews, OfADocumentAnswerAsTheValueWould) {
  JSONDocument document;
  const JSONView view = document.read(GetParam());
  const JSONValue value = parseJSON(GetParam());
  EXPECT_EQ(answersOf(view), answersOf(value));
  EXPECT_EQ(copyOf(view), value);
  EXPECT_EQ(copyOf(value), value);
}

INSTANTIATE_TEST_SUITE_P(Texts, JSONViews,
                         testing::Values("null", "true", "false", "0", "-0", "-7", "2.0", "2e0", "2.5", "-0.0", "1e300",
                                         "-1e300", "9223372036854775807", "-9223372036854775808", "9223372036854775808",
                                         "18446744073709551615", "9223372036854775808.0", "-9223372036854775808.0",
                                         "123456789012345678901234567890", R"("")", R"("a\u0000é😀")", "[]",
                                         "[1, [2, [3]], {}]", "{}", "\xEF\xBB\xBF[]",
                                         R"({"b": [1, null], "a": {"c": "x"}, "b": 2, "": true})",
                                         R"([123456789012345678901234567890, "x", {"a": null, "a": 3}])"));

TEST(JSONView, GivesPartsOfListsAndObjectsOnly) {
  JSONDocument document;
  for (const char* text : {"null", "1", "2.5", "\"x\"", "true"}) {
    document.read(text).forEachElement([](JSONView) { FAIL(); });
    document.read(text).forEachMember([](std::string_view, JSONView) { FAIL(); });
    JSONView(parseJSON(text)).forEachElement([](JSONView) { FAIL(); });
  }
  document.read("{\"a\": 1}").forEachElement([](JSONView) { FAIL(); });
  document.read("[1]").forEachMember([](std::string_view, JSONView) { FAIL(); });
}

TEST(JSONView, GivesMembersOfEqualKeysInTheirOrder) {
  JSONDocument document;
  std::vector<std::pair<std::string, std::int64_t>> members;
  document.read(R"({"b": 1, "a": 2, "b": 3})").forEachMember([&](std::string_view key, JSONView value) {
    members.emplace_back(key, value.asInteger().value());
  });
  EXPECT_THAT(members, ElementsAre(Pair("b", 1), Pair("a", 2), Pair("b", 3)));
}

std::string failureOf(JSONDocument& document, std::string_view text) {
  try {
    document.read(text);
  } catch (const JSONError& error) {
    return error.what();
  }
  return "no failure";
}

TEST(JSONDocument, ReadsOneTextAfterTheOther) {
  JSONDocument document;
  for (const std::size_t count : {3, 30'000, 1, 0, 100'000, 2}) {
    JSONValue::Array elements;
    for (std::size_t index = 0; index < count; ++index)
      elements.push_back(static_cast<int>(index));
    EXPECT_EQ(copyOf(document.read(writeJSON(elements, JSONLayout::compact))), JSONValue(elements)) << count;
  }
}

TEST(JSONDocument, RefusesWhatParseJSONRefusesInTheSameWords) {
  JSONDocument document;
  EXPECT_EQ(failureOf(document, ""), "the JSON text ends too early");
  EXPECT_EQ(failureOf(document, "{\"a\":\n  é}"), "no valid JSON at line 2, column 3");
  EXPECT_EQ(failureOf(document, "[1e999]"), "a number at line 1, column 6 is too large");
  EXPECT_EQ(failureOf(document, std::string_view("1\0", 2)), "no valid JSON at line 1, column 2");
  EXPECT_EQ(copyOf(document.read("[1]")), JSONValue(JSONValue::Array{1})) << "a refused text leaves nothing behind";
}

TEST(JSONDocument, LimitsNestingAlsoForTextsThatItHasToMakeRoomFor) {
  JSONDocument document;
  document.read("1");
  const std::string long257 = std::string(257, '[') + std::string(100'000, ' ') + std::string(257, ']');
  EXPECT_EQ(failureOf(document, long257), "the JSON is nested more than 256 levels deep");
  const std::string long256 = std::string(256, '[') + std::string(200'000, ' ') + std::string(256, ']');
  EXPECT_EQ(failureOf(document, long256), "no failure");
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>
#include <string>

#include "TQPlatform/JSON/JSONReader.hpp"

namespace tq {
namespace {

std::optional<JSONValue> patientlyRead(std::string_view text) {
  try {
    return readJSONPatiently(text);
  } catch (const JSONError&) {
    return std::nullopt;
  }
}

std::string nested(std::size_t levels, const std::string& innermost = "") {
  return std::string(levels, '[') + innermost + std::string(levels, ']');
}

class QuickJSON : public testing::TestWithParam<std::string_view> {};

TEST_P(QuickJSON, IsReadAsPatiently) {
  const std::optional<JSONValue> value = readJSONQuickly(GetParam());
  ASSERT_TRUE(value);
  const JSONValue patient = readJSONPatiently(GetParam());
  EXPECT_EQ(*value, patient);
  EXPECT_EQ(writeJSON(*value, JSONLayout::compact), writeJSON(patient, JSONLayout::compact)) << "zeros have a sign";
}

INSTANTIATE_TEST_SUITE_P(Texts, QuickJSON,
                         testing::Values(R"( {"a": [null, true, false, -3, 2.5, "x"], "b": {}} )",
                                         R"({"b": 1, "a": 2, "b": [3], "": ""})",
                                         R"("\"\\\/\b\f\n\r\t\u00e9\ud83d\ude00\u0000")", "\"\x7f é 😀 \xE2\x80\xA8\"",
                                         "\xEF\xBB\xBF[1]", "0", "-0", "-0.0", "0e5", "1E5", "-1.5E-3", "0.1", "1e-400",
                                         "-1e-400", "5e-324", "1.7976931348623157e308", "9007199254740993.0",
                                         "9223372036854775807", "9223372036854775808", "18446744073709551615",
                                         "-9223372036854775808", "[[],[{}],{}]", "\t\r\n null \n"));

class RefusedJSON : public testing::TestWithParam<std::string_view> {};

TEST_P(RefusedJSON, IsReadByNeither) {
  EXPECT_FALSE(readJSONQuickly(GetParam()));
  EXPECT_FALSE(patientlyRead(GetParam()));
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(Texts, RefusedJSON,
                         testing::Values(""sv, " "sv, "\xEF\xBB\xBF"sv, "\xEF\xBB\xBF\xEF\xBB\xBF[1]"sv, "[1]\0"sv,
                                         "\0[1]"sv, "\"a\0b\""sv, "\"\\udc00\""sv, "\"\\ud800\""sv,
                                         "\"\\ud800\\u0041\""sv, "\"\\uDFFF\\ud800\\udc00\""sv, "\"\xED\xB0\x80\""sv,
                                         "\"\xc0\x80\""sv, "\"\xff\""sv, "[\xff]"sv, "1e999"sv,
                                         "1.7976931348623159e308"sv, "01"sv, "-01"sv, "+1"sv, ".5"sv, "1."sv, "1.e5"sv,
                                         "-"sv, "1e"sv, "NaN"sv, "-Infinity"sv, "truex"sv, "nullnull"sv, "1 2"sv,
                                         "[1 2]"sv, "[1,]"sv, "[,1]"sv, "[1]]"sv, "{\"a\"}"sv, "{1:2}"sv,
                                         "{\"a\":1,}"sv, "\"a"sv, "\"\\a\""sv, "\"\\u00zz\""sv, "\"\t\""sv, "[\x0c]"sv,
                                         "[1\xc2\xa0]"sv, "// x\n1"sv));

TEST(ReadJSON, IntegersBeyond64BitsAreLeftToThePatientReader) {
  for (const char* text : {"18446744073709551616", "-9223372036854775809", "[123456789012345678901234567890]"}) {
    EXPECT_FALSE(readJSONQuickly(text)) << text;
    EXPECT_EQ(parseJSON(text), readJSONPatiently(text)) << text;
  }
}

TEST(ReadJSON, NeitherReaderGoesDeeperThanTheOther) {
  for (const char* innermost : {"", "1", "{}", "\"x\""})
    for (std::size_t levels = deepestJSONNesting - 2; levels < deepestJSONNesting + 3; ++levels) {
      const std::string text = nested(levels, innermost);
      EXPECT_TRUE(!readJSONQuickly(text) || readJSONQuickly(text) == patientlyRead(text)) << levels << innermost;
    }
  EXPECT_TRUE(readJSONQuickly(nested(deepestJSONNesting - 1)));
}

}  // namespace
}  // namespace tq

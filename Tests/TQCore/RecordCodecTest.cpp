#include <gtest/gtest.h>
#include <unordered_set>

#include "TQCore/RecordCodec.hpp"
#include "TQPlatform/JSON/JSONDocument.hpp"

namespace tq {
namespace {

enum class Colour { red, deepBlue };

struct Inner {
  std::int64_t count = 0;
  std::optional<std::string> note;

  bool operator==(const Inner&) const = default;
};

struct Sample {
  bool on = false;
  int small = 0;
  double ratio = 0;
  std::string text;
  Colour colour = Colour::red;
  Date date;
  UUID id;
  std::filesystem::path file;
  std::vector<Inner> inners;
  std::optional<std::vector<std::string>> words;
  std::optional<Inner> inner;

  bool operator==(const Sample&) const = default;
};

struct Defaults {
  std::string name = "unnamed";
  std::vector<std::string> folders = {"/tmp"};
  Inner inner = {7, "seven"};

  bool operator==(const Defaults&) const = default;
};

}  // namespace

template <>
inline constexpr auto rawValues<Colour> = std::to_array<std::string_view>({"red", "deep-blue"});

template <>
constexpr auto recordTable<Inner> = RecordTable{
    field("count", &Inner::count),
    field("note", &Inner::note),
};
TQ_RECORD_CODEC(Inner);

template <>
constexpr auto recordTable<Sample> = RecordTable{
    field("on", &Sample::on),       field("small", &Sample::small),   field("ratio", &Sample::ratio),
    field("text", &Sample::text),   field("colour", &Sample::colour), field("date", &Sample::date),
    field("id", &Sample::id),       field("file", &Sample::file),     field("inners", &Sample::inners),
    field("words", &Sample::words), field("inner", &Sample::inner),
};
TQ_RECORD_CODEC(Sample);

template <>
constexpr auto recordTable<Defaults> = RecordTable{
    fieldWithDefault("name", &Defaults::name),
    fieldWithDefault("folders", &Defaults::folders),
    fieldWithDefault("inner", &Defaults::inner),
};
TQ_RECORD_CODEC(Defaults);

namespace {

constexpr const char* sampleText = R"({
  "colour": "deep-blue", "date": "2026-11-21T10:00:00Z", "file": "file:///clips/a%20b.mov",
  "id": "E621E1F8-C36C-495A-93FC-0C247A3E6E5F", "inner": {"count": 1}, "inners": [{"count": 2, "note": "n"}],
  "on": true, "ratio": 0.5, "small": 3, "text": "t", "words": []
})";

JSONValue sampleJSON() {
  return parseJSON(sampleText);
}

/// `sampleJSON` with one member replaced.
JSONValue sampleWith(const std::string& key, JSONValue value) {
  JSONValue::Object object = *sampleJSON().asObject();
  object[key] = std::move(value);
  return object;
}

JSONValue sampleWithout(const std::string& key) {
  JSONValue::Object object = *sampleJSON().asObject();
  object.erase(key);
  return object;
}

template <class Record>
std::string failureOf(const JSONValue& value) {
  try {
    decode<Record>(value);
  } catch (const DecodingError& error) {
    return error.what();
  }
  return "no failure";
}

TEST(RecordCodec, ReadsEveryKindOfField) {
  const auto sample = decode<Sample>(sampleJSON());
  EXPECT_TRUE(sample.on);
  EXPECT_EQ(sample.small, 3);
  EXPECT_EQ(sample.ratio, 0.5);
  EXPECT_EQ(sample.text, "t");
  EXPECT_EQ(sample.colour, Colour::deepBlue);
  EXPECT_EQ(sample.date, parseISO8601("2026-11-21T10:00:00Z"));
  EXPECT_EQ(sample.id, UUID::parse("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
  EXPECT_EQ(sample.file, "/clips/a b.mov");
  EXPECT_EQ(sample.inners, (std::vector<Inner>{{2, "n"}}));
  EXPECT_EQ(sample.words, std::vector<std::string>());
  EXPECT_EQ(sample.inner, (Inner{1, std::nullopt}));
}

/// What becomes of a text, read by way of a tree of values and straight from the document.
template <class Record>
std::string outcomeOf(std::string_view text, JSONDocument* document) {
  try {
    const Record record = document ? decode<Record>(document->read(text)) : decode<Record>(parseJSON(text));
    return writeJSON(encode(record), JSONLayout::compact);
  } catch (const DecodingError& error) {
    return error.what();
  }
}

TEST(RecordCodec, ReadsADocumentAsItReadsAValue) {
  JSONDocument document;
  std::vector<std::string> texts{sampleText, "[]", "{}", "null", "7"};
  for (const char* key : {"on", "small", "ratio", "text", "colour", "date", "id", "file", "inners", "words", "inner"})
    for (const char* value : {"null", "true", "1", "1.0", "2.5", "2147483648", "18446744073709551615",
                              "123456789012345678901234567890", R"("")", R"("red")", R"("2026-11-21T10:00:00Z")", "[]",
                              "[1]", R"(["a", null])", R"([{"count": 1}])", "{}", R"({"count": "x"})",
                              R"({"count": "x", "count": 2, "note": "é\u0000"})", R"([{"count": 1}, {"count": []}])"}) {
      std::string text = sampleText;
      texts.push_back(text.replace(text.rfind('}'), 1, std::string(", \"") + key + "\": " + value + "}"));
    }
  for (const std::string& text : texts)
    EXPECT_EQ(outcomeOf<Sample>(text, &document), outcomeOf<Sample>(text, nullptr)) << text;
}

TEST(RecordCodec, WritesWhatItReads) {
  EXPECT_EQ(writeJSON(encode(decode<Sample>(sampleJSON())), JSONLayout::compact),
            writeJSON(sampleJSON(), JSONLayout::compact));
}

TEST(RecordCodec, NeverWritesAnAbsentField) {
  Sample sample = decode<Sample>(sampleJSON());
  sample.words.reset();
  sample.inner.reset();
  EXPECT_EQ(encode(sample).find("words"), nullptr);
  EXPECT_EQ(encode(sample).find("inner"), nullptr);
}

TEST(RecordCodec, IgnoresUnknownKeys) {
  EXPECT_EQ(decode<Sample>(sampleWith("future", JSONValue::Array{1})), decode<Sample>(sampleJSON()));
}

TEST(RecordCodec, TakesMissingAndNullOptionalsForAbsent) {
  EXPECT_FALSE(decode<Sample>(sampleWithout("words")).words);
  EXPECT_FALSE(decode<Sample>(sampleWith("words", nullptr)).words);
  EXPECT_FALSE(decode<Sample>(sampleWith("inner", nullptr)).inner);
}

TEST(RecordCodec, FailsOnMissingAndNullRequiredFields) {
  for (const char* key : {"on", "small", "ratio", "text", "colour", "date", "id", "file", "inners"}) {
    EXPECT_THROW(decode<Sample>(sampleWithout(key)), DecodingError) << key;
    EXPECT_THROW(decode<Sample>(sampleWith(key, nullptr)), DecodingError) << key;
  }
  EXPECT_EQ(failureOf<Sample>(sampleWithout("ratio")), "ratio: expected a number, found nothing");
  EXPECT_EQ(failureOf<Sample>(sampleWith("ratio", nullptr)), "ratio: expected a number, found null");
}

TEST(RecordCodec, CoercesNothing) {
  EXPECT_EQ(failureOf<Sample>(sampleWith("on", 1)), "on: expected true or false, found 1");
  EXPECT_EQ(failureOf<Sample>(sampleWith("on", "true")), "on: expected true or false, found text");
  EXPECT_EQ(failureOf<Sample>(sampleWith("small", "3")), "small: expected a whole number, found text");
  EXPECT_EQ(failureOf<Sample>(sampleWith("small", true)), "small: expected a whole number, found true or false");
  EXPECT_EQ(failureOf<Sample>(sampleWith("ratio", "0.5")), "ratio: expected a number, found text");
  EXPECT_EQ(failureOf<Sample>(sampleWith("text", 7.5)), "text: expected text, found 7.5");
  EXPECT_EQ(failureOf<Sample>(sampleWith("inners", JSONValue::Object())), "inners: expected a list, found an object");
  EXPECT_EQ(failureOf<Sample>(sampleWith("inner", JSONValue::Array())), "inner: expected an object, found a list");
  EXPECT_EQ(failureOf<Sample>(JSONValue::Array()), "expected an object, found a list");
}

TEST(RecordCodec, FailsOnAWrongTypeInAnOptionalFieldToo) {
  EXPECT_EQ(failureOf<Sample>(sampleWith("words", "one")), "words: expected a list, found text");
}

TEST(RecordCodec, TakesWholeNumbersInAnySpelling) {
  EXPECT_EQ(decode<Sample>(sampleWith("small", 2.0)).small, 2);
  EXPECT_EQ(decode<Sample>(sampleWith("ratio", 2)).ratio, 2.0);
  EXPECT_EQ(failureOf<Sample>(sampleWith("small", 2.5)), "small: expected a whole number, found 2.5");
}

TEST(RecordCodec, FailsOnANumberThatTheFieldCannotHold) {
  EXPECT_THROW(decode<Sample>(sampleWith("small", std::int64_t{1} << 31)), DecodingError);
  EXPECT_EQ(decode<Sample>(sampleWith("small", (std::int64_t{1} << 31) - 1)).small, 2147483647);
}

TEST(RecordCodec, QuotesTextsThatAreNoneOfTheExpected) {
  EXPECT_EQ(failureOf<Sample>(sampleWith("colour", "green")),
            R"(colour: expected one of red, deep-blue, found "green")");
  EXPECT_EQ(failureOf<Sample>(sampleWith("colour", "Red")), R"(colour: expected one of red, deep-blue, found "Red")");
  EXPECT_EQ(failureOf<Sample>(sampleWith("date", "2026-11-21 10:00:00Z")),
            R"(date: expected a date such as 2026-11-21T10:00:00Z, found "2026-11-21 10:00:00Z")");
  EXPECT_EQ(failureOf<Sample>(sampleWith("date", 0)), "date: expected a date such as 2026-11-21T10:00:00Z, found 0");
  EXPECT_EQ(failureOf<Sample>(sampleWith("id", "7")), R"(id: expected a UUID, found "7")");
  EXPECT_EQ(failureOf<Sample>(sampleWith("file", "a.mov")), R"(file: expected a file URL, found "a.mov")");
}

TEST(RecordCodec, CutsLongTextsInItsMessages) {
  EXPECT_EQ(failureOf<Sample>(sampleWith("id", std::string(1000, 'x'))),
            "id: expected a UUID, found \"" + std::string(60, 'x') + "\"");
}

TEST(RecordCodec, NamesThePathThroughListsAndRecords) {
  const JSONValue inners = parseJSON(R"([{"count": 1}, {"count": 2, "note": 3}])");
  EXPECT_EQ(failureOf<Sample>(sampleWith("inners", inners)), "inners[1].note: expected text, found 3");
  EXPECT_EQ(failureOf<Sample>(sampleWith("words", JSONValue::Array{"a", nullptr})),
            "words[1]: expected text, found null");
  EXPECT_EQ(failureOf<Sample>(sampleWith("inner", parseJSON(R"({"count": "x"})"))),
            "inner.count: expected a whole number, found text");
}

TEST(RecordCodec, ReportsTheFirstFaultInTheOrderOfTheTable) {
  EXPECT_EQ(failureOf<Sample>(JSONValue::Object()), "on: expected true or false, found nothing");
}

TEST(FieldWithDefault, KeepsTheDefaultWhenMissingOrNull) {
  EXPECT_EQ(decode<Defaults>(parseJSON("{}")), Defaults());
  EXPECT_EQ(decode<Defaults>(parseJSON(R"({"name": null, "folders": null, "inner": null})")), Defaults());
}

TEST(FieldWithDefault, TakesWhatIsThereAndReplacesTheDefaultWholly) {
  const auto record = decode<Defaults>(parseJSON(R"({"name": "", "folders": [], "inner": {"count": 0}})"));
  EXPECT_EQ(record, (Defaults{"", {}, {0, std::nullopt}}));
}

TEST(FieldWithDefault, FailsOnAWrongType) {
  EXPECT_EQ(failureOf<Defaults>(parseJSON(R"({"name": 1})")), "name: expected text, found 1");
  EXPECT_EQ(failureOf<Defaults>(parseJSON(R"({"inner": {}})")), "inner.count: expected a whole number, found nothing");
}

TEST(FieldWithDefault, IsAlwaysWritten) {
  EXPECT_EQ(writeJSON(encode(Defaults()), JSONLayout::compact),
            R"({"folders":["/tmp"],"inner":{"count":7,"note":"seven"},"name":"unnamed"})");
}

TEST(RecordHashing, EqualRecordsHashEqually) {
  EXPECT_EQ(hashOf(decode<Sample>(sampleJSON())), hashOf(decode<Sample>(sampleJSON())));
  Sample plus = decode<Sample>(sampleJSON());
  Sample minus = plus;
  plus.ratio = 0.0;
  minus.ratio = -0.0;
  ASSERT_EQ(plus, minus);
  EXPECT_EQ(hashOf(plus), hashOf(minus));
}

TEST(RecordHashing, EveryFieldCounts) {
  const std::pair<const char*, JSONValue> changes[] = {
      {"on", false},
      {"small", 4},
      {"ratio", 0.25},
      {"text", "u"},
      {"colour", "red"},
      {"date", "2026-11-21T10:00:01Z"},
      {"id", "00000000-C36C-495A-93FC-0C247A3E6E5F"},
      {"file", "/clips/b.mov"},
      {"inners", JSONValue::Array()},
      {"words", nullptr},
      {"inner", nullptr},
  };
  std::unordered_set<Sample, RecordHash> samples{decode<Sample>(sampleJSON())};
  std::unordered_set<std::size_t> hashes{hashOf(decode<Sample>(sampleJSON()))};
  for (const auto& [key, value] : changes) {
    samples.insert(decode<Sample>(sampleWith(key, value)));
    hashes.insert(hashOf(decode<Sample>(sampleWith(key, value))));
  }
  EXPECT_EQ(samples.size(), 12u);
  EXPECT_EQ(hashes.size(), 12u);
}

TEST(RecordHashing, TheOrderOfPartsCounts) {
  EXPECT_NE(hashOfValues(std::string("a"), std::string("b")), hashOfValues(std::string("b"), std::string("a")));
  EXPECT_NE(hashOfValues(std::optional<std::string>()), hashOfValues(std::optional<std::string>("")));
}

}  // namespace
}  // namespace tq

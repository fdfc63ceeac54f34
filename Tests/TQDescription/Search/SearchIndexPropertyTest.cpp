#include <gtest/gtest.h>
#include <random>

#include "SearchRules.hpp"
#include "TQDescription/Search/SearchIndex.hpp"
#include "TQPlatform/Text/Unicode.hpp"

// Random libraries and queries: the rules written plainly, the plain functions and the index find the same.

namespace tq {
namespace {

using Texts = std::vector<std::string>;
using Records = std::vector<DescriptionResult>;

/// Words that begin like others or are similar to others, in many writings.
const Texts stems{"sea",
                  "seaside",
                  "seasides",
                  "seaward",
                  "beach",
                  "beaches",
                  "beech",
                  "bench",
                  "golden-hour",
                  "golden-hours",
                  "goldenhour",
                  "colden-bour",
                  "golf",
                  "go",
                  "a",
                  "the",
                  "clip",
                  "x",
                  "handheld-static",
                  "handheld_static",
                  "été",
                  "ete",
                  "cafe\u0301",
                  "cafe",
                  "cafes",
                  "caf\u00E9s",
                  "cafe\u0301s",
                  "👨‍👩‍👧",
                  "👨‍👩‍👧s",
                  "👨‍👩‍👦beach",
                  "👨‍👩‍👧beach",
                  "👨beach",
                  "beach👨",
                  "beach👨‍👩‍👧",
                  "🇩🇪🇫🇷sea",
                  "🇩🇪🇫🇷",
                  "夕日",
                  "夕日海",
                  "夕日の海岸",
                  "夕日の海岸線",
                  "שקיעה",
                  "שקיעות",
                  "ΟΔΟΣ",
                  "οδος",
                  "οδοσ",
                  "οδόςες",
                  "straße",
                  "strasse",
                  "STRAẞE",
                  "strass",
                  "ISPARTA",
                  "ısparta",
                  "İsparta",
                  "ispartalı",
                  "\u0600sea",
                  std::string("se\0a", 4),
                  std::string("\0the", 4),
                  "sea\u200D",
                  "각각각각각",
                  "각각각각갂",
                  "\xE2\x82sea",
                  "\xffseaside",
                  "1234567890",
                  "1234567",
                  "12345678",
                  "x.\u0301y",
                  "#️⃣",
                  "duration",
                  "flagged"};

const Texts separators{" ",      " ",      " ", ", ", ".", "\r\n",    "\n", "\r",
                       "\u00A0", "\u3000", "/", "",   "-", " \u0301", ":",  "+"};

class Source {
 public:
  explicit Source(std::uint32_t seed) : random_(seed) {}

  std::size_t below(std::size_t count) { return random_() % count; }
  bool chance(std::size_t oneIn) { return below(oneIn) == 0; }
  const std::string& any(const Texts& of) { return of[below(of.size())]; }

  std::string word() {
    std::string word = any(stems);
    for (std::size_t edits = below(3); edits > 0 && chance(2); --edits)
      word = edited(word);
    return word;
  }

  std::string text(std::size_t mostWords) {
    std::string text;
    for (std::size_t words = below(mostWords + 1); words > 0; --words)
      text += word() + any(separators);
    return text;
  }

  std::optional<std::string> maybeText() { return chance(2) ? std::optional(text(3)) : std::nullopt; }

  std::optional<Texts> maybeTexts() {
    if (chance(2)) return std::nullopt;
    Texts texts(below(3));
    for (std::string& each : texts)
      each = text(2);
    return texts;
  }

  std::optional<bool> maybeTruth() { return chance(2) ? std::optional(chance(2)) : std::nullopt; }

  Shot shot() {
    Shot shot;
    if (chance(2)) shot.shotType = word();
    if (chance(2)) shot.cameraMotion = word();
    if (chance(2)) shot.peopleCount = static_cast<std::int64_t>(below(4));
    shot.framingNotes = maybeText();
    shot.overallMood = maybeText();
    shot.tags = maybeTexts();
    shot.onScreenText = maybeTexts();
    if (chance(2)) shot.setting = Setting{maybeText(), maybeText(), maybeText(), maybeText(), maybeText()};
    return shot;
  }

  DescriptionResult record() {
    DescriptionResult record;
    record.source.filename = filename();
    record.source.durationSeconds = static_cast<double>(below(8)) / 2;
    record.summary = text(5);
    record.shots.resize(below(3));
    for (Shot& each : record.shots)
      each = shot();
    record.global = {maybeText(), maybeTexts(), maybeTexts(), maybeTexts(), maybeTexts(), maybeTexts()};
    record.flagged = maybeTruth();
    record.reviewFlag = maybeTruth();
    if (chance(2)) record.transcript = TranscriptInfo{.text = text(4)};
    return record;
  }

  Records records(std::size_t most) {
    Records records(below(most + 1));
    for (DescriptionResult& each : records)
      each = record();
    return records;
  }

  std::string condition() {
    static const Texts keys{"duration", "people", "Duration", "flagged", "review", "has-transcript", "has", ""};
    static const Texts values{">1",    ">=1", "<2", "<=1.5", "=0", "=1",  "true",
                              "FALSE", "yes", "1",  "",      ">",  "=>1", ">1s"};
    return any(keys) + ":" + any(values);
  }

  std::string query() {
    std::string query;
    for (std::size_t pieces = below(5); pieces > 0; --pieces)
      query += (chance(3) ? condition() : word()) + any(separators);
    return query;
  }

  /// Mostly values that some record has, in another case of letters now and then.
  FacetSelection facets(const Records& records) {
    FacetSelection facets;
    for (std::size_t fields = below(3); fields > 0; --fields) {
      const auto field = static_cast<FacetField>(below(allCases<FacetField>().size()));
      std::set<std::string>& chosen = facets[field];
      for (const DescriptionResult& record : records)
        for (const std::string& value : FacetIndex::values(field, record))
          if (chance(3)) chosen.insert(chance(2) ? value : lowercased(value));
      if (chance(4)) chosen.insert(word());
    }
    return facets;
  }

  std::vector<FilenameSimilarity> similarities() {
    std::vector<FilenameSimilarity> all(below(8));
    for (FilenameSimilarity& each : all)
      each = {filename(), static_cast<double>(below(9)) / 4 - 1};
    return all;
  }

  std::string filename() {
    static const Texts names{"a.mov", "b.mov", "B.mov", "é.mov", "", "夕.mov", "c.mov", "a"};
    return any(names);
  }

  std::size_t limit() { return chance(3) ? below(4) : 1000; }

 private:
  std::string edited(const std::string& word) {
    Texts all;
    for (const std::string_view character : characters(word))
      all.emplace_back(character);
    const auto place = all.begin() + static_cast<std::ptrdiff_t>(below(all.size() + 1));
    static const Texts others{"a", "s", "é", "日", "B", "\u0301"};
    const std::string& other = any(others);
    if (place == all.end() || chance(3))
      all.insert(place, other);
    else if (chance(2))
      *place = other;
    else
      all.erase(place);
    std::string joined;
    for (const std::string& character : all)
      joined += character;
    return joined;
  }

  std::mt19937 random_;
};

std::vector<IndexedResult> indexed(const Records& records) {
  std::vector<IndexedResult> prepared;
  for (const DescriptionResult& record : records)
    prepared.push_back({record, SearchEngine::buildScoredFields(record)});
  return prepared;
}

void compare(Source& source, const Records& records) {
  const std::vector<IndexedResult> prepared = indexed(records);
  const SearchIndex index(records);
  for (int round = 0; round < 4; ++round) {
    test::HybridQuery asked{.query = source.query(),
                            .semantic = source.similarities(),
                            .weight = static_cast<double>(source.below(7)) / 4 - 0.25,
                            .floor = static_cast<double>(source.below(5)) / 4 - 0.5,
                            .facets = source.facets(records),
                            .limit = source.limit()};
    SCOPED_TRACE(testing::PrintToString(asked.query));

    const auto hits = test::searchByRules(asked.query, records, asked.facets, asked.limit);
    ASSERT_EQ(SearchEngine::search(asked.query, prepared, asked.facets, asked.limit), hits);
    ASSERT_EQ(index.search(asked.query, asked.facets, asked.limit), hits);

    const auto blended = test::hybridSearchByRules(asked, records);
    ASSERT_EQ(SearchEngine::hybridSearch(asked.query, prepared, asked.semantic, asked.weight, asked.floor, asked.facets,
                                         asked.limit),
              blended);
    ASSERT_EQ(index.hybridSearch(asked.query, asked.semantic, asked.weight, asked.floor, asked.facets, asked.limit),
              blended);
  }
}

TEST(SearchProperty, AllWaysFindTheSameInRandomLibraries) {
  for (std::uint32_t seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    Source source(seed);
    const Records records = source.records(8);
    compare(source, records);
    if (HasFatalFailure()) return;
  }
}

TEST(SearchProperty, AllWaysOfferTheSameFacets) {
  for (std::uint32_t seed = 0; seed < 1500; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    const Records records = Source(seed).records(8);
    const FacetOptions options = test::facetsByRules(records);
    ASSERT_EQ(FacetIndex::build(records), options);
    ASSERT_EQ(SearchIndex(records).facetOptions(), options);
  }
}

TEST(SearchProperty, EditDistanceWithinAThresholdIsTheDistance) {
  Source source(1);
  for (int round = 0; round < 20'000; ++round) {
    const std::string a = source.word();
    const std::string b = source.chance(2) ? source.word() : a + source.word();
    const std::size_t exact = test::distanceByRules(a, b);
    for (std::size_t threshold = 0; threshold < 5; ++threshold)
      ASSERT_EQ(SearchEngine::editDistanceWithinThreshold(a, b, threshold), exact <= threshold) << a << " " << b;
  }
}

TEST(SearchProperty, ManyThreadsMakeTheSameIndex) {
  Source source(1);
  Records records;
  while (records.size() < 2600)
    records.push_back(source.record());
  const auto at = [&](std::size_t number) -> const DescriptionResult& { return records[number]; };
  const SearchIndex alone(records.size(), at);
  const SearchIndex together(records.size(), at, 3);
  const FacetOptions options = test::facetsByRules(records);
  EXPECT_EQ(alone.facetOptions(), options);
  EXPECT_EQ(together.facetOptions(), options);
  EXPECT_EQ(FacetIndex::build(records.size(), at, 3), options);
  const std::vector<IndexedResult> prepared = indexed(records);
  for (const std::string query : {"beach seaside", "golden-hour duration:>1 sea", "flagged:true", "夕日の海岸 cafes"})
    for (const FacetSelection& facets : {FacetSelection{}, source.facets(records)}) {
      const auto hits = SearchEngine::search(query, prepared, facets, 1000);
      EXPECT_FALSE(hits.empty());
      EXPECT_EQ(alone.search(query, facets, 1000), hits);
      EXPECT_EQ(together.search(query, facets, 1000), hits);
    }
}

}  // namespace
}  // namespace tq

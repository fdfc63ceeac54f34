#include "TQDescription/Search/SearchEngine.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <map>

#include "TQCore/ValueCodec.hpp"
#include "TQDescription/Search/EditDistance.hpp"
#include "TQDescription/Search/HitRanking.hpp"
#include "TQDescription/Search/SearchFields.hpp"
#include "TQDescription/Search/SearchQuery.hpp"
#include "TQDescription/Search/SearchWords.hpp"
#include "TQDescription/Search/WordPattern.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

void addTokens(std::set<std::string>& tokens, std::string_view text) {
  forEachWord(lowercased(text), [&](std::string_view word) { tokens.emplace(word); });
}

/// What a word finds in one part of a record.
double matchValue(const WordPattern& pattern, const std::set<std::string>& tokens) {
  if (tokens.contains(pattern.word())) return WordPattern::fullMatch;
  if (!pattern.matchesLongerWords()) return 0;
  double value = 0;
  for (const std::string& token : tokens) {
    if (pattern.begins(token)) return WordPattern::prefixMatch;
    if (value == 0 && pattern.resembles(token)) value = WordPattern::fuzzyMatch;
  }
  return value;
}

SearchHit hitFor(const DescriptionResult& record, SearchEngine::KeywordScore score) {
  return {record.source.filename, score.score, record.global.overallSummaryOneLine, std::move(score.matchedTerms)};
}

std::vector<SearchHit> firstRanked(std::vector<SearchHit> hits, std::size_t limit) {
  std::stable_sort(hits.begin(), hits.end(), [](const SearchHit& a, const SearchHit& b) {
    if (scoresHigher(a.score, b.score) || scoresHigher(b.score, a.score)) return scoresHigher(a.score, b.score);
    return a.filename < b.filename;
  });
  if (hits.size() > limit) hits.erase(hits.begin() + static_cast<std::ptrdiff_t>(limit), hits.end());
  return hits;
}

/// What the keywords found, by filename; of equal filenames the hit that stands later.
struct KeywordHit {
  SearchHit hit;
  double normalized = 0;
};
using KeywordHits = std::map<std::string, KeywordHit, std::less<>>;

KeywordHits byFilename(std::vector<SearchHit> hits) {
  std::vector<double> scores;
  for (const SearchHit& hit : hits)
    scores.push_back(hit.score);
  const std::vector<double> normalized = SearchEngine::normalizeScores(scores);
  KeywordHits found;
  for (std::size_t index = 0; index < hits.size(); ++index)
    found.insert_or_assign(hits[index].filename, KeywordHit{hits[index], normalized[index]});
  return found;
}

}  // namespace

template <>
std::size_t hashOf(const SearchHit& hit) {
  return hashOfValues(hit.filename, hit.score, hit.oneLine, hit.matchedTerms);
}

std::vector<std::string> SearchEngine::tokenize(std::string_view text) {
  std::vector<std::string> words;
  forEachWord(lowercased(text), [&](std::string_view word) { words.emplace_back(word); });
  return words;
}

std::set<std::string> SearchEngine::tokens(std::span<const std::string> texts) {
  std::set<std::string> all;
  for (const std::string& text : texts)
    addTokens(all, text);
  return all;
}

std::vector<ScoredField> SearchEngine::buildScoredFields(const DescriptionResult& record) {
  std::vector<ScoredField> fields;
  for (const double weight : searchFieldWeights)
    fields.push_back({weight, {}});
  forEachSearchText(record, [&](std::size_t field, const std::string& text) { addTokens(fields[field].tokens, text); });
  if (!record.transcript || record.transcript->text.empty()) fields.pop_back();
  return fields;
}

SearchEngine::KeywordScore SearchEngine::score(std::span<const std::string> query,
                                               std::span<const ScoredField> against) {
  double sum = 0;
  std::set<std::string> matched;
  for (const std::string& word : query) {
    const WordPattern pattern(word);
    for (const ScoredField& field : against) {
      const double value = matchValue(pattern, field.tokens);
      if (value == 0) continue;
      sum += field.weight * value;
      matched.insert(word);
    }
  }
  return {sum, {matched.begin(), matched.end()}};
}

bool SearchEngine::editDistanceWithinThreshold(std::string_view a, std::string_view b, std::size_t threshold) {
  return isWithinEditDistance(characters(a), characters(b), threshold);
}

std::vector<SearchHit> SearchEngine::search(std::string_view query, std::span<const IndexedResult> in,
                                            const FacetSelection& facets, std::size_t limit) {
  const SearchQuery asked(query, facets);
  if (asked.isEmpty()) return {};
  std::vector<SearchHit> hits;
  for (const IndexedResult& indexed : in) {
    if (!asked.admits(*indexed.result)) continue;
    KeywordScore found = score(asked.words, indexed.scoredFields);
    if (asked.words.empty() || found.score > 0) hits.push_back(hitFor(*indexed.result, std::move(found)));
  }
  return firstRanked(std::move(hits), limit);
}

std::vector<SearchHit> SearchEngine::search(std::string_view query, std::span<const DescriptionResult> in,
                                            const FacetSelection& facets, std::size_t limit) {
  std::vector<IndexedResult> indexed;
  for (const DescriptionResult& record : in)
    indexed.push_back({record, buildScoredFields(record)});
  return search(query, indexed, facets, limit);
}

std::vector<double> SearchEngine::normalizeScores(std::span<const double> scores) {
  if (scores.size() == 1) return {1.0};
  std::vector<double> normalized(scores.size(), 0.0);
  if (scores.empty()) return normalized;
  const auto [lowest, highest] = std::minmax_element(scores.begin(), scores.end());
  const double minimum = *lowest;
  const double range = *highest - minimum;
  if (range > 0)
    std::transform(scores.begin(), scores.end(), normalized.begin(),
                   [&](double score) { return (score - minimum) / range; });
  return normalized;
}

std::vector<SearchHit> SearchEngine::hybridSearch(std::string_view query, std::span<const IndexedResult> in,
                                                  std::span<const FilenameSimilarity> semantic, double semanticWeight,
                                                  double semanticFloor, const FacetSelection& facets,
                                                  std::size_t limit) {
  const SearchQuery asked(query, facets);
  const KeywordHits keyword = byFilename(search(query, in, facets, noLimit));
  std::map<std::string_view, const DescriptionResult*> records;
  for (const IndexedResult& indexed : in)
    records.emplace(indexed.result->source.filename, &*indexed.result);

  std::map<std::string_view, double> similar;
  for (const auto& [filename, similarity] : semantic) {
    if (!keyword.contains(filename)) {
      const auto record = records.find(filename);
      if (similarity < semanticFloor || record == records.end() || !asked.admits(*record->second)) continue;
    }
    similar.insert_or_assign(filename, semanticScore(similarity));
  }

  std::set<std::string_view> candidates;
  for (const auto& [filename, hit] : keyword)
    candidates.insert(filename);
  for (const auto& [filename, score] : similar)
    candidates.insert(filename);

  std::vector<SearchHit> hits;
  for (const std::string_view filename : candidates) {
    const auto found = keyword.find(filename);
    const auto near = similar.find(filename);
    SearchHit hit = found == keyword.end() ? SearchHit{.filename = std::string(filename)} : found->second.hit;
    hit.score = blendedScore(found == keyword.end() ? 0 : found->second.normalized,
                             near == similar.end() ? 0 : near->second, semanticShare(semanticWeight));
    if (!hit.oneLine) hit.oneLine = records.at(filename)->global.overallSummaryOneLine;
    hits.push_back(std::move(hit));
  }
  return firstRanked(std::move(hits), limit);
}

}  // namespace tq

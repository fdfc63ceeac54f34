#include "TQDescription/Search/SearchIndex.hpp"

#include <algorithm>

#include "TQDescription/Search/FacetTable.hpp"
#include "TQDescription/Search/FilenameIndex.hpp"
#include "TQDescription/Search/HitRanking.hpp"
#include "TQDescription/Search/KeywordScores.hpp"
#include "TQDescription/Search/SearchQuery.hpp"
#include "TQDescription/Search/WordIndex.hpp"

namespace tq {
namespace {

/// Neighbouring records, taken in by one thread.
class Portion {
 public:
  void add(const DescriptionResult& record) {
    if (facts.size() % blockSize == 0) words.emplace_back();
    words.back().add(record);
    facets.add(record);
    facts.push_back(PredicateFacts::of(record));
  }

  std::vector<WordBlock> words;
  FacetTable facets;
  std::vector<PredicateFacts> facts;

 private:
  /// Few enough for the words of a block to stay in the processor's cache.
  static constexpr std::size_t blockSize = 1024;
};

/// A hit before its texts are looked up. `number` is that of a record or, where one stands for all that have it, of a
/// filename.
struct RankedHit {
  double score;
  std::uint32_t rank;  ///< of the filename
  std::uint32_t number;

  bool operator<(const RankedHit& other) const {
    if (scoresHigher(score, other.score) || scoresHigher(other.score, score)) return scoresHigher(score, other.score);
    return std::pair(rank, number) < std::pair(other.rank, other.number);
  }
};

void keepFirst(std::vector<RankedHit>& hits, std::size_t limit) {
  const auto end = hits.begin() + static_cast<std::ptrdiff_t>(std::min(limit, hits.size()));
  std::partial_sort(hits.begin(), end, hits.end());
  hits.erase(end, hits.end());
}

/// What both ways of searching found of one filename.
struct Candidate {
  std::optional<std::uint32_t> record;  ///< of the keyword hit
  double keyword = 0;                   ///< normalized
  std::optional<double> semantic;
};

}  // namespace

struct SearchIndex::State {
  FilenameIndex filenames;
  std::vector<std::optional<std::string>> oneLines;
  std::vector<PredicateFacts> facts;
  WordIndex words;
  FacetTable facets;
  FacetOptions facetOptions;

  std::vector<bool> admitted(const SearchQuery& asked) const {
    std::vector<bool> admitted = facets.matches(asked.facets);
    if (!asked.predicates.empty())
      for (std::size_t record = 0; record < admitted.size(); ++record)
        admitted[record] = admitted[record] && allHold(asked.predicates, facts[record]);
    return admitted;
  }

  /// In the order of the records.
  std::vector<RankedHit> keywordHits(const SearchQuery& asked, const KeywordScores& scores,
                                     const std::vector<bool>& admitted) const {
    std::vector<RankedHit> hits;
    if (asked.isEmpty()) return hits;
    for (std::uint32_t record = 0; record < admitted.size(); ++record) {
      const double score = scores.scores()[record];
      if (admitted[record] && (score > 0 || asked.words.empty()))
        hits.push_back({score, filenames.rank(filenames.ofRecord(record)), record});
    }
    return hits;
  }

  /// By filename. Of several hits with one filename the one that ranks last stays.
  std::vector<Candidate> candidates(const std::vector<RankedHit>& hits) const {
    std::vector<double> scores;
    for (const RankedHit& hit : hits)
      scores.push_back(hit.score);
    const std::vector<double> normalized = SearchEngine::normalizeScores(scores);
    std::vector<Candidate> candidates(filenames.size());
    std::vector<const RankedHit*> lasts(filenames.size());
    for (std::size_t index = 0; index < hits.size(); ++index) {
      const std::uint32_t filename = filenames.ofRecord(hits[index].number);
      if (lasts[filename] != nullptr && hits[index] < *lasts[filename]) continue;
      lasts[filename] = &hits[index];
      candidates[filename] = {.record = hits[index].number, .keyword = normalized[index]};
    }
    return candidates;
  }

  SearchHit hit(double score, std::uint32_t record, const KeywordScores& scores) const {
    const std::string_view filename = filenames.text(filenames.ofRecord(record));
    return {std::string(filename), score, oneLines[record], scores.matchedTerms(record)};
  }
};

SearchIndex::SearchIndex(std::size_t count, const RecordAt& record, std::size_t width, std::stop_token stop) {
  auto state = std::make_unique<State>();
  std::vector<WordBlock> words;
  for (Portion& portion : inPortions<Portion>(count, record, width, std::move(stop))) {
    std::move(portion.words.begin(), portion.words.end(), std::back_inserter(words));
    state->facts.insert(state->facts.end(), portion.facts.begin(), portion.facts.end());
    state->facets.append(std::move(portion.facets));
  }
  state->words = WordIndex(std::move(words));
  state->facetOptions = state->facets.options();
  for (std::size_t number = 0; number < count; ++number) {
    state->filenames.add(record(number).source.filename);
    state->oneLines.push_back(record(number).global.overallSummaryOneLine);
  }
  state->filenames.finish();
  state_ = std::move(state);
}

SearchIndex::SearchIndex(std::span<const DescriptionResult> records)
    : SearchIndex(records.size(), recordsIn(records)) {}

SearchIndex::~SearchIndex() = default;
SearchIndex::SearchIndex(SearchIndex&&) noexcept = default;
SearchIndex& SearchIndex::operator=(SearchIndex&&) noexcept = default;

std::size_t SearchIndex::recordCount() const {
  return state_->facts.size();
}

std::optional<std::size_t> SearchIndex::firstRecord(std::string_view filename) const {
  const auto number = state_->filenames.find(filename);
  if (!number) return std::nullopt;
  return state_->filenames.firstRecord(*number);
}

const FacetOptions& SearchIndex::facetOptions() const {
  return state_->facetOptions;
}

std::vector<SearchHit> SearchIndex::search(std::string_view query, const FacetSelection& facets,
                                           std::size_t limit) const {
  const SearchQuery asked(query, facets);
  if (asked.isEmpty()) return {};
  const KeywordScores scores(state_->words, asked.words);
  std::vector<RankedHit> ranked = state_->keywordHits(asked, scores, state_->admitted(asked));
  keepFirst(ranked, limit);
  std::vector<SearchHit> hits;
  for (const RankedHit& each : ranked)
    hits.push_back(state_->hit(each.score, each.number, scores));
  return hits;
}

std::vector<SearchHit> SearchIndex::hybridSearch(std::string_view query, std::span<const FilenameSimilarity> semantic,
                                                 double semanticWeight, double semanticFloor,
                                                 const FacetSelection& facets, std::size_t limit) const {
  const SearchQuery asked(query, facets);
  const KeywordScores scores(state_->words, asked.words);
  const std::vector<bool> admitted = state_->admitted(asked);
  std::vector<Candidate> candidates = state_->candidates(state_->keywordHits(asked, scores, admitted));
  const FilenameIndex& filenames = state_->filenames;
  for (const auto& [filename, similarity] : semantic) {
    const auto number = filenames.find(filename);
    if (!number) continue;
    Candidate& candidate = candidates[*number];
    if (!candidate.record && (similarity < semanticFloor || !admitted[filenames.firstRecord(*number)])) continue;
    candidate.semantic = semanticScore(similarity);
  }

  std::vector<RankedHit> ranked;
  for (std::uint32_t filename = 0; filename < candidates.size(); ++filename)
    if (const Candidate& candidate = candidates[filename]; candidate.record || candidate.semantic)
      ranked.push_back({blendedScore(candidate.keyword, candidate.semantic.value_or(0), semanticShare(semanticWeight)),
                        filenames.rank(filename), filename});
  keepFirst(ranked, limit);

  std::vector<SearchHit> hits;
  for (const auto& [score, rank, filename] : ranked) {
    const std::uint32_t first = filenames.firstRecord(filename);
    SearchHit hit = state_->hit(score, candidates[filename].record.value_or(first), scores);
    if (!hit.oneLine) hit.oneLine = state_->oneLines[first];
    hits.push_back(std::move(hit));
  }
  return hits;
}

}  // namespace tq

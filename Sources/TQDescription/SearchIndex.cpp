#include "TQDescription/SearchIndex.hpp"

#include <unordered_map>

namespace tq {

struct SearchIndex::State {
  std::vector<IndexedResult> records;
  std::unordered_map<std::string, std::size_t> firstRecords;
  FacetOptions facetOptions;
};

SearchIndex::SearchIndex(std::size_t count, const RecordAt& record) {
  auto state = std::make_unique<State>();
  std::vector<DescriptionResult> results;
  for (std::size_t number = 0; number < count; ++number) {
    const DescriptionResult& result = record(number);
    state->records.push_back({result, SearchEngine::buildScoredFields(result)});
    state->firstRecords.emplace(result.source.filename, number);
    results.push_back(result);
  }
  state->facetOptions = FacetIndex::build(results);
  state_ = std::move(state);
}

SearchIndex::SearchIndex(std::span<const DescriptionResult> records)
    : SearchIndex(records.size(), [&](std::size_t number) -> const DescriptionResult& { return records[number]; }) {}

SearchIndex::~SearchIndex() = default;
SearchIndex::SearchIndex(SearchIndex&&) noexcept = default;
SearchIndex& SearchIndex::operator=(SearchIndex&&) noexcept = default;

std::size_t SearchIndex::recordCount() const {
  return state_->records.size();
}

std::optional<std::size_t> SearchIndex::firstRecord(std::string_view filename) const {
  const auto found = state_->firstRecords.find(std::string(filename));
  if (found == state_->firstRecords.end()) return std::nullopt;
  return found->second;
}

const FacetOptions& SearchIndex::facetOptions() const {
  return state_->facetOptions;
}

std::vector<SearchHit> SearchIndex::search(std::string_view query, const FacetSelection& facets,
                                           std::size_t limit) const {
  return SearchEngine::search(query, state_->records, facets, limit);
}

std::vector<SearchHit> SearchIndex::hybridSearch(std::string_view query, std::span<const FilenameSimilarity> semantic,
                                                 double semanticWeight, double semanticFloor,
                                                 const FacetSelection& facets, std::size_t limit) const {
  return SearchEngine::hybridSearch(query, state_->records, semantic, semanticWeight, semanticFloor, facets, limit);
}

}  // namespace tq

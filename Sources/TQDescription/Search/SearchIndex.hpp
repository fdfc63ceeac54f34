#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <stop_token>
#include <string_view>
#include <vector>

#include "TQDescription/Search/Facets.hpp"
#include "TQDescription/Search/RecordSequence.hpp"
#include "TQDescription/Search/SearchEngine.hpp"

namespace tq {

/// A whole library prepared for search: made once, then asked for every key press. What it finds, the scores to the
/// last bit, the order and the terms are those of `SearchEngine` over the same records in the same order. It takes what
/// it needs out of the records and never looks at them again, so it answers for them as they were; whoever keeps
/// records and index keeps them together and makes a new one with new records. Immutable: any number of threads may
/// ask.
class SearchIndex {
 public:
  /// Over the records `record(0)` to `record(count - 1)`, of which there may be up to 2^32, made by `width` threads.
  /// Throws what `record` throws, and `Cancelled` on a stop request.
  SearchIndex(std::size_t count, const RecordAt& record, std::size_t width = 1, std::stop_token stop = {});
  explicit SearchIndex(std::span<const DescriptionResult> records);
  ~SearchIndex();
  SearchIndex(SearchIndex&&) noexcept;
  SearchIndex& operator=(SearchIndex&&) noexcept;

  std::size_t recordCount() const;

  /// The number of the first record with that filename.
  std::optional<std::size_t> firstRecord(std::string_view filename) const;

  /// As `FacetIndex::build`.
  const FacetOptions& facetOptions() const;

  /// As `SearchEngine::search`.
  std::vector<SearchHit> search(std::string_view query, const FacetSelection& facets, std::size_t limit) const;

  /// As `SearchEngine::hybridSearch`.
  std::vector<SearchHit> hybridSearch(std::string_view query, std::span<const FilenameSimilarity> semantic,
                                      double semanticWeight, double semanticFloor, const FacetSelection& facets,
                                      std::size_t limit) const;

 private:
  struct State;
  std::unique_ptr<const State> state_;
};

}  // namespace tq

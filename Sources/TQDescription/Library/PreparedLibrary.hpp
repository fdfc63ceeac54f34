#pragma once

#include <cstddef>
#include <stop_token>
#include <string_view>
#include <vector>

#include "TQDescription/Library/LoadedSidecar.hpp"
#include "TQDescription/Search/SearchIndex.hpp"
#include "TQDescription/Semantic/SemanticIndex.hpp"
#include "TQDescription/Semantic/TextEmbedder.hpp"

namespace tq {

/// A sidecar that a search found.
struct LibraryMatch {
  LoadedSidecar sidecar;
  SearchHit hit;

  bool operator==(const LibraryMatch&) const = default;
};

/// A library as its search box asks for it with every key press: the sidecars, and what was prepared once from their
/// records. Immutable: any number of threads may ask.
class PreparedLibrary {
 public:
  /// Works with `processorCount` threads. Throws `Cancelled` once a stop was requested.
  PreparedLibrary(std::vector<LoadedSidecar> sidecars, std::size_t processorCount, std::stop_token stop);

  const std::vector<LoadedSidecar>& sidecars() const { return sidecars_; }
  const FacetOptions& facetOptions() const { return index_.facetOptions(); }

  /// As `LibraryModel::filter`.
  std::vector<LibraryMatch> filter(std::string_view query, const FacetSelection& facets, std::size_t limit) const;

  /// As `LibraryModel::filter` with a semantic index.
  std::vector<LibraryMatch> filter(std::string_view query, const FacetSelection& facets, std::size_t limit,
                                   SemanticIndex* semanticIndex, const TextEmbedder* embedder, double semanticWeight,
                                   std::stop_token stop) const;

 private:
  std::vector<LibraryMatch> matches(std::vector<SearchHit> hits) const;

  std::vector<LoadedSidecar> sidecars_;
  SearchIndex index_;
};

}  // namespace tq

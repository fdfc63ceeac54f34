#include "TQDescription/PreparedLibrary.hpp"

#include "TQPlatform/Unicode.hpp"

namespace tq {

PreparedLibrary::PreparedLibrary(std::vector<LoadedSidecar> sidecars, std::size_t processorCount, std::stop_token stop)
    : sidecars_(std::move(sidecars)), index_(sidecars_.size(), recordsOf(sidecars_), processorCount, std::move(stop)) {}

std::vector<LibraryMatch> PreparedLibrary::filter(std::string_view query, const FacetSelection& facets,
                                                  std::size_t limit) const {
  return matches(index_.search(trimmed(query), facets, limit));
}

std::vector<LibraryMatch> PreparedLibrary::matches(std::vector<SearchHit> hits) const {
  std::vector<LibraryMatch> found;
  found.reserve(hits.size());
  for (SearchHit& hit : hits)
    if (const auto number = index_.firstRecord(hit.filename))
      found.push_back({.sidecar = sidecars_[*number], .hit = std::move(hit)});
  return found;
}

}  // namespace tq

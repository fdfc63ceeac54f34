#include "TQDescription/Library/PreparedLibrary.hpp"

#include <exception>
#include <string>

#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// A clip that no word leads to is shown only when it is at least this near in meaning.
constexpr double semanticFloor = 0.2;

/// The query's vector; empty when the embedder has none to give, for whatever reason. Throws `Cancelled`.
EmbeddingVector meaningOf(const std::string& words, const TextEmbedder& embedder, const std::stop_token& stop) {
  try {
    std::vector<EmbeddingVector> vectors = embedder.embed({words}, stop);
    return vectors.empty() ? EmbeddingVector() : std::move(vectors.front());
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception&) {
    throwIfStopped(stop);
    return {};
  }
}

}  // namespace

PreparedLibrary::PreparedLibrary(std::vector<LoadedSidecar> sidecars, std::size_t processorCount, std::stop_token stop)
    : sidecars_(std::move(sidecars)), index_(sidecars_.size(), recordsOf(sidecars_), processorCount, std::move(stop)) {}

std::vector<LibraryMatch> PreparedLibrary::filter(std::string_view query, const FacetSelection& facets,
                                                  std::size_t limit) const {
  return matches(index_.search(trimmed(query), facets, limit));
}

std::vector<LibraryMatch> PreparedLibrary::filter(std::string_view query, const FacetSelection& facets,
                                                  std::size_t limit, SemanticIndex* semanticIndex,
                                                  const TextEmbedder* embedder, double semanticWeight,
                                                  std::stop_token stop) const {
  const std::string words(trimmed(query));
  if (semanticIndex && embedder && !words.empty() && semanticIndex->entryCount() > 0) {
    if (const EmbeddingVector meaning = meaningOf(words, *embedder, stop); !meaning.empty()) {
      const std::vector<FilenameSimilarity> similarities = semanticIndex->similarities(meaning);
      return matches(index_.hybridSearch(words, similarities, semanticWeight, semanticFloor, facets, limit));
    }
  }
  return filter(query, facets, limit);
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

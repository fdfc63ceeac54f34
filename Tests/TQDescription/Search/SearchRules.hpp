#pragma once

#include <span>
#include <string>
#include <vector>

#include "TQDescription/Search/SearchEngine.hpp"

namespace tq::test {

// The rules of a search once more, as plainly as they can be written and without any code of the product but its
// records and its sense of what a character is.

/// Levenshtein's, in characters.
std::size_t distanceByRules(const std::string& a, const std::string& b);

std::vector<SearchHit> searchByRules(const std::string& query, std::span<const DescriptionResult> records,
                                     const FacetSelection& facets, std::size_t limit);

struct HybridQuery {
  std::string query;
  std::vector<FilenameSimilarity> semantic;
  double weight = 0;
  double floor = 0;
  FacetSelection facets;
  std::size_t limit = 0;
};

std::vector<SearchHit> hybridSearchByRules(const HybridQuery& query, std::span<const DescriptionResult> records);

FacetOptions facetsByRules(std::span<const DescriptionResult> records);

}  // namespace tq::test

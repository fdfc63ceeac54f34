#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Search/Facets.hpp"
#include "TQDescription/Search/SearchPredicate.hpp"

namespace tq {

/// What a search asks for, taken apart.
struct SearchQuery {
  std::vector<std::string> words;  ///< in order, repeated ones included
  std::vector<SearchPredicate> predicates;
  FacetSelection facets;  ///< the active ones

  SearchQuery(std::string_view query, const FacetSelection& facets);

  /// True when it asks for nothing, and so finds nothing.
  bool isEmpty() const { return words.empty() && predicates.empty() && facets.empty(); }

  /// True when the facets and the conditions hold; words are not looked at.
  bool admits(const DescriptionResult& record) const;
};

}  // namespace tq

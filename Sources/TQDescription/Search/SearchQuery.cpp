#include "TQDescription/Search/SearchQuery.hpp"

#include "TQDescription/Search/SearchEngine.hpp"

namespace tq {

SearchQuery::SearchQuery(std::string_view query, const FacetSelection& selection) : facets(activeFacets(selection)) {
  PredicateParser::Query parsed = PredicateParser::parse(query);
  predicates = std::move(parsed.predicates);
  words = SearchEngine::tokenize(parsed.freeText);
}

bool SearchQuery::admits(const DescriptionResult& record) const {
  if (!facets.empty() && !FacetIndex::matches(facets, record)) return false;
  return predicates.empty() || allHold(predicates, PredicateFacts::of(record));
}

}  // namespace tq

#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQCore/Shared.hpp"
#include "TQDescription/Search/Facets.hpp"
#include "TQDescription/Search/FilenameSimilarity.hpp"

namespace tq {

/// One searchable part of a record.
struct ScoredField {
  double weight = 0;  ///< score of a full match
  std::set<std::string> tokens;

  bool operator==(const ScoredField&) const = default;
};

/// A record prepared for one search.
struct IndexedResult {
  Shared<DescriptionResult> result;  ///< always present
  std::vector<ScoredField> scoredFields;
};

/// One answer.
struct SearchHit {
  std::string filename;  ///< of the record, and what a hit is known by
  double score = 0;
  std::optional<std::string> oneLine;     ///< the record's summary in one line
  std::vector<std::string> matchedTerms;  ///< words of the query that matched: unique, ascending

  bool operator==(const SearchHit&) const = default;
};
template <>
std::size_t hashOf(const SearchHit&);

/// Ranks records against what was typed into a search box. These operations say what the answer is; `SearchIndex` gives
/// the same answer for a large library in a fraction of the time.
struct SearchEngine {
  struct KeywordScore {
    double score = 0;
    std::vector<std::string> matchedTerms;  ///< unique, ascending

    bool operator==(const KeywordScore&) const = default;
  };

  /// The words of a text in lower case and in order, duplicates included. White space and punctuation separate them,
  /// hyphen and underscore do not; words that say nothing ("the", "clip") are left out.
  static std::vector<std::string> tokenize(std::string_view text);

  /// The words of all texts.
  static std::set<std::string> tokens(std::span<const std::string> texts);

  /// The record's searchable parts, always the same twelve in the same order, and the transcript as the thirteenth when
  /// it has text.
  static std::vector<ScoredField> buildScoredFields(const DescriptionResult& record);

  /// Each word scores in every field that has it (the field's weight), a longer word that begins with it (0.6 of the
  /// weight) or a similar one (half the weight); a repeated word scores again.
  static KeywordScore score(std::span<const std::string> query, std::span<const ScoredField> against);

  /// True when at most `threshold` insertions, deletions and replacements of characters make `b` of `a`.
  static bool editDistanceWithinThreshold(std::string_view a, std::string_view b, std::size_t threshold);

  /// The records that meet every facet and every condition typed and score with the words, if there are any: at most
  /// `limit`, the highest score first, for equal scores by filename, and in their own order where that is equal too. A
  /// search for nothing finds nothing.
  static std::vector<SearchHit> search(std::string_view query, std::span<const IndexedResult> in,
                                       const FacetSelection& facets, std::size_t limit);
  static std::vector<SearchHit> search(std::string_view query, std::span<const DescriptionResult> in,
                                       const FacetSelection& facets, std::size_t limit);

  /// The scores spread over 0 to 1. A score that stands alone is 1; several that are all equal are 0.
  static std::vector<double> normalizeScores(std::span<const double> scores);

  /// As `search`, with each score a blend of the normalized keyword score and of the similarity brought to 0 to 1, the
  /// latter with the share `semanticWeight` (held within 0 and 1). A similarity below `semanticFloor` counts only for
  /// what the keywords found. A filename stands for one record: the first, where several have it.
  static std::vector<SearchHit> hybridSearch(std::string_view query, std::span<const IndexedResult> in,
                                             std::span<const FilenameSimilarity> semantic, double semanticWeight,
                                             double semanticFloor, const FacetSelection& facets, std::size_t limit);
};

}  // namespace tq

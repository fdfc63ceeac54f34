#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "TQDescription/Search/WordIndex.hpp"

namespace tq {

/// What the words of one query find, in all records at once. Each record's score is added up in the order in which
/// `SearchEngine::score` adds, so both are equal to the last bit.
class KeywordScores {
 public:
  KeywordScores(const WordIndex& index, std::span<const std::string> words);

  /// By record; 0 where no word was found.
  const std::vector<double>& scores() const { return scores_; }

  /// The words found in the record: unique, ascending.
  std::vector<std::string> matchedTerms(std::size_t record) const;

 private:
  using Records = std::vector<bool>;

  /// The parts of a record in which one word was found, by kind of match.
  struct Found {
    FieldSet full = 0;
    FieldSet prefix = 0;
    FieldSet fuzzy = 0;
  };

  void collect(const std::vector<WordIndex::Places>& places, FieldSet Found::*kind);
  void addScores(Records& matched);

  std::vector<double> scores_;
  std::vector<Found> found_;            ///< by record, for the word in hand
  std::vector<std::uint32_t> touched_;  ///< the records in which the word in hand was found
  std::map<std::string, Records> matched_;
};

}  // namespace tq

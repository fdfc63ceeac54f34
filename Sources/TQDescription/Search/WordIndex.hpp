#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQDescription/Search/TextDictionary.hpp"
#include "TQDescription/Search/WordPattern.hpp"

namespace tq {

/// The searchable parts in which a record has a word: bit n stands for part n of SearchFields.hpp.
using FieldSet = std::uint16_t;

/// The words of some neighbouring records, each record's in turn.
class WordBlock {
 public:
  /// Takes in the words of the next record.
  void add(const DescriptionResult& record);

 private:
  friend class WordIndex;

  struct Occurrence {
    TextDictionary::Number word;
    FieldSet fields;
  };

  TextDictionary words_;
  std::vector<std::size_t> lastPlaces_;  ///< by word: the last one in occurrences_
  std::vector<Occurrence> occurrences_;
  std::vector<std::size_t> ends_;  ///< by record: end of its words within occurrences_
};

/// Which records have a word, and in which parts. Words have numbers in the order of their bytes.
class WordIndex {
 public:
  WordIndex() = default;

  /// Over the records of all blocks, numbered from zero in that order. Uses the blocks up.
  explicit WordIndex(std::vector<WordBlock> blocks);

  /// The records that have a word, ascending, and the parts of each in which it stands.
  struct Places {
    std::span<const std::uint32_t> records;
    std::span<const FieldSet> fields;
  };

  /// Where the words stand that a pattern finds: the word itself, longer and similar ones. A word may be among the
  /// similar ones as well as among the others.
  struct Matches {
    std::vector<Places> full;
    std::vector<Places> prefix;
    std::vector<Places> fuzzy;
  };

  Matches matches(const WordPattern& pattern) const;

  std::size_t recordCount() const { return recordCount_; }
  std::size_t wordCount() const { return lengths_.size(); }

 private:
  std::string_view word(std::size_t number) const;
  Places places(std::size_t number) const;
  std::size_t firstNotBefore(std::string_view text) const;

  void addWord(std::string_view text);
  void addPlaces(const WordBlock& block, std::vector<std::size_t>& next);
  void addSimilar(const WordPattern& pattern, std::vector<Places>& found) const;

  std::size_t recordCount_ = 0;
  std::string texts_;
  std::vector<std::size_t> textEnds_;
  std::vector<std::uint32_t> lengths_;     ///< in characters
  std::vector<std::uint64_t> signatures_;  ///< which characters a word has, see `signatureOf`
  std::vector<std::size_t> placeEnds_;
  std::vector<std::uint32_t> records_;
  std::vector<FieldSet> fields_;
};

}  // namespace tq

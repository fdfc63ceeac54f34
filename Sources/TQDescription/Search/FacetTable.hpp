#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Search/Facets.hpp"
#include "TQDescription/Search/TextDictionary.hpp"

namespace tq {

/// Which records have which facet values, over any number of records. Answers as `FacetIndex` does, record by record.
class FacetTable {
 public:
  /// Takes in the next record; the first one has the number 0.
  void add(const DescriptionResult& record);

  /// Takes in the records of another table behind its own.
  void append(FacetTable other);

  /// What the records offer.
  FacetOptions options() const;

  /// For each record whether it matches.
  std::vector<bool> matches(const FacetSelection& selection) const;

 private:
  using Value = TextDictionary::Number;

  class Field {
   public:
    void add(std::string_view text, std::uint32_t record);
    void append(Field other);
    void endRecord() { ends_.push_back(valuesOfRecords_.size()); }

    std::vector<FacetValue> values() const;
    std::vector<bool> having(const std::set<std::string>& choices) const;

   private:
    struct Tally {
      std::uint32_t records = 0;
      std::uint32_t last = 0;  ///< one above the number of the last record
    };

    /// The value of a text as it stands in a record, or `none`. Each spelling is trimmed and lower-cased only once.
    Value valueOf(std::string_view text);
    Value valueWith(std::string_view key, std::string_view display);

    TextDictionary spellings_;
    std::vector<Value> valueOfSpelling_;
    TextDictionary keys_;                 ///< lower-cased, by value
    std::vector<std::string> displays_;   ///< by value: the form met first
    std::vector<Tally> tallies_;          ///< by value
    std::vector<Value> valuesOfRecords_;  ///< each record's in turn
    std::vector<std::size_t> ends_;       ///< by record: end of its values within valuesOfRecords_
  };

  std::size_t recordCount_ = 0;
  std::array<Field, rawValues<FacetField>.size()> fields_;
};

}  // namespace tq

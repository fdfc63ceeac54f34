#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Facets.hpp"
#include "TQDescription/TextDictionary.hpp"

namespace tq {

/// Which records have which facet values, over any number of records. Answers as `FacetIndex` does, record by record.
class FacetTable {
 public:
  /// Takes in the next record; the first one has the number 0.
  void add(const DescriptionResult& record);

  /// Takes in the records of another table behind its own.
  void append(const FacetTable& other);

  /// What the records offer.
  FacetOptions options() const;

  /// For each record whether it matches.
  std::vector<bool> matches(const FacetSelection& selection) const;

 private:
  struct Value {
    std::string display;                 ///< the form met first
    std::vector<std::uint32_t> records;  ///< ascending
  };

  struct Field {
    /// The number of the value with that lower-cased form, a new value if there is none yet.
    TextDictionary::Number add(std::string_view key, std::string_view display);

    /// The value's number for a text as it stands in a record; absent when nothing is left of it. Each spelling is
    /// trimmed and lower-cased only once.
    std::optional<TextDictionary::Number> valueOf(std::string_view text);

    TextDictionary spellings;
    std::vector<std::optional<TextDictionary::Number>> valueOfSpelling;
    TextDictionary keys;  ///< lower-cased
    std::vector<Value> values;
  };

  std::size_t recordCount_ = 0;
  std::array<Field, rawValues<FacetField>.size()> fields_;
};

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/RawValue.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQDescription/Search/RecordSequence.hpp"

namespace tq {

/// What a library can be narrowed by.
enum class FacetField {
  theme,
  keyword,
  useCase,
  subject,
  shotType,
  cameraMotion,
  timeOfDay,
  lighting,
  environment,
  weather,
  mood,
};

template <>
inline constexpr auto rawValues<FacetField> = std::to_array<std::string_view>({
    "theme",
    "keyword",
    "useCase",
    "subject",
    "shotType",
    "cameraMotion",
    "timeOfDay",
    "lighting",
    "environment",
    "weather",
    "mood",
});

/// The field's name as users read it.
std::string_view label(FacetField field);

/// One choice that a field offers.
struct FacetValue {
  std::string value;      ///< the form to show
  std::size_t count = 0;  ///< number of records that have it

  bool operator==(const FacetValue&) const = default;
};
template <>
std::size_t hashOf(const FacetValue&);

/// What each field offers, the most frequent value first, for equal counts by the lower-cased value. A field without
/// values has no entry.
using FacetOptions = std::map<FacetField, std::vector<FacetValue>>;

/// What was chosen. The values of one field are alternatives, the fields must all hold; an empty set asks for nothing.
using FacetSelection = std::map<FacetField, std::set<std::string>>;

/// The fields that ask for something.
FacetSelection activeFacets(const FacetSelection& facets);

struct FacetIndex {
  /// The record's values without white space at their ends, and none that is empty then. Duplicates stay.
  static std::vector<std::string> values(FacetField field, const DescriptionResult& in);

  /// Counts each record once for a value, whatever its case of letters; the form met first is the one shown.
  static FacetOptions build(std::span<const DescriptionResult> from);

  /// The same of `count` records, by `width` threads.
  static FacetOptions build(std::size_t count, const RecordAt& record, std::size_t width);

  /// True when the record has, in any case of letters, a chosen value of each field that asks for something.
  static bool matches(const FacetSelection& selection, const DescriptionResult& record);
};

}  // namespace tq

#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/RawValue.hpp"

namespace tq {

enum class NumericOp { greaterThan, greaterThanOrEqual, lessThan, lessThanOrEqual, equal };

template <>
inline constexpr auto rawValues<NumericOp> = std::to_array<std::string_view>({">", ">=", "<", "<=", "="});

/// What a typed condition asks of a record.
struct PredicateFacts {
  double durationSeconds = 0;
  double peopleCount = 0;      ///< over all shots; the same person counts in each
  bool flagged = false;        ///< also when the record says nothing
  bool review = false;         ///< also when the record says nothing
  bool hasTranscript = false;  ///< one that is not empty

  static PredicateFacts of(const DescriptionResult& record);
};

/// A condition typed into the search box.
struct SearchPredicate {
  struct Duration {
    NumericOp op;
    double seconds;

    bool operator==(const Duration&) const = default;
  };
  struct People {
    NumericOp op;
    double count;

    bool operator==(const People&) const = default;
  };
  struct Flagged {
    bool expected;

    bool operator==(const Flagged&) const = default;
  };
  struct Review {
    bool expected;

    bool operator==(const Review&) const = default;
  };
  struct HasTranscript {
    bool expected;

    bool operator==(const HasTranscript&) const = default;
  };

  std::variant<Duration, People, Flagged, Review, HasTranscript> condition;

  bool holds(const PredicateFacts& facts) const;

  bool operator==(const SearchPredicate&) const = default;
};

/// True when each of them holds, and so for none.
bool allHold(const std::vector<SearchPredicate>& predicates, const PredicateFacts& facts);

/// Takes the conditions out of a query such as "duration:>=30 flagged:false beach". What is no condition is a word.
struct PredicateParser {
  struct Query {
    std::vector<SearchPredicate> predicates;  ///< in the order typed
    std::string freeText;                     ///< the other words as they stand, one blank between two

    bool operator==(const Query&) const = default;
  };

  static Query parse(std::string_view query);

  /// One word without white space; absent when it is no condition.
  static std::optional<SearchPredicate> parseToken(std::string_view token);

  /// An operator and a number, as in ">=30"; neither may be missing, and units are not understood.
  static std::optional<std::pair<NumericOp, double>> parseNumericValue(std::string_view value);
};

}  // namespace tq

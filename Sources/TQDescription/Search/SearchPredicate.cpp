#include "TQDescription/Search/SearchPredicate.hpp"

#include <algorithm>

#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

/// Each count is a 64-bit number that a file may hold, so their sum takes more than that.
__extension__ using WideInteger = __int128;

double peopleInAllShots(const std::vector<Shot>& shots) {
  WideInteger sum = 0;
  for (const Shot& shot : shots)
    sum += shot.peopleCount.value_or(0);
  return static_cast<double>(sum);
}

bool compare(double value, NumericOp op, double bound) {
  switch (op) {
    case NumericOp::greaterThan: return value > bound;
    case NumericOp::greaterThanOrEqual: return value >= bound;
    case NumericOp::lessThan: return value < bound;
    case NumericOp::lessThanOrEqual: return value <= bound;
    case NumericOp::equal: return value == bound;
  }
  return false;
}

struct Evaluation {
  const PredicateFacts& facts;

  bool operator()(SearchPredicate::Duration duration) const {
    return compare(facts.durationSeconds, duration.op, duration.seconds);
  }
  bool operator()(SearchPredicate::People people) const { return compare(facts.peopleCount, people.op, people.count); }
  bool operator()(SearchPredicate::Flagged flagged) const { return facts.flagged == flagged.expected; }
  bool operator()(SearchPredicate::Review review) const { return facts.review == review.expected; }
  bool operator()(SearchPredicate::HasTranscript transcript) const {
    return facts.hasTranscript == transcript.expected;
  }
};

using Condition = std::optional<SearchPredicate>;

template <class Numeric>
Condition numeric(std::string_view value) {
  const auto parsed = PredicateParser::parseNumericValue(value);
  if (!parsed) return std::nullopt;
  return SearchPredicate{Numeric{parsed->first, parsed->second}};
}

template <class Truth>
Condition truth(std::string_view value) {
  const std::string lower = lowercased(value);
  if (lower != "true" && lower != "false") return std::nullopt;
  return SearchPredicate{Truth{lower == "true"}};
}

struct Key {
  std::string_view name;
  Condition (*read)(std::string_view value);
};

constexpr auto keys = std::to_array<Key>({
    {"duration", numeric<SearchPredicate::Duration>},
    {"people", numeric<SearchPredicate::People>},
    {"flagged", truth<SearchPredicate::Flagged>},
    {"review", truth<SearchPredicate::Review>},
    {"has-transcript", truth<SearchPredicate::HasTranscript>},
});

/// An operator stands before each one that it begins with.
constexpr auto operatorsByLength = std::to_array({NumericOp::greaterThanOrEqual, NumericOp::lessThanOrEqual,
                                                  NumericOp::greaterThan, NumericOp::lessThan, NumericOp::equal});

std::vector<std::string_view> splitAtWhiteSpace(std::string_view text) {
  std::vector<std::string_view> pieces;
  CharacterWalk walk(text);
  std::size_t start = 0;
  std::size_t end = 0;
  for (std::string_view character = walk.next(); !character.empty(); character = walk.next()) {
    const std::size_t next = end + character.size();
    if (isWhiteSpace(character)) {
      if (end > start) pieces.push_back(text.substr(start, end - start));
      start = next;
    }
    end = next;
  }
  if (end > start) pieces.push_back(text.substr(start));
  return pieces;
}

}  // namespace

PredicateFacts PredicateFacts::of(const DescriptionResult& record) {
  return {.durationSeconds = record.source.durationSeconds,
          .peopleCount = peopleInAllShots(record.shots),
          .flagged = record.flagged.value_or(false),
          .review = record.reviewFlag.value_or(false),
          .hasTranscript = record.transcript && !record.transcript->text.empty()};
}

bool SearchPredicate::holds(const PredicateFacts& facts) const {
  return std::visit(Evaluation{facts}, condition);
}

bool allHold(const std::vector<SearchPredicate>& predicates, const PredicateFacts& facts) {
  return std::all_of(predicates.begin(), predicates.end(),
                     [&](const SearchPredicate& predicate) { return predicate.holds(facts); });
}

PredicateParser::Query PredicateParser::parse(std::string_view query) {
  Query parsed;
  for (const std::string_view piece : splitAtWhiteSpace(query)) {
    if (const Condition predicate = parseToken(piece)) {
      parsed.predicates.push_back(*predicate);
    } else {
      if (!parsed.freeText.empty()) parsed.freeText += ' ';
      parsed.freeText += piece;
    }
  }
  return parsed;
}

std::optional<SearchPredicate> PredicateParser::parseToken(std::string_view token) {
  const std::size_t colon = token.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const std::string name = lowercased(token.substr(0, colon));
  const auto key = std::find_if(keys.begin(), keys.end(), [&](const Key& candidate) { return candidate.name == name; });
  return key == keys.end() ? std::nullopt : key->read(token.substr(colon + 1));
}

std::optional<std::pair<NumericOp, double>> PredicateParser::parseNumericValue(std::string_view value) {
  for (const NumericOp op : operatorsByLength) {
    if (!value.starts_with(rawValue(op))) continue;
    const std::optional<double> number = parseDouble(value.substr(rawValue(op).size()));
    if (!number) return std::nullopt;
    return std::pair(op, *number);
  }
  return std::nullopt;
}

}  // namespace tq

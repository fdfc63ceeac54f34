#include "TQDescription/Search/KeywordScores.hpp"

#include <array>
#include <bit>

#include "TQDescription/Search/SearchFields.hpp"

namespace tq {
namespace {

/// What a match of one kind is worth in each part.
constexpr auto worthOf(double value) {
  std::array<double, searchFieldWeights.size()> worth{};
  for (std::size_t field = 0; field < worth.size(); ++field)
    worth[field] = searchFieldWeights[field] * value;
  return worth;
}

constexpr auto fullWorth = worthOf(WordPattern::fullMatch);
constexpr auto prefixWorth = worthOf(WordPattern::prefixMatch);
constexpr auto fuzzyWorth = worthOf(WordPattern::fuzzyMatch);

}  // namespace

KeywordScores::KeywordScores(const WordIndex& index, std::span<const std::string> words)
    : scores_(index.recordCount()), found_(index.recordCount()) {
  std::map<std::string, WordIndex::Matches> matches;
  for (const std::string& word : words) {
    const auto [known, isNew] = matches.try_emplace(word);
    if (isNew) known->second = index.matches(WordPattern(word));
    collect(known->second.full, &Found::full);
    collect(known->second.prefix, &Found::prefix);
    collect(known->second.fuzzy, &Found::fuzzy);
    addScores(matched_.try_emplace(word, index.recordCount()).first->second);
  }
}

void KeywordScores::collect(const std::vector<WordIndex::Places>& places, FieldSet Found::*kind) {
  for (const auto& [records, fields] : places)
    for (std::size_t place = 0; place < records.size(); ++place) {
      Found& found = found_[records[place]];
      if ((found.full | found.prefix | found.fuzzy) == 0) touched_.push_back(records[place]);
      found.*kind = static_cast<FieldSet>(found.*kind | fields[place]);
    }
}

void KeywordScores::addScores(Records& matched) {
  for (const std::uint32_t record : touched_) {
    const Found found = std::exchange(found_[record], {});
    double& score = scores_[record];
    for (unsigned rest = found.full | found.prefix | found.fuzzy; rest != 0; rest &= rest - 1) {
      const int field = std::countr_zero(rest);
      const unsigned bit = 1U << field;
      const auto& worth = (found.full & bit) != 0 ? fullWorth : (found.prefix & bit) != 0 ? prefixWorth : fuzzyWorth;
      score += worth[static_cast<std::size_t>(field)];
    }
    matched[record] = true;
  }
  touched_.clear();
}

std::vector<std::string> KeywordScores::matchedTerms(std::size_t record) const {
  std::vector<std::string> terms;
  for (const auto& [word, matched] : matched_)
    if (matched[record]) terms.push_back(word);
  return terms;
}

}  // namespace tq

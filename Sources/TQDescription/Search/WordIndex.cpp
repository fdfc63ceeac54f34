#include "TQDescription/Search/WordIndex.hpp"

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>
#include <ranges>

#include "TQDescription/Search/SearchFields.hpp"
#include "TQDescription/Search/SearchWords.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

static_assert(searchFieldWeights.size() <= std::numeric_limits<FieldSet>::digits);

/// One bit for each character of a word, shared by many characters. An edit changes at most two of them, so words whose
/// signatures differ in more bits than that are too far apart to be compared. Printable ASCII is folded such that
/// letters, digits and hyphen have bits of their own.
std::uint64_t signatureOf(std::span<const std::string_view> word) {
  std::uint64_t signature = 0;
  for (const std::string_view character : word) {
    std::size_t bit = std::hash<std::string_view>()(character);
    if (const auto byte = static_cast<unsigned char>(character.front()); byte < 0x80)
      bit = byte < 64 ? byte ^ 32U : byte;
    signature |= std::uint64_t{1} << (bit % 64);
  }
  return signature;
}

constexpr std::size_t nowhere = std::numeric_limits<std::size_t>::max();

/// The numbers that the texts of `from` have in `to`.
std::vector<TextDictionary::Number> addAll(const TextDictionary& from, TextDictionary& to) {
  std::vector<TextDictionary::Number> numbers;
  numbers.reserve(from.size());
  for (std::size_t number = 0; number < from.size(); ++number)
    numbers.push_back(to.add(from.text(static_cast<TextDictionary::Number>(number))));
  return numbers;
}

}  // namespace

void WordBlock::add(const DescriptionResult& record) {
  const std::size_t start = occurrences_.size();
  forEachSearchText(record, [&](std::size_t field, const std::string& text) {
    const auto bit = static_cast<FieldSet>(1U << field);
    forEachWord(lowercased(text), [&](std::string_view spelled) {
      const TextDictionary::Number word = words_.add(spelled);
      if (word == lastPlaces_.size()) lastPlaces_.push_back(nowhere);
      std::size_t& place = lastPlaces_[word];
      if (place == nowhere || place < start) {
        place = occurrences_.size();
        occurrences_.push_back({word, bit});
      } else {
        occurrences_[place].fields |= bit;
      }
    });
  });
  ends_.push_back(occurrences_.size());
}

WordIndex::WordIndex(std::vector<WordBlock> blocks) {
  TextDictionary words;
  std::vector<std::size_t> counts;
  for (WordBlock& block : blocks) {
    const std::vector<TextDictionary::Number> numbers = addAll(block.words_, words);
    block.words_ = {};
    counts.resize(words.size());
    for (WordBlock::Occurrence& occurrence : block.occurrences_) {
      occurrence.word = numbers[occurrence.word];
      ++counts[occurrence.word];
    }
  }

  const std::vector<TextDictionary::Number> order = words.inOrderOfBytes();
  std::vector<std::size_t> next(words.size());  // by number in `words`: where its next record goes
  std::size_t end = 0;
  for (const TextDictionary::Number number : order) {
    addWord(words.text(number));
    next[number] = end;
    end += counts[number];
    placeEnds_.push_back(end);
  }
  records_.resize(end);
  fields_.resize(end);
  for (WordBlock& block : blocks) {
    addPlaces(block, next);
    block = {};
  }
}

void WordIndex::addWord(std::string_view text) {
  const std::vector<std::string_view> all = characters(text);
  texts_ += text;
  textEnds_.push_back(texts_.size());
  lengths_.push_back(static_cast<std::uint32_t>(all.size()));
  signatures_.push_back(signatureOf(all));
}

void WordIndex::addPlaces(const WordBlock& block, std::vector<std::size_t>& next) {
  auto occurrence = block.occurrences_.begin();
  for (const std::size_t end : block.ends_) {
    for (; occurrence != block.occurrences_.begin() + static_cast<std::ptrdiff_t>(end); ++occurrence) {
      const std::size_t place = next[occurrence->word]++;
      records_[place] = static_cast<std::uint32_t>(recordCount_);
      fields_[place] = occurrence->fields;
    }
    ++recordCount_;
  }
}

WordIndex::Matches WordIndex::matches(const WordPattern& pattern) const {
  Matches found;
  std::size_t number = firstNotBefore(pattern.word());
  if (number < wordCount() && word(number) == pattern.word()) found.full.push_back(places(number));
  if (pattern.matchesLongerWords())
    for (; number < wordCount() && word(number).starts_with(pattern.word()); ++number)
      if (pattern.begins(word(number))) found.prefix.push_back(places(number));
  if (pattern.matchesSimilarWords()) addSimilar(pattern, found.fuzzy);
  return found;
}

void WordIndex::addSimilar(const WordPattern& pattern, std::vector<Places>& found) const {
  const std::uint64_t signature = signatureOf(pattern.characters());
  const auto mostDifferences = static_cast<int>(2 * pattern.threshold());
  const std::size_t shortest = pattern.length() - pattern.threshold();
  const std::size_t longest = pattern.length() + pattern.threshold();
  for (std::size_t number = 0; number < wordCount(); ++number)
    if (lengths_[number] >= shortest && lengths_[number] <= longest &&
        std::popcount(signatures_[number] ^ signature) <= mostDifferences && pattern.resembles(word(number)))
      found.push_back(places(number));
}

std::string_view WordIndex::word(std::size_t number) const {
  const std::size_t start = number == 0 ? 0 : textEnds_[number - 1];
  return std::string_view(texts_).substr(start, textEnds_[number] - start);
}

WordIndex::Places WordIndex::places(std::size_t number) const {
  const std::size_t start = number == 0 ? 0 : placeEnds_[number - 1];
  const std::size_t count = placeEnds_[number] - start;
  return {std::span(records_).subspan(start, count), std::span(fields_).subspan(start, count)};
}

std::size_t WordIndex::firstNotBefore(std::string_view text) const {
  const auto numbers = std::views::iota(std::size_t{0}, wordCount());
  return *std::ranges::partition_point(numbers, [&](std::size_t number) { return word(number) < text; });
}

}  // namespace tq

#include "Benchmarks/Library/Vocabulary.hpp"

#include <algorithm>
#include <fstream>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string_view>

namespace tq::compare {

namespace {

constexpr std::size_t shortestWord = 3, longestWord = 14;

/// About every second word of a text is one of these, none of which is worth searching for.
const RankedTexts& fillers() {
  static const RankedTexts texts({"the", "of",  "and", "a",    "to",   "in",   "is",    "with", "on",     "by",
                                  "at",  "as",  "it",  "an",   "from", "for",  "near",  "are",  "behind", "while",
                                  "his", "her", "two", "into", "over", "that", "under", "one",  "their",  "towards"});
  return texts;
}

bool isPlain(std::string_view word) {
  return word.size() >= shortestWord && word.size() <= longestWord &&
         std::ranges::all_of(word, [](char c) { return c >= 'a' && c <= 'z'; });
}

RankedTexts wordsOf(const std::filesystem::path& dictionary, std::size_t size, Random& random) {
  std::vector<std::pair<double, std::string>> ranked;
  std::ifstream file(dictionary);
  for (std::string word; std::getline(file, word);)
    if (isPlain(word)) ranked.emplace_back(static_cast<double>(word.size()) + 8 * random.unit(), word);
  if (ranked.size() < size) throw std::runtime_error(dictionary.string() + " has too few words");
  std::ranges::sort(ranked);
  std::vector<std::string> words;
  for (std::size_t place = 0; place < size; ++place)
    words.push_back(std::move(ranked[place].second));
  return RankedTexts(std::move(words));
}

}  // namespace

RankedTexts::RankedTexts(std::vector<std::string> texts) : texts_(std::move(texts)), sums_(texts_.size()) {
  for (std::size_t place = 0; place < sums_.size(); ++place)
    sums_[place] = 1 / static_cast<double>(place + 2);
  std::partial_sum(sums_.begin(), sums_.end(), sums_.begin());
}

const std::string& RankedTexts::any(Random& random) const {
  const auto place = std::ranges::upper_bound(sums_, random.unit() * sums_.back());
  return texts_[std::min(static_cast<std::size_t>(place - sums_.begin()), texts_.size() - 1)];
}

Vocabulary::Vocabulary(const std::filesystem::path& dictionary, std::size_t size, Random random)
    : words(wordsOf(dictionary, size, random)) {}

std::string Vocabulary::sentence(std::size_t count, Random& random) const {
  std::string text;
  for (std::size_t word = 0; word < count; ++word)
    text.append(word == 0 ? "" : " ").append((random.chance(2) ? fillers() : words).any(random));
  if (!text.empty() && text.front() >= 'a') text.front() = static_cast<char>(text.front() - 'a' + 'A');
  return text + ".";
}

RankedTexts Vocabulary::phrases(std::size_t count, Random& random) const {
  std::set<std::string> known;
  std::vector<std::string> phrases;
  while (phrases.size() < count) {
    std::string phrase = words.any(random);
    if (random.chance(2)) phrase.append(random.chance(2) ? " " : "-").append(words.any(random));
    if (known.insert(phrase).second) phrases.push_back(std::move(phrase));
  }
  return RankedTexts(std::move(phrases));
}

}  // namespace tq::compare

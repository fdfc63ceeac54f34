#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

/// A word of a query, ready to be compared with the words of records. Lengths are in characters.
class WordPattern {
 public:
  static constexpr double fullMatch = 1.0;
  static constexpr double prefixMatch = 0.6;
  static constexpr double fuzzyMatch = 0.5;

  explicit WordPattern(std::string word);
  WordPattern(const WordPattern&) = delete;  // characters_ are views into word_
  WordPattern& operator=(const WordPattern&) = delete;

  const std::string& word() const { return word_; }
  const std::vector<std::string_view>& characters() const { return characters_; }
  std::size_t length() const { return characters_.size(); }

  /// How many edits a similar word may be away.
  std::size_t threshold() const { return length() <= 9 ? 1 : 2; }

  /// Short words match nothing but themselves.
  bool matchesLongerWords() const { return length() >= 3; }
  bool matchesSimilarWords() const { return length() >= 5; }

  /// True when `token` is longer and its first characters are this word.
  bool begins(std::string_view token) const;

  /// True when the word is long enough to be taken for `token`, and `token` not more than the threshold away.
  bool resembles(std::string_view token) const;

 private:
  std::string word_;
  std::vector<std::string_view> characters_;
  bool isPlain_;  ///< whether each byte is a character
};

}  // namespace tq

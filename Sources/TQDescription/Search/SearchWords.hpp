#pragma once

#include <array>
#include <string_view>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace detail {

/// By byte: whether it separates words as a character of its own.
inline constexpr auto separatorBytes = [] {
  std::array<bool, 256> separators{};
  constexpr std::string_view punctuation = ".,;:?!\"'()[]{}/\\|*#@$&+=";
  static_assert(punctuation.size() == 24);
  for (const char sign : punctuation)
    separators[static_cast<unsigned char>(sign)] = true;
  for (const char blank : {' ', '\t', '\n', '\v', '\f', '\r'})
    separators[static_cast<unsigned char>(blank)] = true;
  return separators;
}();

}  // namespace detail

/// True for a character that stands between words: white space or punctuation. A sign that carries a mark, as a keycap
/// does, is another character than the sign.
inline bool separatesWords(std::string_view character) {
  if (character.size() == 1) return detail::separatorBytes[static_cast<unsigned char>(character.front())];
  return isWhiteSpace(character);
}

/// True for a word that says nothing.
bool isStopword(std::string_view word);

/// Calls `visit` with each word of a lower-cased text in order, as a view into it.
template <class Visit>
void forEachWord(std::string_view lowercasedText, Visit visit) {
  CharacterWalk walk(lowercasedText);
  std::size_t start = 0;
  std::size_t end = 0;
  const auto finish = [&] {
    const std::string_view word = lowercasedText.substr(start, end - start);
    if (!word.empty() && !isStopword(word)) visit(word);
  };
  for (std::string_view character = walk.next(); !character.empty(); character = walk.next()) {
    const std::size_t next = end + character.size();
    if (separatesWords(character)) {
      finish();
      start = next;
    }
    end = next;
  }
  finish();
}

}  // namespace tq

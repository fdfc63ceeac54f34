#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "TQPlatform/Unicode.hpp"

namespace tq {

/// True for a character that separates words, white space aside. A sign that carries a mark, as a keycap does, is
/// another character.
inline bool isPunctuation(std::string_view character) {
  constexpr std::string_view signs = ".,;:?!\"'()[]{}/\\|*#@$&+=";
  static_assert(signs.size() == 24);
  return character.size() == 1 && signs.find(character.front()) != std::string_view::npos;
}

/// True for a word that says nothing.
bool isStopword(std::string_view word);

/// Calls `visit` with each word of a text in lower case, in order.
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
    if (isWhiteSpace(character) || isPunctuation(character)) {
      finish();
      start = next;
    }
    end = next;
  }
  finish();
}

}  // namespace tq

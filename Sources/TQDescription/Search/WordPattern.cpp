#include "TQDescription/Search/WordPattern.hpp"

#include "TQDescription/Search/EditDistance.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

WordPattern::WordPattern(std::string word)
    : word_(std::move(word)), characters_(tq::characters(word_)), isPlain_(isPlainASCII(word_)) {}

bool WordPattern::begins(std::string_view token) const {
  return matchesLongerWords() && token.size() > word_.size() && token.starts_with(word_) &&
         characterPrefix(token, length()) == word_;
}

bool WordPattern::resembles(std::string_view token) const {
  if (!matchesSimilarWords()) return false;
  if (isPlain_ && isPlainASCII(token)) return isWithinEditDistance(std::string_view(word_), token, threshold());
  return isWithinEditDistance(characters_, tq::characters(token), threshold());
}

}  // namespace tq

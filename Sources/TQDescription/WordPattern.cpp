#include "TQDescription/WordPattern.hpp"

#include "TQDescription/EditDistance.hpp"
#include "TQPlatform/Unicode.hpp"

namespace tq {

WordPattern::WordPattern(std::string word) : word_(std::move(word)), characters_(tq::characters(word_)) {}

bool WordPattern::begins(std::string_view token) const {
  return matchesLongerWords() && token.size() > word_.size() && token.starts_with(word_) &&
         characterPrefix(token, length()) == word_;
}

bool WordPattern::resembles(std::string_view token) const {
  return matchesSimilarWords() && isWithinEditDistance(characters_, tq::characters(token), threshold());
}

}  // namespace tq

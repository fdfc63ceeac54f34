#include "TQDescription/SearchWords.hpp"

namespace tq {
namespace {

constexpr auto stopwords = [] {
  auto words = std::to_array<std::string_view>(
      {"a",  "an", "and", "or",  "the",  "of", "in",   "on", "at",   "with",  "to",   "for",   "from",  "by",
       "as", "is", "are", "was", "were", "be", "show", "me", "find", "clips", "clip", "video", "videos"});
  std::sort(words.begin(), words.end());
  return words;
}();
static_assert(stopwords.size() == 27);

}  // namespace

bool isStopword(std::string_view word) {
  return std::binary_search(stopwords.begin(), stopwords.end(), word);
}

}  // namespace tq

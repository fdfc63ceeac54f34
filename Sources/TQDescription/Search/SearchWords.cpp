#include "TQDescription/Search/SearchWords.hpp"

#include <algorithm>
#include <cstdint>

namespace tq {
namespace {

constexpr auto stopwords = std::to_array<std::string_view>(
    {"a",  "an", "and", "or",  "the",  "of", "in",   "on", "at",   "with",  "to",   "for",   "from",  "by",
     "as", "is", "are", "was", "were", "be", "show", "me", "find", "clips", "clip", "video", "videos"});
static_assert(stopwords.size() == 27);

constexpr std::size_t longest = 6;

/// The bytes of a word that is not too long, as one number: they are compared for every word of every record. The 1
/// before them keeps zero bytes at the start.
constexpr std::uint64_t packed(std::string_view word) {
  std::uint64_t number = 1;
  for (const char c : word)
    number = number << 8 | static_cast<unsigned char>(c);
  return number;
}

constexpr auto packedStopwords = [] {
  std::array<std::uint64_t, stopwords.size()> numbers{};
  std::transform(stopwords.begin(), stopwords.end(), numbers.begin(), packed);
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}();
static_assert(std::all_of(stopwords.begin(), stopwords.end(), [](auto word) { return word.size() <= longest; }));

}  // namespace

bool isStopword(std::string_view word) {
  return word.size() <= longest && std::binary_search(packedStopwords.begin(), packedStopwords.end(), packed(word));
}

}  // namespace tq

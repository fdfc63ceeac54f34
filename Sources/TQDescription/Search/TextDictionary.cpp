#include "TQDescription/Search/TextDictionary.hpp"

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace tq {
namespace {

constexpr std::size_t fewestSlots = 64;

std::uint64_t loaded(const char* bytes, std::size_t count) {
  std::uint64_t value = 0;
  std::memcpy(&value, bytes, count);
  return value;
}

/// Four to eight bytes, some of them twice when there are fewer than eight.
std::uint64_t loadedShort(const char* bytes, std::size_t count) {
  return loaded(bytes, 4) << 32 | loaded(bytes + count - 4, 4);
}

/// The two halves of a product folded into one: each bit of the outcome depends on all bits of both factors.
std::uint64_t folded(std::uint64_t a, std::uint64_t b) {
  __extension__ using Product = unsigned __int128;
  const Product product = static_cast<Product>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

/// Every word and every facet value is hashed as often as it stands in a library, and most are short: this takes a
/// quarter of the instructions of the standard library's hash. The constants are the first digits of the roots of 2
/// and 3.
std::uint32_t hashOfText(std::string_view text) {
  constexpr std::uint64_t first = 0x6a09e667f3bcc909;
  constexpr std::uint64_t second = 0xbb67ae8584caa73b;
  const char* bytes = text.data();
  std::size_t left = text.size();
  std::uint64_t hash = left ^ first;
  for (; left > 16; bytes += 8, left -= 8)
    hash = folded(hash ^ loaded(bytes, 8), second);
  if (left >= 8)
    hash = folded(hash ^ loaded(bytes, 8), loaded(bytes + left - 8, 8) ^ second);
  else if (left >= 4)
    hash = folded(hash ^ loadedShort(bytes, left), second);
  else
    for (; left > 0; ++bytes, --left)
      hash = folded(hash ^ static_cast<unsigned char>(*bytes), second);
  return static_cast<std::uint32_t>(hash ^ hash >> 32);
}

}  // namespace

TextDictionary::Number TextDictionary::add(std::string_view text) {
  if (2 * (size() + 1) > slots_.size()) grow();
  const std::uint32_t hash = hashOfText(text);
  Slot& slot = slots_[slotOf(text, hash)];
  if (slot.above != 0) return slot.above - 1;

  if (size() == std::numeric_limits<Number>::max()) throw std::length_error("TextDictionary: too many texts");
  texts_ += text;
  ends_.push_back(texts_.size());
  slot = {static_cast<Number>(size()), hash};
  return slot.above - 1;
}

std::optional<TextDictionary::Number> TextDictionary::find(std::string_view text) const {
  if (slots_.empty()) return std::nullopt;
  const Slot& slot = slots_[slotOf(text, hashOfText(text))];
  if (slot.above == 0) return std::nullopt;
  return slot.above - 1;
}

std::string_view TextDictionary::text(Number number) const {
  const std::size_t start = number == 0 ? 0 : ends_[number - 1];
  return std::string_view(texts_).substr(start, ends_[number] - start);
}

std::vector<TextDictionary::Number> TextDictionary::inOrderOfBytes() const {
  std::vector<Number> order(size());
  std::iota(order.begin(), order.end(), Number{0});
  std::sort(order.begin(), order.end(), [&](Number a, Number b) { return text(a) < text(b); });
  return order;
}

std::size_t TextDictionary::slotOf(std::string_view sought, std::uint32_t hash) const {
  const std::size_t mask = slots_.size() - 1;
  std::size_t place = hash & mask;
  while (slots_[place].above != 0 && (slots_[place].hash != hash || text(slots_[place].above - 1) != sought))
    place = (place + 1) & mask;
  return place;
}

void TextDictionary::grow() {
  std::vector<Slot> larger(std::max(2 * slots_.size(), fewestSlots));
  const std::size_t mask = larger.size() - 1;
  for (const Slot& slot : slots_) {
    if (slot.above == 0) continue;
    std::size_t place = slot.hash & mask;
    while (larger[place].above != 0)
      place = (place + 1) & mask;
    larger[place] = slot;
  }
  slots_ = std::move(larger);
}

}  // namespace tq

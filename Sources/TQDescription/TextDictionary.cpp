#include "TQDescription/TextDictionary.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>
#include <stdexcept>

namespace tq {
namespace {

constexpr std::size_t fewestSlots = 64;

std::uint32_t hashOfText(std::string_view text) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(text));
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

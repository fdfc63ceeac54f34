#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tq {

/// `count` of the items at even steps through the list, both ends included: entry i is the item at the whole part of
/// i * (items - 1) / (count - 1). A count below 1 gives none, 1 the first item, and one that covers all of them the
/// list.
template <class Item>
std::vector<Item> evenlySpacedSubset(const std::vector<Item>& items, std::int64_t count) {
  if (count < 1) return {};
  if (count >= static_cast<std::int64_t>(items.size())) return items;
  if (count == 1) return {items.front()};
  const double step = static_cast<double>(items.size() - 1) / static_cast<double>(count - 1);
  std::vector<Item> subset;
  for (std::int64_t index = 0; index < count; ++index)
    subset.push_back(items[static_cast<std::size_t>(step * static_cast<double>(index))]);
  return subset;
}

}  // namespace tq

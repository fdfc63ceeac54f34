#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <span>
#include <stop_token>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"

namespace tq {

/// Gives a record by its number, from any thread. The reference stays valid for as long as the function is used.
using RecordAt = std::function<const DescriptionResult&(std::size_t number)>;

inline RecordAt recordsIn(std::span<const DescriptionResult> records) {
  return [records](std::size_t number) -> const DescriptionResult& { return records[number]; };
}

namespace detail {

template <class T>
void fetch(std::span<const T> objects) {
  constexpr std::size_t line = 64;
  const auto* const bytes = reinterpret_cast<const char*>(objects.data());
  for (std::size_t place = 0; place < objects.size_bytes(); place += line)
    __builtin_prefetch(bytes + place);
}

/// Has the processor fetch records that are taken in a little later, first themselves and then their lists: they lie
/// anywhere in a memory that is far larger than its caches, and one that has to be waited for takes as long as the work
/// on it.
inline void fetchAhead(const RecordAt& record, std::size_t number, std::size_t last) {
  constexpr std::size_t ahead = 3;
  if (number + 2 * ahead < last) fetch(std::span(&record(number + 2 * ahead), 1));
  if (number + ahead >= last) return;
  const DescriptionResult& next = record(number + ahead);
  fetch(std::span(next.shots));
  for (const auto list : {&GlobalSummary::primarySubjects, &GlobalSummary::themes, &GlobalSummary::searchKeywords,
                          &GlobalSummary::suggestedUseCases})
    if (const auto& texts = next.global.*list) fetch(std::span(*texts));
}

}  // namespace detail

/// Divides `count` records into at most `width` portions of neighbours and has each of them taken in by a thread of its
/// own, record by record through `add`. Gives the portions in their order. A stop request ends it with `Cancelled`.
template <class Portion>
std::vector<Portion> inPortions(std::size_t count, const RecordAt& record, std::size_t width, std::stop_token stop) {
  std::vector<Portion> portions(std::max<std::size_t>(width, 1));
  forEachWindowed(portions.size(), portions.size(), std::move(stop),
                  [&](std::size_t index, const std::stop_token& end) {
                    const std::size_t last = count * (index + 1) / portions.size();
                    for (std::size_t number = count * index / portions.size(); number < last; ++number) {
                      if (end.stop_requested()) throw Cancelled();
                      detail::fetchAhead(record, number, last);
                      portions[index].add(record(number));
                    }
                  });
  return portions;
}

}  // namespace tq

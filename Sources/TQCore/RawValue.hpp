#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace tq {

/// The raw strings of an enumeration's cases, in case order. Each enumeration that reaches a file specialises it:
///   template <>
///   inline constexpr auto rawValues<Colour> = std::to_array<std::string_view>({"red", "deep-blue"});
template <class Enum>
inline constexpr std::array<std::string_view, 0> rawValues{};

template <class Enum>
constexpr std::string_view rawValue(Enum value) {
  return rawValues<Enum>.at(static_cast<std::size_t>(value));
}

/// The case of that raw string, or absent when it is none.
template <class Enum>
constexpr std::optional<Enum> fromRawValue(std::string_view raw) {
  for (std::size_t index = 0; index < rawValues<Enum>.size(); ++index)
    if (rawValues<Enum>[index] == raw) return static_cast<Enum>(index);
  return std::nullopt;
}

/// All cases in order.
template <class Enum>
constexpr auto allCases() {
  std::array<Enum, rawValues<Enum>.size()> cases{};
  for (std::size_t index = 0; index < cases.size(); ++index)
    cases[index] = static_cast<Enum>(index);
  return cases;
}

}  // namespace tq

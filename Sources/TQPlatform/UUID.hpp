#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

/// A universally unique identifier (RFC 4122).
class UUID {
 public:
  /// The nil UUID, all bits zero.
  UUID() = default;

  /// A new random UUID (version 4).
  static UUID random();

  /// Reads the 36-character form in either case; anything else is absent.
  static std::optional<UUID> parse(std::string_view text);

  /// The 36-character form in upper case.
  std::string text() const;

  auto operator<=>(const UUID&) const = default;

 private:
  std::array<std::uint8_t, 16> bytes_{};
  friend struct std::hash<UUID>;
};

}  // namespace tq

template <>
struct std::hash<tq::UUID> {
  std::size_t operator()(const tq::UUID& id) const noexcept;
};

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tq {

/// Gives each distinct text a number, counted from zero in the order of arrival. Holds all texts in one block of
/// memory.
class TextDictionary {
 public:
  using Number = std::uint32_t;

  /// The text's number, a new one if it has none yet. Throws `std::length_error` beyond 2^32 - 1 texts.
  Number add(std::string_view text);

  std::optional<Number> find(std::string_view text) const;

  /// Valid until the next `add`.
  std::string_view text(Number number) const;

  std::size_t size() const { return ends_.size(); }

  /// All numbers, sorted by the bytes of their texts.
  std::vector<Number> inOrderOfBytes() const;

 private:
  struct Slot {
    std::uint32_t above = 0;  ///< number + 1, or 0 for an empty one
    std::uint32_t hash = 0;   ///< so that nearly all comparisons and all growth need no text
  };

  /// Where the text stands, or the empty slot where it would.
  std::size_t slotOf(std::string_view text, std::uint32_t hash) const;
  void grow();

  std::string texts_;
  std::vector<std::size_t> ends_;  ///< by number: end of the text within texts_
  std::vector<Slot> slots_;        ///< open addressing, a power of two
};

}  // namespace tq

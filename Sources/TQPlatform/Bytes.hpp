#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace tq {

/// Binary content: an image, a file, the output of a program.
using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

inline ByteView viewOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

inline std::string_view textOf(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace tq

#pragma once

#include <cstddef>
#include <string>

#include "TQPlatform/Bytes.hpp"

namespace tq {

// Base64 in its standard alphabet, padded, without line breaks (RFC 4648, section 4).

/// The number of characters that so many bytes become.
constexpr std::size_t base64Length(std::size_t byteCount) {
  return (byteCount + 2) / 3 * 4;
}

/// Writes the text of `bytes` straight behind `text`; nothing is allocated when `text` has the room reserved.
void appendBase64(std::string& text, ByteView bytes);

}  // namespace tq

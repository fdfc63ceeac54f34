#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

#include "TQPlatform/JSON/JSON.hpp"

namespace tq {

// The two readers behind `parseJSON`.

inline constexpr std::size_t deepestJSONNesting = 256;

/// Reads good text at the speed of memory. Absent for text that is no JSON, and now and then for text that is: an
/// integer beyond 64 bits, for one. What it reads is what `readJSONPatiently` would.
std::optional<JSONValue> readJSONQuickly(std::string_view text);

/// Reads as `parseJSON` does, and says where and why a text is refused.
JSONValue readJSONPatiently(std::string_view text);

}  // namespace tq

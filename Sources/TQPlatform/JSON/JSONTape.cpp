#include "TQPlatform/JSON/JSONTape.hpp"

#include <algorithm>

#include "TQPlatform/JSON/JSONReader.hpp"

namespace tq {

std::optional<simdjson::dom::element> JSONTape::read(std::string_view text) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  if (text.empty() || !hasRoomFor(text.size())) return std::nullopt;
  const auto element = parser_.parse(text.data(), text.size());
  return element.error() == simdjson::SUCCESS ? std::optional(element.value_unsafe()) : std::nullopt;
}

/// The parser makes room by itself as well, but then lets texts be nested as deep as it likes.
bool JSONTape::hasRoomFor(std::size_t size) {
  if (size <= parser_.capacity()) return true;
  return parser_.allocate(std::max(size, 2 * parser_.capacity()), deepestJSONNesting) == simdjson::SUCCESS;
}

}  // namespace tq

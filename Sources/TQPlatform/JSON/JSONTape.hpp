#pragma once

#include <bit>
#include <optional>
#include <simdjson.h>
#include <string_view>

#include "TQPlatform/JSON/JSONView.hpp"

namespace tq {

/// What simdjson makes of one text after the other, in the same memory. For the rooms of TQPlatform that read JSON.
class JSONTape {
 public:
  /// The text's value, good until the next call. Absent for text that is no JSON, and now and then for text that is:
  /// an integer beyond 64 bits, for one. Never nested more than `deepestJSONNesting` levels.
  std::optional<simdjson::dom::element> read(std::string_view text);

 private:
  bool hasRoomFor(std::size_t size);

  simdjson::dom::parser parser_;
};

/// A view into such memory as simdjson knows it, and back.
struct JSONView::OnTape {
  using Element = simdjson::dom::element;

  struct Place {
    const void* tape;
    std::uintptr_t index;
  };

  static Element element(const JSONView& view) { return std::bit_cast<Element>(Place{view.tape_, view.index_}); }

  static JSONView view(Element element) {
    const auto place = std::bit_cast<Place>(element);
    return JSONView(place.tape, place.index);
  }
};

}  // namespace tq

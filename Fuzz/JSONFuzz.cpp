#include "Fuzz/Property.hpp"
#include "TQPlatform/JSON.hpp"

namespace tq {

void fuzz::check(ByteView input) {
  JSONValue value;
  try {
    value = parseJSON(textOf(input));
  } catch (const JSONError&) {
    return;
  }
  for (const JSONLayout layout : {JSONLayout::compact, JSONLayout::pretty}) {
    const std::string text = writeJSON(value, layout);
    const JSONValue again = parseJSON(text);
    require(again == value, "a value is the same once written and read");
    require(writeJSON(again, layout) == text, "a value is written the same every time");
  }
}

}  // namespace tq

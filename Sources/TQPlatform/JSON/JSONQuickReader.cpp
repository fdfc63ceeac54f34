#include "TQPlatform/JSON/JSONReader.hpp"
#include "TQPlatform/JSON/JSONTape.hpp"

namespace tq {

namespace {

namespace dom = simdjson::dom;

/// The element as a value of ours; the nesting of the document is known to be bearable.
JSONValue valueOf(dom::element element);

JSONValue valueOf(dom::array elements) {
  JSONValue::Array array;
  array.reserve(elements.size());
  for (const dom::element element : elements)
    array.push_back(valueOf(element));
  return array;
}

JSONValue valueOf(dom::object members) {
  JSONValue::Object object;
  // Most texts have their keys sorted, so that each belongs to the end.
  for (const auto [key, value] : members)
    object.insert_or_assign(object.end(), std::string(key), valueOf(value));
  return object;
}

JSONValue valueOf(dom::element element) {
  switch (element.type()) {
    case dom::element_type::ARRAY: return valueOf(element.get_array().value_unsafe());
    case dom::element_type::OBJECT: return valueOf(element.get_object().value_unsafe());
    case dom::element_type::INT64: return element.get_int64().value_unsafe();
    case dom::element_type::UINT64: return element.get_double().value_unsafe();  // no other fits 63 bits
    case dom::element_type::DOUBLE: return element.get_double().value_unsafe();
    case dom::element_type::STRING: return element.get_string().value_unsafe();
    case dom::element_type::BOOL: return element.get_bool().value_unsafe();
    case dom::element_type::NULL_VALUE: break;
  }
  return nullptr;
}

}  // namespace

std::optional<JSONValue> readJSONQuickly(std::string_view text) {
  JSONTape tape;
  const auto element = tape.read(text);
  return element ? std::optional(valueOf(*element)) : std::nullopt;
}

}  // namespace tq

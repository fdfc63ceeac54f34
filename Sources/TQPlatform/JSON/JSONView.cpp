#include "TQPlatform/JSON/JSONView.hpp"

#include "TQPlatform/JSON/JSONTape.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace dom = simdjson::dom;

bool JSONView::isNull() const {
  return tape_ ? OnTape::element(*this).is_null() : value().isNull();
}

bool JSONView::isInteger() const {
  return tape_ ? OnTape::element(*this).is_int64() : value().isInteger();
}

bool JSONView::isArray() const {
  return tape_ ? OnTape::element(*this).is_array() : value().asArray() != nullptr;
}

bool JSONView::isObject() const {
  return tape_ ? OnTape::element(*this).is_object() : value().asObject() != nullptr;
}

std::optional<bool> JSONView::asBool() const {
  if (!tape_) return value().asBool();
  bool boolean = false;
  return OnTape::element(*this).get(boolean) == simdjson::SUCCESS ? std::optional(boolean) : std::nullopt;
}

std::optional<std::int64_t> JSONView::asInteger() const {
  if (!tape_) return value().asInteger();
  switch (OnTape::element(*this).type()) {
    case dom::element_type::INT64: return OnTape::element(*this).get_int64().value_unsafe();
    case dom::element_type::DOUBLE: return wholeNumber(OnTape::element(*this).get_double().value_unsafe());
    default: return std::nullopt;  // an unsigned one is beyond 63 bits
  }
}

std::optional<double> JSONView::asDouble() const {
  if (!tape_) return value().asDouble();
  double number = 0;
  return OnTape::element(*this).get(number) == simdjson::SUCCESS ? std::optional(number) : std::nullopt;
}

std::optional<std::string_view> JSONView::asString() const {
  if (!tape_) {
    const std::string* text = value().asString();
    return text ? std::optional<std::string_view>(*text) : std::nullopt;
  }
  std::string_view text;
  return OnTape::element(*this).get(text) == simdjson::SUCCESS ? std::optional(text) : std::nullopt;
}

std::string_view JSONView::kindName() const {
  if (!tape_) return value().kindName();
  switch (OnTape::element(*this).type()) {
    case dom::element_type::ARRAY: return JSONValue(JSONValue::Array()).kindName();
    case dom::element_type::OBJECT: return JSONValue(JSONValue::Object()).kindName();
    case dom::element_type::STRING: return JSONValue("").kindName();
    case dom::element_type::BOOL: return JSONValue(false).kindName();
    case dom::element_type::NULL_VALUE: return JSONValue(nullptr).kindName();
    default: return JSONValue(0).kindName();
  }
}

std::size_t JSONView::elementCount() const {
  if (!isArray()) return 0;
  return tape_ ? OnTape::element(*this).get_array().value_unsafe().size() : value().asArray()->size();
}

void JSONView::visitElements(const std::function<void(JSONView)>& visit) const {
  if (!isArray()) return;
  if (tape_) {
    const dom::array elements = OnTape::element(*this).get_array().value_unsafe();
    for (const dom::element element : elements)
      visit(OnTape::view(element));
  } else {
    for (const JSONValue& element : *value().asArray())
      visit(element);
  }
}

void JSONView::visitMembers(const std::function<void(std::string_view, JSONView)>& visit) const {
  if (!isObject()) return;
  if (tape_) {
    const dom::object members = OnTape::element(*this).get_object().value_unsafe();
    for (const dom::key_value_pair member : members)
      visit(member.key, OnTape::view(member.value));
  } else {
    for (const auto& [key, member] : *value().asObject())
      visit(key, member);
  }
}

}  // namespace tq

#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tq {

/// Text that is no JSON (RFC 8259), or a value that JSON cannot hold. `what()` is fit for a user.
class JSONError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One JSON value. Object keys are kept sorted by code point; of equal keys in a text the last one stays.
class JSONValue {
 public:
  using Array = std::vector<JSONValue>;
  using Object = std::map<std::string, JSONValue, std::less<>>;

  JSONValue() = default;  ///< null
  JSONValue(std::nullptr_t) {}
  JSONValue(bool value) : value_(value) {}
  JSONValue(int value) : value_(std::int64_t{value}) {}
  JSONValue(std::int64_t value) : value_(value) {}
  JSONValue(double value) : value_(value) {}
  JSONValue(const char* value) : value_(std::string(value)) {}
  JSONValue(std::string_view value) : value_(std::string(value)) {}
  JSONValue(std::string value) : value_(std::move(value)) {}
  JSONValue(Array value) : value_(std::move(value)) {}
  JSONValue(Object value) : value_(std::move(value)) {}

  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }
  /// True for a number that is kept as an integer: `2`, but not `2.0`.
  bool isInteger() const { return std::holds_alternative<std::int64_t>(value_); }

  /// The value as the kind asked for, or absent when it is of another kind. true and false are no numbers.
  std::optional<bool> asBool() const;
  /// A number without a fraction (`2`, `2.0`, `2e0`) that fits 64 bits.
  std::optional<std::int64_t> asInteger() const;
  /// Any number.
  std::optional<double> asDouble() const;
  const std::string* asString() const { return std::get_if<std::string>(&value_); }
  const Array* asArray() const { return std::get_if<Array>(&value_); }
  const Object* asObject() const { return std::get_if<Object>(&value_); }

  /// The member of that name; null pointer when there is none or this is no object.
  const JSONValue* find(std::string_view key) const;

  /// The kind in a user's words: "text", "a number", "true or false", "a list", "an object", "null".
  std::string_view kindName() const;

  bool operator==(const JSONValue&) const = default;

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, Array, Object> value_;
};

enum class JSONLayout { compact, pretty };

/// Reads one value from UTF-8 text; white space around it is fine, anything else is not. Nesting beyond 256 levels is
/// refused, so that a hostile text cannot exhaust the stack. Throws `JSONError`.
JSONValue parseJSON(std::string_view text);

/// Sorted keys, slashes as they are, doubles in their shortest form. Throws `JSONError` for a number that is not finite
/// and for text that is not UTF-8.
std::string writeJSON(const JSONValue& value, JSONLayout layout);

/// The text that `writeJSON` gives for a list of `count` elements, without ever holding more than one of them:
/// `element` makes each from its index.
std::string writeJSONList(std::size_t count, const std::function<JSONValue(std::size_t)>& element, JSONLayout layout);

}  // namespace tq

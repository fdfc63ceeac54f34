#include "TQPlatform/JSON/JSONReader.hpp"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>
#include <variant>
#include <vector>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

constexpr int numberOverflow = 406;  // nlohmann's id of that error

/// "line 3, column 7", counted from 1, columns in characters.
std::string placeOf(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  const auto line = std::count(before.begin(), before.end(), '\n') + 1;
  const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
  const std::size_t column = characterCount(before.substr(lineStart)) + 1;
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

/// Builds a `JSONValue` from the reader's events.
class Builder {
 public:
  explicit Builder(std::string_view text) : text_(text) {}

  JSONValue takeResult() { return std::move(result_); }

  bool null() { return add(nullptr); }
  bool boolean(bool value) { return add(value); }
  bool number_integer(std::int64_t value) { return add(value); }
  bool number_unsigned(std::uint64_t value) {
    const bool fits = value <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return fits ? add(static_cast<std::int64_t>(value)) : add(static_cast<double>(value));
  }
  bool number_float(double value, const std::string&) { return add(value); }
  bool string(std::string& value) { return add(std::move(value)); }
  bool binary(nlohmann::json::binary_t&) { return false; }

  bool start_object(std::size_t) { return open(JSONValue::Object()); }
  bool start_array(std::size_t) { return open(JSONValue::Array()); }
  bool end_object() { return close(); }
  bool end_array() { return close(); }
  bool key(std::string& name) {
    open_.back().key = std::move(name);
    return true;
  }

  bool parse_error(std::size_t position, const std::string&, const nlohmann::json::exception& error) {
    if (position > text_.size()) throw JSONError("the JSON text ends too early");
    const std::string place = placeOf(text_, position > 0 ? position - 1 : 0);
    throw JSONError(error.id == numberOverflow ? "a number at " + place + " is too large"
                                               : "no valid JSON at " + place);
  }

 private:
  struct Container {
    std::variant<JSONValue::Array, JSONValue::Object> members;
    std::string key;
  };

  bool open(std::variant<JSONValue::Array, JSONValue::Object> members) {
    if (open_.size() == deepestJSONNesting)
      throw JSONError("the JSON is nested more than " + std::to_string(deepestJSONNesting) + " levels deep");
    open_.push_back({std::move(members), {}});
    return true;
  }

  bool close() {
    Container done = std::move(open_.back());
    open_.pop_back();
    return std::visit([this](auto& members) { return add(std::move(members)); }, done.members);
  }

  bool add(JSONValue value) {
    if (open_.empty())
      result_ = std::move(value);
    else if (auto* array = std::get_if<JSONValue::Array>(&open_.back().members))
      array->push_back(std::move(value));
    else
      std::get<JSONValue::Object>(open_.back().members).insert_or_assign(open_.back().key, std::move(value));
    return true;
  }

  std::string_view text_;
  std::vector<Container> open_;
  JSONValue result_;
};

}  // namespace

JSONValue parseJSON(std::string_view text) {
  std::optional<JSONValue> value = readJSONQuickly(text);
  return value ? std::move(*value) : readJSONPatiently(text);
}

JSONValue readJSONPatiently(std::string_view text) {
  // The reader would take a zero byte for the end of the text.
  if (const std::size_t zero = text.find('\0'); zero != std::string_view::npos)
    throw JSONError("no valid JSON at " + placeOf(text, zero));
  Builder builder(text);
  nlohmann::json::sax_parse(text, &builder);
  return builder.takeResult();
}

}  // namespace tq

#include "TQPlatform/JSON/JSON.hpp"

#include <array>
#include <cmath>
#include <ranges>

#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

constexpr std::size_t quotedCharacters = 60;  // of a text that an error is about

/// Writes one value, and its members below it.
class Writer {
 public:
  explicit Writer(JSONLayout layout) : pretty_(layout == JSONLayout::pretty) {}

  std::string take() { return std::move(text_); }

  void write(const JSONValue& value) {
    if (const std::string* string = value.asString())
      writeString(*string);
    else if (const JSONValue::Array* array = value.asArray())
      writeMembers(*array, '[', ']', [this](const JSONValue& element) { write(element); });
    else if (const JSONValue::Object* object = value.asObject())
      writeMembers(*object, '{', '}', [this](const auto& member) {
        writeString(member.first);
        text_ += pretty_ ? ": " : ":";
        write(member.second);
      });
    else if (const auto boolean = value.asBool())
      text_ += *boolean ? "true" : "false";
    else if (value.isNull())
      text_ += "null";
    else
      writeNumber(value);
  }

  void writeList(std::size_t count, const std::function<JSONValue(std::size_t)>& element) {
    writeMembers(std::views::iota(std::size_t{0}, count), '[', ']', [&](std::size_t index) { write(element(index)); });
  }

 private:
  template <class Container, class WriteMember>
  void writeMembers(const Container& members, char opening, char closing, const WriteMember& writeMember) {
    text_ += opening;
    ++depth_;
    for (auto member = members.begin(); member != members.end(); ++member) {
      if (member != members.begin()) text_ += ',';
      startLine();
      writeMember(*member);
    }
    --depth_;
    if (!members.empty()) startLine();
    text_ += closing;
  }

  void startLine() {
    if (pretty_) text_.append(1, '\n').append(2 * depth_, ' ');
  }

  void writeNumber(const JSONValue& value) {
    if (value.isInteger()) {
      text_ += std::to_string(*value.asInteger());
      return;
    }
    const double number = *value.asDouble();
    if (!std::isfinite(number)) throw JSONError("JSON cannot hold the number " + shortestText(number));
    text_ += shortestText(number);
  }

  void writeString(std::string_view string) {
    if (!isValidUTF8(string))
      throw JSONError("JSON cannot hold text that is not UTF-8: " +
                      validUTF8(characterPrefix(string, quotedCharacters)));
    text_ += '"';
    for (auto rest = string.begin();;) {
      const auto next = std::find_if(rest, string.end(), &needsEscape);
      text_.append(rest, next);
      if (next == string.end()) break;
      writeEscaped(*next);
      rest = next + 1;
    }
    text_ += '"';
  }

  static bool needsEscape(char c) { return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\'; }

  void writeEscaped(char c) {
    constexpr std::string_view special = "\"\\\b\f\n\r\t";
    constexpr std::string_view letters = "\"\\bfnrt";
    constexpr std::string_view hexadecimal = "0123456789abcdef";
    if (const std::size_t index = special.find(c); index != std::string_view::npos) {
      text_ += '\\';
      text_ += letters[index];
    } else {
      const auto code = static_cast<unsigned char>(c);
      text_ += "\\u00";
      text_ += hexadecimal[code >> 4];
      text_ += hexadecimal[code & 0xF];
    }
  }

  bool pretty_;
  std::size_t depth_ = 0;
  std::string text_;
};

}  // namespace

std::optional<bool> JSONValue::asBool() const {
  const bool* value = std::get_if<bool>(&value_);
  return value ? std::optional(*value) : std::nullopt;
}

std::optional<std::int64_t> JSONValue::asInteger() const {
  if (const auto* integer = std::get_if<std::int64_t>(&value_)) return *integer;
  const double* number = std::get_if<double>(&value_);
  return number ? wholeNumber(*number) : std::nullopt;
}

std::optional<double> JSONValue::asDouble() const {
  if (const auto* integer = std::get_if<std::int64_t>(&value_)) return static_cast<double>(*integer);
  const double* number = std::get_if<double>(&value_);
  return number ? std::optional(*number) : std::nullopt;
}

const JSONValue* JSONValue::find(std::string_view key) const {
  const Object* object = asObject();
  if (!object) return nullptr;
  const auto found = object->find(key);
  return found == object->end() ? nullptr : &found->second;
}

std::string_view JSONValue::kindName() const {
  constexpr std::array<std::string_view, std::variant_size_v<decltype(value_)>> names{
      "null", "true or false", "a number", "a number", "text", "a list", "an object"};
  return names[value_.index()];
}

std::string writeJSON(const JSONValue& value, JSONLayout layout) {
  Writer writer(layout);
  writer.write(value);
  return writer.take();
}

std::string writeJSONList(std::size_t count, const std::function<JSONValue(std::size_t)>& element, JSONLayout layout) {
  Writer writer(layout);
  writer.writeList(count, element);
  return writer.take();
}

}  // namespace tq

#include "TQPlatform/JSON/JSONCursor.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "TQPlatform/JSON/JSONReader.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace {

/// Those that a double holds exactly.
constexpr auto powersOfTen = [] {
  std::array<double, 23> powers{};
  double power = 1;
  for (double& entry : powers) {
    entry = power;
    power *= 10;
  }
  return powers;
}();

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

/// A number without exponent, `mantissa` / 10^`places`, as the nearest float. The quotient of two exact doubles is the
/// nearest double, and its nearest float is that of the number too, unless the quotient lies halfway between two floats
/// (W. D. Clinger, "How to Read Floating Point Numbers Accurately", 1990). Absent where that does not hold.
std::optional<float> exactFloat(std::uint64_t mantissa, std::size_t places) {
  constexpr std::uint64_t exactLimit = std::uint64_t{1} << std::numeric_limits<double>::digits;
  if (mantissa > exactLimit || places >= powersOfTen.size()) return std::nullopt;
  const double quotient = static_cast<double>(mantissa) / powersOfTen[places];
  constexpr int surplusBits = std::numeric_limits<double>::digits - std::numeric_limits<float>::digits;
  constexpr std::uint64_t surplus = (std::uint64_t{1} << surplusBits) - 1;
  constexpr std::uint64_t halfway = std::uint64_t{1} << (surplusBits - 1);
  if ((std::bit_cast<std::uint64_t>(quotient) & surplus) == halfway) return std::nullopt;
  return static_cast<float>(quotient);
}

/// Any number that JSON allows; absent beyond the range of a float.
std::optional<float> anyFloat(std::string_view text) {
  float number = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), number).ec == std::errc()) return number;
  // Out of range is said of numbers that are too small as well, and those are zero.
  const double wide = parseJSON(text).asDouble().value();
  if (std::abs(wide) > 1) return std::nullopt;
  return static_cast<float>(wide);
}

}  // namespace

JSONCursor::JSONCursor(std::string_view text) : begin_(text.data()), at_(text.data()), end_(text.data() + text.size()) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(byteOrderMark)) at_ += byteOrderMark.size();
}

void JSONCursor::readList(const std::function<void()>& readElement) {
  readMembers('[', ']', readElement);
}

void JSONCursor::readElements(const std::function<void()>& readElement) {
  ++depth_;
  do
    readElement();
  while (takeIf(','));
  --depth_;
  finish();
}

void JSONCursor::readObject(const std::function<void(const std::string& key)>& readMember) {
  readMembers('{', '}', [&] {
    const std::string key = readString();
    expect(':');
    readMember(key);
  });
}

void JSONCursor::readMembers(char opening, char closing, const std::function<void()>& readOne) {
  expect(opening);
  if (++depth_ > deepestJSONNesting) fail();
  if (!takeIf(closing)) {
    do
      readOne();
    while (takeIf(','));
    expect(closing);
  }
  --depth_;
}

std::string JSONCursor::readString() {
  const std::string_view literal = scanString();
  const std::string_view content = literal.substr(1, literal.size() - 2);
  const auto isPlain = [](char c) { return c >= 0x20 && c < 0x7f && c != '\\'; };
  if (std::all_of(content.begin(), content.end(), isPlain)) return std::string(content);
  return *parseJSON(literal).asString();
}

/// Up to the closing quote; what is between is not looked at.
std::string_view JSONCursor::scanString() {
  skipWhiteSpace();
  const char* const start = at_;
  expect('"');
  for (; at_ != end_; ++at_) {
    if (*at_ == '"') return {start, ++at_};
    if (*at_ == '\\' && ++at_ == end_) break;
  }
  fail();
}

void JSONCursor::readFloats(std::vector<float>& numbers) {
  numbers.clear();
  expect('[');
  if (takeIf(']')) return;
  do
    numbers.push_back(readFloat());
  while (takeIf(','));
  expect(']');
}

float JSONCursor::readFloat() {
  skipWhiteSpace();
  const char* const start = at_;
  const char* at = at_;
  std::uint64_t mantissa = 0;
  const auto takeDigits = [&] {
    const char* const first = at;
    for (; at != end_ && isDigit(*at); ++at)
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(*at - '0');
    if (at == first) fail();
    return static_cast<std::size_t>(at - first);
  };
  const bool isNegative = at != end_ && *at == '-';
  if (isNegative) ++at;
  const char* const first = at;
  if (takeDigits() > 1 && *first == '0') fail();
  std::size_t places = 0;
  if (at != end_ && *at == '.') {
    ++at;
    places = takeDigits();
  }
  constexpr std::ptrdiff_t mostCharacters = std::numeric_limits<std::uint64_t>::digits10;  // the mantissa fits
  std::optional<float> number;
  if (at == end_ || (*at != 'e' && *at != 'E')) {
    if (at - start <= mostCharacters) number = exactFloat(mantissa, places);
    if (number && isNegative) number = -*number;
  } else {
    ++at;
    if (at != end_ && (*at == '+' || *at == '-')) ++at;
    takeDigits();
  }
  if (!number) number = anyFloat({start, at});
  if (!number) fail();
  at_ = at;
  return *number;
}

void JSONCursor::skipValue() {
  skipWhiteSpace();
  switch (peek()) {
    case '[': return readList([this] { skipValue(); });
    case '{': return readObject([this](const std::string&) { skipValue(); });
    case '"': return static_cast<void>(readString());
    case 't': return skipWord("true");
    case 'f': return skipWord("false");
    case 'n': return skipWord("null");
    default: break;
  }
  const char* const start = at_;
  while (at_ != end_ && (isDigit(*at_) || std::string_view("+-.eE").find(*at_) != std::string_view::npos))
    ++at_;
  parseJSON({start, at_});
}

void JSONCursor::skipWord(std::string_view word) {
  if (!std::string_view(at_, end_).starts_with(word)) fail();
  at_ += word.size();
}

void JSONCursor::finish() {
  skipWhiteSpace();
  if (at_ != end_) fail();
}

void JSONCursor::skipWhiteSpace() {
  while (at_ != end_ && (*at_ == ' ' || *at_ == '\n' || *at_ == '\r' || *at_ == '\t'))
    ++at_;
}

void JSONCursor::expect(char c) {
  if (!takeIf(c)) fail();
}

bool JSONCursor::takeIf(char c) {
  skipWhiteSpace();
  if (at_ == end_ || *at_ != c) return false;
  ++at_;
  return true;
}

void JSONCursor::fail() const {
  throw JSONError("not the JSON that was expected at byte " + std::to_string(at_ - begin_ + 1));
}

void appendJSONFloats(std::string& text, std::span<const float> numbers) {
  constexpr std::size_t longestFloat = 16;  // "-1.17549435e-38" and some room
  const std::size_t start = text.size();
  text.resize(start + numbers.size() * (longestFloat + 1) + 2);
  char* at = text.data() + start;
  *at++ = '[';
  for (const float& number : numbers) {
    if (!std::isfinite(number)) throw JSONError("JSON cannot hold the number " + shortestText(number));
    if (&number != numbers.data()) *at++ = ',';
    at = std::to_chars(at, at + longestFloat, number).ptr;
  }
  *at++ = ']';
  text.resize(static_cast<std::size_t>(at - text.data()));
}

}  // namespace tq

#include "TQPlatform/Text/NumberText.hpp"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>

namespace tq {

namespace {

/// `std::from_chars` knows no plus sign; a sign behind it must not slip through either.
std::string_view withoutPlus(std::string_view text) {
  const bool hasPlus = text.size() > 1 && text.front() == '+' && text[1] != '-';
  return hasPlus ? text.substr(1) : text;
}

}  // namespace

std::optional<double> parseDouble(std::string_view text) {
  if (text.find_first_not_of("0123456789+-.eE") != std::string_view::npos) return std::nullopt;
  const std::string_view number = withoutPlus(text);
  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
  return value;
}

std::optional<std::int64_t> parseInteger(std::string_view text) {
  const std::string_view number = withoutPlus(text);
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  if (error != std::errc() || end != number.data() + number.size()) return std::nullopt;
  return value;
}

std::optional<std::int64_t> wholeNumber(double number) {
  constexpr double limit = 0x1p63;  // the first double beyond the largest integer
  if (!(number >= -limit && number < limit) || std::trunc(number) != number) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

std::string fixedText(double value, int digits) {
  constexpr std::size_t longestWholePart = 311;  // sign, 309 digits, point
  std::string text(longestWholePart + static_cast<std::size_t>(std::max(digits, 0)), '\0');
  const auto end = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, digits).ptr;
  text.resize(static_cast<std::size_t>(end - text.data()));
  return text;
}

std::string paddedText(std::int64_t value, int digits) {
  std::string text = std::to_string(value);
  const std::size_t wanted = static_cast<std::size_t>(std::max(digits, 0));
  if (text.size() < wanted) text.insert(value < 0 ? 1 : 0, wanted - text.size(), '0');
  return text;
}

std::string shortestText(double value) {
  std::array<char, 32> buffer;
  char* const first = buffer.data();
  char* const last = first + buffer.size();
  std::string scientific(first, std::to_chars(first, last, value, std::chars_format::scientific).ptr);
  const std::size_t mark = scientific.find('e');
  if (mark == std::string::npos) return scientific;  // not finite

  const int exponent = std::atoi(scientific.c_str() + mark + 1);
  if (exponent < -4 || exponent > 14) return scientific;
  std::string fixed(first, std::to_chars(first, last, value, std::chars_format::fixed).ptr);
  if (fixed.find('.') == std::string::npos) fixed += ".0";
  return fixed;
}

}  // namespace tq

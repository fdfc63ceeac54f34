#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tq {

// Numbers as text, independent of the locale.

/// The whole text as decimal digits with optional sign, point and exponent: no blanks, no hexadecimal, no infinity, no
/// not-a-number. A value beyond the range of a double is absent.
std::optional<double> parseDouble(std::string_view text);

/// The whole text as decimal digits with an optional sign; absent when it does not fit.
std::optional<std::int64_t> parseInteger(std::string_view text);

/// The number itself when it has no fraction and fits.
std::optional<std::int64_t> wholeNumber(double number);

/// What C's "%.<digits>f" prints.
std::string fixedText(double value, int digits);

/// What C's "%0<digits>d" prints: at least so many characters, filled up with zeros.
std::string paddedText(std::int64_t value, int digits);

/// The shortest decimal form that reads back as the same double, always with a fractional part ("30.0") or an exponent.
std::string shortestText(double value);

}  // namespace tq

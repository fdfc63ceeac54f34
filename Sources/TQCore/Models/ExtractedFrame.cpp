#include "TQCore/Models/ExtractedFrame.hpp"

#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace tq {

std::string CMTimecode::formatted() const {
  const double rounded = std::round(seconds * 1000.0);
  const bool fits = rounded >= -0x1p63 && rounded < 0x1p63;  // false for not-a-number too
  if (!fits) std::abort();

  const auto total = static_cast<std::int64_t>(rounded);
  const std::int64_t hours = total / 3'600'000;
  const std::int64_t minutes = total % 3'600'000 / 60'000;
  const std::int64_t wholeSeconds = total % 60'000 / 1000;
  const std::int64_t milliseconds = total % 1000;
  std::array<char, 64> text;
  const int length = std::snprintf(text.data(), text.size(), "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%03" PRId64,
                                   hours, minutes, wholeSeconds, milliseconds);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace tq

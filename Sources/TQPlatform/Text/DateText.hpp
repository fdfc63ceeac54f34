#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// "2026-11-21T10:00:00Z": UTC, whole seconds, the fraction cut off towards the past.
std::string iso8601(Date date);

/// Reads the form above and the same with an offset such as "+01:00" for the Z. Fractions, a blank for the T, a missing
/// zone and dates that do not exist are refused.
std::optional<Date> parseISO8601(std::string_view text);

}  // namespace tq

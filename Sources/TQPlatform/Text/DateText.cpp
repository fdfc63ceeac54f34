#include "TQPlatform/Text/DateText.hpp"

#include <array>
#include <chrono>
#include <cstdio>

namespace tq {

namespace chr = std::chrono;

namespace {

/// The number in the digits at `position`, or absent when one of them is no digit.
std::optional<int> digits(std::string_view text, std::size_t position, std::size_t count) {
  int value = 0;
  for (const char c : text.substr(position, count)) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + (c - '0');
  }
  return value;
}

/// Reads "Z", "+01:00" or "-01:00".
std::optional<chr::minutes> parseZone(std::string_view zone) {
  if (zone == "Z") return chr::minutes(0);
  if (zone.size() != 6 || (zone[0] != '+' && zone[0] != '-') || zone[3] != ':') return std::nullopt;
  const auto hour = digits(zone, 1, 2);
  const auto minute = digits(zone, 4, 2);
  if (!hour || !minute || *hour > 23 || *minute > 59) return std::nullopt;
  const chr::minutes offset = chr::hours(*hour) + chr::minutes(*minute);
  return zone[0] == '-' ? -offset : offset;
}

}  // namespace

std::string iso8601(Date date) {
  const auto moment = chr::floor<chr::seconds>(date);
  const auto midnight = chr::floor<chr::days>(moment);
  const chr::year_month_day day(midnight);
  const chr::hh_mm_ss time(moment - midnight);
  std::array<char, 32> buffer;
  const int length = std::snprintf(buffer.data(), buffer.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", int(day.year()),
                                   unsigned(day.month()), unsigned(day.day()), static_cast<int>(time.hours().count()),
                                   static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return std::string(buffer.data(), static_cast<std::size_t>(length));
}

std::optional<Date> parseISO8601(std::string_view text) {
  constexpr std::string_view form = "YYYY-MM-DDThh:mm:ss";
  if (text.size() <= form.size()) return std::nullopt;
  for (const std::size_t mark : {4, 7, 10, 13, 16})
    if (text[mark] != form[mark]) return std::nullopt;

  const auto year = digits(text, 0, 4), month = digits(text, 5, 2), dayOfMonth = digits(text, 8, 2);
  const auto hour = digits(text, 11, 2), minute = digits(text, 14, 2), second = digits(text, 17, 2);
  const auto offset = parseZone(text.substr(form.size()));
  if (!year || !month || !dayOfMonth || !hour || !minute || !second || !offset) return std::nullopt;

  const chr::year_month_day day{chr::year(*year), chr::month(static_cast<unsigned>(*month)),
                                chr::day(static_cast<unsigned>(*dayOfMonth))};
  if (!day.ok() || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;

  const chr::sys_seconds moment =
      chr::sys_days(day) + chr::hours(*hour) + chr::minutes(*minute) + chr::seconds(*second) - *offset;
  if (moment < chr::ceil<chr::seconds>(Date::min()) || moment > chr::floor<chr::seconds>(Date::max()))
    return std::nullopt;
  return Date(moment);
}

}  // namespace tq

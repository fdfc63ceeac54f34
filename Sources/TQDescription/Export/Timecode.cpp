#include "TQDescription/Export/Timecode.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "TQCore/ValueCodec.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace {

/// A whole number that a hostile record cannot drive out of range, also when it is multiplied by a
/// `FrameDuration::num`.
std::int64_t count(double value) {
  constexpr double largest = 0x1p53;
  return value >= largest ? static_cast<std::int64_t>(largest) : value > 0 ? static_cast<std::int64_t>(value) : 0;
}

std::int64_t nominalRate(double frameRate) {
  return std::max<std::int64_t>(count(std::round(frameRate)), 1);
}

struct KnownRate {
  double frameRate;
  FrameDuration duration;
};

constexpr std::array knownRates{
    KnownRate{24000.0 / 1001.0, {1001, 24000}},
    KnownRate{23.976, {1001, 24000}},
    KnownRate{24.0, {1, 24}},
    KnownRate{25.0, {1, 25}},
    KnownRate{30000.0 / 1001.0, {1001, 30000}},
    KnownRate{29.97, {1001, 30000}},
    KnownRate{30.0, {1, 30}},
    KnownRate{50.0, {1, 50}},
    KnownRate{60000.0 / 1001.0, {1001, 60000}},
    KnownRate{59.94, {1001, 60000}},
    KnownRate{60.0, {1, 60}},
};

std::string_view withoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') + 1 - first);
}

/// The pieces between separators, empty ones too.
std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const std::size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

template <class Number>
std::optional<double> unlessNegative(std::optional<Number> number) {
  return number && *number >= 0 ? std::optional(static_cast<double>(*number)) : std::nullopt;
}

std::optional<double> parseSeconds(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos) return unlessNegative(parseDouble(text));
  const auto whole = unlessNegative(parseInteger(text.substr(0, point)));
  const auto fraction = parseDouble("0." + std::string(text.substr(point + 1)));
  if (!whole || !fraction) return std::nullopt;
  return *whole + *fraction;
}

}  // namespace

std::string SMPTETimecode::formatted() const {
  return paddedText(hours, 2) + ":" + paddedText(minutes, 2) + ":" + paddedText(seconds, 2) + ":" +
         paddedText(frames, 2);
}

template <>
std::size_t hashOf(const SMPTETimecode& timecode) {
  return hashOfValues(timecode.hours, timecode.minutes, timecode.seconds, timecode.frames);
}

std::int64_t Timecode::frames(double seconds, double frameRate) {
  if (!(frameRate > 0)) return 0;
  return count(std::floor(std::max(0.0, seconds) * frameRate + 0.5));
}

SMPTETimecode Timecode::smpte(double seconds, double frameRate) {
  if (!(frameRate > 0)) return {};
  const std::int64_t total = frames(seconds, frameRate);
  const std::int64_t nominal = nominalRate(frameRate);
  const std::int64_t whole = total / nominal;
  return {.hours = whole / 3600, .minutes = whole / 60 % 60, .seconds = whole % 60, .frames = total % nominal};
}

double Timecode::seconds(const SMPTETimecode& timecode, double frameRate) {
  if (!(frameRate > 0)) return 0;
  const double whole = static_cast<double>(timecode.hours) * 3600 + static_cast<double>(timecode.minutes) * 60 +
                       static_cast<double>(timecode.seconds);
  return (whole * std::round(frameRate) + static_cast<double>(timecode.frames)) / frameRate;
}

std::optional<double> Timecode::secondsFromSidecarTimecode(std::string_view text) {
  const std::vector<std::string_view> parts = split(withoutBlanks(text), ':');
  if (parts.size() != 3) return std::nullopt;
  const auto hours = unlessNegative(parseInteger(parts[0]));
  const auto minutes = unlessNegative(parseInteger(parts[1]));
  const auto seconds = parseSeconds(parts[2]);
  if (!hours || !minutes || !seconds) return std::nullopt;
  return *hours * 3600 + *minutes * 60 + *seconds;
}

FrameDuration Timecode::frameDuration(double frameRate) {
  for (const KnownRate& known : knownRates)
    if (std::abs(frameRate - known.frameRate) < 0.01) return known.duration;
  return {100, std::max<std::int64_t>(count(std::round(frameRate * 100)), 1)};
}

std::string Timecode::fcpxmlFrameDuration(double frameRate) {
  const FrameDuration duration = frameDuration(frameRate);
  return std::to_string(duration.num) + "/" + std::to_string(duration.den) + "s";
}

}  // namespace tq

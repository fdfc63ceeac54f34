#pragma once

#include <algorithm>
#include <array>
#include <string_view>

#include "TQCore/RawValue.hpp"

namespace tq {

// The words that the prompt asks a model to choose from. They do not bind the records, which hold these fields as free
// text; the prompt and the facets use them.

enum class ShotType { superWide, wide, mediumWide, medium, mediumClose, close, extremeClose };

template <>
inline constexpr auto rawValues<ShotType> = std::to_array<std::string_view>({
    "super-wide",
    "wide",
    "medium-wide",
    "medium",
    "medium-close",
    "close",
    "extreme-close",
});

enum class CameraMotion { static_, handheldStatic, pan, tilt, dolly, zoom, crane, drone, unknown };

template <>
inline constexpr auto rawValues<CameraMotion> = std::to_array<std::string_view>({
    "static",
    "handheld-static",
    "pan",
    "tilt",
    "dolly",
    "zoom",
    "crane",
    "drone",
    "unknown",
});

enum class PerceivedMood {
  joyful,
  content,
  neutral,
  pensive,
  sad,
  anxious,
  angry,
  surprised,
  fearful,
  disgusted,
  unclear,
};

template <>
inline constexpr auto rawValues<PerceivedMood> = std::to_array<std::string_view>({
    "joyful",
    "content",
    "neutral",
    "pensive",
    "sad",
    "anxious",
    "angry",
    "surprised",
    "fearful",
    "disgusted",
    "unclear",
});

enum class LocationType { indoor, outdoor, studio, mixed, unclear };

template <>
inline constexpr auto rawValues<LocationType> = std::to_array<std::string_view>({
    "indoor",
    "outdoor",
    "studio",
    "mixed",
    "unclear",
});

enum class TimeOfDay { dawn, morning, midday, afternoon, goldenHour, dusk, night, unclear };

template <>
inline constexpr auto rawValues<TimeOfDay> = std::to_array<std::string_view>({
    "dawn",
    "morning",
    "midday",
    "afternoon",
    "golden-hour",
    "dusk",
    "night",
    "unclear",
});

enum class Lighting { goldenHour, brightDaylight, overcast, dimInterior, nighttime, mixed, unclear };

template <>
inline constexpr auto rawValues<Lighting> = std::to_array<std::string_view>({
    "golden-hour",
    "bright-daylight",
    "overcast",
    "dim-interior",
    "nighttime",
    "mixed",
    "unclear",
});

/// The words of a vocabulary in case order: `all<ShotType>`.
template <class Vocabulary>
inline constexpr const auto& all = rawValues<Vocabulary>;

namespace detail {

inline constexpr std::string_view wordSeparator = " | ";

template <class Vocabulary>
inline constexpr std::size_t joinedLength = [] {
  std::size_t length = (all<Vocabulary>.size() - 1) * wordSeparator.size();
  for (const std::string_view word : all<Vocabulary>)
    length += word.size();
  return length;
}();

template <class Vocabulary>
inline constexpr auto joinedWords = [] {
  std::array<char, joinedLength<Vocabulary>> text{};
  auto end = text.begin();
  for (const std::string_view word : all<Vocabulary>) {
    if (end != text.begin()) end = std::copy(wordSeparator.begin(), wordSeparator.end(), end);
    end = std::copy(word.begin(), word.end(), end);
  }
  return text;
}();

template <class Vocabulary>
inline constexpr std::string_view joined{joinedWords<Vocabulary>.data(), joinedWords<Vocabulary>.size()};

}  // namespace detail

/// Each vocabulary as the prompt lists it: "indoor | outdoor | studio".
struct Vocab {
  static constexpr std::string_view shotTypes = detail::joined<ShotType>;
  static constexpr std::string_view cameraMotions = detail::joined<CameraMotion>;
  static constexpr std::string_view moods = detail::joined<PerceivedMood>;
  static constexpr std::string_view locations = detail::joined<LocationType>;
  static constexpr std::string_view timesOfDay = detail::joined<TimeOfDay>;
  static constexpr std::string_view lighting = detail::joined<Lighting>;
};

}  // namespace tq

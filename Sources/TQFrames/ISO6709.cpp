#include "TQFrames/ISO6709.hpp"

#include <cmath>
#include <vector>

#include "TQPlatform/Text/NumberText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

/// The signed pieces of the text: each sign but one at the very start begins a new piece.
std::vector<std::string_view> signedPieces(std::string_view text) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find_first_of("+-", 1), text.size());
    pieces.push_back(text.substr(0, length));
    text.remove_prefix(length);
  }
  return pieces;
}

std::optional<double> parseDegrees(std::string_view text, double limit) {
  const std::optional<double> degrees = parseDouble(text);
  return degrees && std::abs(*degrees) <= limit ? degrees : std::nullopt;
}

}  // namespace

std::optional<GPS> parseISO6709(std::string_view text) {
  text = trimmed(text);
  if (text.ends_with('/')) text.remove_suffix(1);
  const auto pieces = signedPieces(text);
  if (pieces.size() < 2) return std::nullopt;
  const auto latitude = parseDegrees(pieces[0], 90);
  const auto longitude = parseDegrees(pieces[1], 180);
  if (!latitude || !longitude) return std::nullopt;
  GPS gps{.latitude = *latitude, .longitude = *longitude, .altitudeMeters = {}, .placeName = {}};
  if (pieces.size() > 2) gps.altitudeMeters = parseDouble(pieces[2]);
  return gps;
}

}  // namespace tq

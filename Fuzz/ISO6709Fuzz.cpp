#include <cmath>

#include "Fuzz/Property.hpp"
#include "TQFrames/ISO6709.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

void fuzz::check(ByteView input) {
  const std::string text(trimmed(textOf(input)));
  const std::optional<GPS> gps = parseISO6709(textOf(input));
  require(parseISO6709(" " + text + "\n") == gps, "white space around a place says nothing");
  if (!gps) return;
  require(std::abs(gps->latitude) <= 90 && std::abs(gps->longitude) <= 180, "a place is on earth");
  require(std::isfinite(gps->altitudeMeters.value_or(0)), "an altitude is finite");
  if (!text.ends_with('/')) require(parseISO6709(text + "/") == gps, "the closing slash says nothing");
}

}  // namespace tq

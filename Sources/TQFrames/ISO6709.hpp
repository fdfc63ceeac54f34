#pragma once

#include <optional>
#include <string_view>

#include "TQCore/Models/SourceMetadata.hpp"

namespace tq {

/// Reads a place such as "+37.7749-122.4194+012.000/" (ISO 6709, decimal degrees): latitude, longitude and, if it is
/// there, the altitude in metres. White space at both ends and one closing slash are fine, further numbers are ignored.
/// Absent when there are fewer than two numbers or they lie beyond -90 to 90 and -180 to 180. `placeName` stays absent.
std::optional<GPS> parseISO6709(std::string_view text);

}  // namespace tq

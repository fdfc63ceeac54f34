#pragma once

#include <string>

#include "TQCore/Models/SourceMetadata.hpp"

namespace tq {

/// A recording place in one phrase: "Lisbon (38.722252, -9.139337, alt 12 m)"; without a name
/// "38.722252, -9.139337 (alt 12 m)". The altitude is left out where it is unknown.
std::string gpsText(const GPS& gps);

}  // namespace tq

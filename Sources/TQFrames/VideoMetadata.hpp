#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TQCore/Models/SourceMetadata.hpp"

namespace tq {

/// What a look at a clip tells before any frame is decoded.
struct VideoMetadata {
  double duration = 0;  ///< seconds; 0 when unknown
  int width = 0;        ///< pixels as stored, no rotation applied
  int height = 0;
  double frameRate = 0;           ///< frames a second; 0 when unknown
  std::string codec = "unknown";  ///< a codec name or four-character code
  std::int64_t fileSize = 0;      ///< bytes; 0 when unknown
  std::optional<GPS> gps;

  bool operator==(const VideoMetadata&) const = default;
};

}  // namespace tq

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "TQCore/RecordJSON.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// Where a clip was recorded.
struct GPS {
  double latitude = 0;   ///< degrees, -90 to 90
  double longitude = 0;  ///< degrees, -180 to 180
  std::optional<double> altitudeMeters;
  std::optional<std::string> placeName;  ///< reverse-geocoded

  bool operator==(const GPS&) const = default;
};
TQ_RECORD(GPS);

/// Facts about the clip file, none of them a model's claim.
struct SourceMetadata {
  std::string filename;  ///< last path component
  double durationSeconds = 0;
  std::string resolution;  ///< "1920x1080", pixels
  double frameRate = 0;    ///< frames a second
  std::string codec;
  std::int64_t fileSizeBytes = 0;
  std::optional<std::string> sha256;  ///< lower-case hexadecimal; absent when hashing failed
  Date describedAt;
  std::optional<GPS> gps;

  bool operator==(const SourceMetadata&) const = default;
};
TQ_RECORD(SourceMetadata);

}  // namespace tq

#pragma once

#include <stop_token>
#include <string>

namespace tq {

/// A place by its coordinates.
struct GeocodingRequest {
  double latitude = 0;   ///< degrees, -90 to 90
  double longitude = 0;  ///< degrees, -180 to 180

  bool operator==(const GeocodingRequest&) const = default;
};

/// The place by its name.
struct GeocodingResponse {
  std::string displayName;

  bool operator==(const GeocodingResponse&) const = default;
};

/// A service that knows the names of places.
class GeocodingProvider {
 public:
  virtual ~GeocodingProvider() = default;

  virtual const std::string& providerId() const = 0;

  /// Blocks until the name is there. Throws `TQError`, or `Cancelled` once a stop was requested.
  virtual GeocodingResponse geocode(const GeocodingRequest& request, std::stop_token stop) const = 0;
};

}  // namespace tq

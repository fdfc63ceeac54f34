#include "TQDescription/GPSText.hpp"

#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

std::string gpsText(const GPS& gps) {
  const std::string coordinates = fixedText(gps.latitude, 6) + ", " + fixedText(gps.longitude, 6);
  const std::string altitude = gps.altitudeMeters ? "alt " + fixedText(*gps.altitudeMeters, 0) + " m" : "";
  const bool named = gps.placeName && !gps.placeName->empty();
  if (named) return *gps.placeName + " (" + coordinates + (altitude.empty() ? "" : ", " + altitude) + ")";
  return coordinates + (altitude.empty() ? "" : " (" + altitude + ")");
}

}  // namespace tq

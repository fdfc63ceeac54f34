#pragma once

#include <cstdint>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq {

/// The picture with its longer side cut down to `maxEdge` pixels and the other one in proportion, rounded; a picture
/// that is small enough comes back as it is, and so does one that cannot be scaled.
Image downscale(const Image& image, std::int64_t maxEdge);

/// The picture as a JPEG, quality 0 to 1. Throws `TQError::frameExtractionFailed`.
Bytes jpegData(const Image& image, double quality);

}  // namespace tq

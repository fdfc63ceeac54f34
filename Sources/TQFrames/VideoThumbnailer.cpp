#include "TQFrames/VideoThumbnailer.hpp"

#include <algorithm>
#include <cmath>
#include <exception>
#include <limits>

#include "TQPlatform/Media/ImageGenerator.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

namespace {

Image fitted(const Image& image, double side) {
  const double scale = side / std::max(image.width(), image.height());
  if (!(scale > 0 && scale < 1)) return image;
  const int most = std::max(1, static_cast<int>(side));
  const auto length = [&](int full) { return std::clamp(static_cast<int>(std::lround(scale * full)), 1, most); };
  return image.scaled(length(image.width()), length(image.height()));
}

}  // namespace

std::optional<Bytes> VideoThumbnailer::jpegThumbnail(const std::filesystem::path& url, double maxPixelSize,
                                                     double compressionQuality, std::stop_token stop) noexcept try {
  MediaAsset asset(url, stop);
  ImageGenerator generator(asset, std::numeric_limits<double>::infinity());
  const Image image = generator.image(timeIn(asset.duration()), stop);
  return encodeJPEG(fitted(image, maxPixelSize), compressionQuality);
} catch (const std::exception&) {
  return std::nullopt;
}

std::optional<Bytes> VideoThumbnailer::encodeJPEG(const Image& image, double quality) noexcept try {
  return image.jpeg(quality);
} catch (const std::exception&) {
  return std::nullopt;
}

double VideoThumbnailer::timeIn(double duration) {
  return duration > 0 && std::isfinite(duration) ? duration / 2 : 0.0;
}

}  // namespace tq

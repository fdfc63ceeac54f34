#pragma once

#include <memory>
#include <optional>
#include <stdexcept>

#include "TQPlatform/Bytes.hpp"

namespace tq {

/// A picture could not be turned into a JPEG. `what()` says why in one phrase.
class ImageError final : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An upright picture, immutable and cheap to copy. It stays in the pixel format it was decoded to until a size or a
/// format is asked for, so that nothing is converted twice.
class Image {
 public:
  struct Storage;
  explicit Image(std::shared_ptr<const Storage> storage) : storage_(std::move(storage)) {}

  /// Decodes a JPEG; absent when the bytes are none, when it has more pixels than any camera gives, or so many scans
  /// that they can only be meant to take time.
  static std::optional<Image> decodeJPEG(ByteView jpeg);

  /// `pixels`: rows from top to bottom without padding, 3 bytes (red, green, blue) a pixel; its size is 3 * width *
  /// height.
  static Image fromRGB(int width, int height, ByteView pixels);

  int width() const;   ///< pixels, at least 1
  int height() const;  ///< pixels, at least 1

  /// The same picture at another size, smoothly scaled. Throws `ImageError` when memory or the scaler gives out.
  Image scaled(int width, int height) const;

  /// Luma of the picture drawn over width x height: one byte a pixel, rows from top to bottom. Throws `ImageError`.
  Bytes luma(int width, int height) const;

  /// A baseline JPEG; quality from 0 (smallest) to 1 (best), values beyond count as the nearer end. Throws
  /// `ImageError`.
  Bytes jpeg(double quality) const;

  const Storage& storage() const { return *storage_; }

 private:
  std::shared_ptr<const Storage> storage_;
};

}  // namespace tq

#pragma once

#include <QQuickImageProvider>

#include "TarquelApp/FrameShelf.hpp"

namespace tq {

/// The pictures of the frames on a shelf: "image://frames/7/0" is the first of those put there under number 7. With a
/// size asked for, it covers that size and is cut to it, with rounded corners; else it is whole. Decodes on a thread of
/// its own.
class FramePictures : public QQuickImageProvider {
 public:
  /// `shelf` outlives the provider.
  explicit FramePictures(const FrameShelf& shelf)
      : QQuickImageProvider(QQuickImageProvider::Image, QQuickImageProvider::ForceAsynchronousImageLoading),
        shelf_(shelf) {}

  /// What cannot be decoded gives an empty picture, what has gone from the shelf a pixel that is transparent.
  QImage requestImage(const QString& id, QSize* size, const QSize& requestedSize) override;

 private:
  const FrameShelf& shelf_;
};

}  // namespace tq

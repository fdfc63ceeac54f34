#pragma once

#include <QQuickImageProvider>

namespace tq {

/// The window's own drawings in any colour and size: "image://icons/clock/ffcc00" is Icons/clock.svg, drawn in #ffcc00
/// where the drawing says currentColor.
class IconPictures : public QQuickImageProvider {
 public:
  IconPictures() : QQuickImageProvider(QQuickImageProvider::Pixmap) {}

  /// An unknown name gives an empty picture.
  QPixmap requestPixmap(const QString& id, QSize* size, const QSize& requestedSize) override;
};

}  // namespace tq

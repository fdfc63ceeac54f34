#include "TarquelApp/Preview/PaintedVideo.hpp"

#include <QMetaObject>
#include <QQuickWindow>
#include <QSGImageNode>
#include <utility>

namespace tq {

PaintedVideo::PaintedVideo(QQuickItem* parent)
    : QQuickItem(parent), workshop_(std::make_shared<PictureWorkshop>([this] {
        QMetaObject::invokeMethod(
            this, [this] { takeReady(); }, Qt::QueuedConnection);
      })) {
  setFlag(ItemHasContents);
}

PaintedVideo::~PaintedVideo() {
  workshop_->close();
}

void PaintedVideo::setClockwise(int clockwise) {
  if (std::exchange(clockwise_, clockwise) == clockwise) return;
  workshop_->setTurn(clockwise);
  Q_EMIT clockwiseChanged();
}

void PaintedVideo::takeReady() {
  if (isNew_) return;  // the window has not drawn the last one; it asks again then
  auto ready = workshop_->take();
  if (!ready) return;
  const bool had = hasPicture();
  ready_ = std::move(*ready);
  isNew_ = true;
  update();
  if (hasPicture() != had) Q_EMIT hasPictureChanged();
}

QSGNode* PaintedVideo::updatePaintNode(QSGNode* before, UpdatePaintNodeData*) {
  const bool isNew = std::exchange(isNew_, false);
  if (isNew)
    QMetaObject::invokeMethod(
        this, [this] { takeReady(); }, Qt::QueuedConnection);
  auto* node = static_cast<QSGImageNode*>(before);
  if (!hasPicture()) {
    delete node;
    return nullptr;
  }
  if (!node) {
    node = window()->createImageNode();
    node->setOwnsTexture(true);
    node->setFiltering(QSGTexture::Linear);
  }
  if (isNew || !node->texture())
    node->setTexture(window()->createTextureFromImage(ready_.image, QQuickWindow::TextureIsOpaque));
  const double ratio = window()->effectiveDevicePixelRatio();
  const QSize size = fitted(ready_.natural, stage());
  const QPoint corner((qRound(stage().width()) - size.width()) / 2, (qRound(stage().height()) - size.height()) / 2);
  node->setRect(QRectF(QPointF(corner) / ratio, QSizeF(size) / ratio));
  return node;
}

QSizeF PaintedVideo::stage() const {
  return window() ? size() * window()->effectiveDevicePixelRatio() : QSizeF();
}

void PaintedVideo::geometryChange(const QRectF& now, const QRectF& before) {
  QQuickItem::geometryChange(now, before);
  workshop_->setStage(stage());
  update();
}

void PaintedVideo::itemChange(ItemChange change, const ItemChangeData& data) {
  QQuickItem::itemChange(change, data);
  if (change == ItemSceneChange || change == ItemDevicePixelRatioHasChanged) workshop_->setStage(stage());
}

}  // namespace tq

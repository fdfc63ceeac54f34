#pragma once

#include <QQuickItem>
#include <QSize>
#include <memory>

#include "TarquelApp/PictureReceiver.hpp"
#include "TarquelApp/PictureWorkshop.hpp"

namespace tq {

/// Shows a clip that plays where windows are drawn in software, in which Qt's own item shows nothing.
class PaintedVideo : public QQuickItem, public PictureScreen {
  Q_OBJECT
  QML_ELEMENT
  Q_INTERFACES(tq::PictureScreen)
  Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY hasPictureChanged)

 public:
  explicit PaintedVideo(QQuickItem* parent = nullptr);
  ~PaintedVideo() override;

  /// False before the first picture, and again when the player has none any more.
  bool hasPicture() const { return !ready_.image.isNull(); }

  std::shared_ptr<PictureReceiver> receiver() const override { return workshop_; }

 Q_SIGNALS:
  void hasPictureChanged();

 protected:
  void geometryChange(const QRectF& now, const QRectF& before) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

 private:
  void takeReady();
  QSizeF stage() const;

  const std::shared_ptr<PictureWorkshop> workshop_;
  PictureWorkshop::Ready ready_;  ///< what is shown
  bool isNew_ = false;            ///< and not drawn yet
};

}  // namespace tq

#pragma once

#include <QQuickItem>
#include <QSize>
#include <memory>

#include "TarquelApp/Preview/PictureReceiver.hpp"
#include "TarquelApp/Preview/PictureWorkshop.hpp"

namespace tq {

/// Shows a clip that plays where windows are drawn in software, in which Qt's own item shows nothing.
class PaintedVideo : public QQuickItem, public PictureScreen {
  Q_OBJECT
  QML_ELEMENT
  Q_INTERFACES(tq::PictureScreen)
  Q_PROPERTY(int clockwise READ clockwise WRITE setClockwise NOTIFY clockwiseChanged)
  Q_PROPERTY(bool hasPicture READ hasPicture NOTIFY hasPictureChanged)

 public:
  explicit PaintedVideo(QQuickItem* parent = nullptr);
  ~PaintedVideo() override;

  /// How the clip's pictures have to be turned: 0, 90, 180 or 270 degrees.
  int clockwise() const { return clockwise_; }
  void setClockwise(int clockwise);

  /// False before the first picture, and again when the player has none any more.
  bool hasPicture() const { return !ready_.image.isNull(); }

  std::shared_ptr<PictureReceiver> receiver() const override { return workshop_; }

 Q_SIGNALS:
  void clockwiseChanged();
  void hasPictureChanged();

 protected:
  void geometryChange(const QRectF& now, const QRectF& before) override;
  void itemChange(ItemChange change, const ItemChangeData& data) override;
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;

 private:
  void takeReady();
  QSizeF stage() const;

  const std::shared_ptr<PictureWorkshop> workshop_;
  int clockwise_ = 0;
  PictureWorkshop::Ready ready_;  ///< what is shown
  bool isNew_ = false;            ///< and not drawn yet
};

}  // namespace tq

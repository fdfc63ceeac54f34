#pragma once

#include <QQmlEngine>
#include <QVideoSink>
#include <memory>

#include "TarquelApp/Preview/PictureReceiver.hpp"

namespace tq {

/// Takes the pictures of Qt's player to a `PictureScreen`, on the player's own thread.
class FrameTap : public QVideoSink {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QObject* screen READ screen WRITE setScreen NOTIFY screenChanged)

 public:
  explicit FrameTap(QObject* parent = nullptr);
  ~FrameTap() override;

  /// A QObject that is a `PictureScreen`.
  QObject* screen() const { return screen_; }
  void setScreen(QObject* screen);

 Q_SIGNALS:
  void screenChanged();

 private:
  class Way;

  QObject* screen_ = nullptr;
  const std::shared_ptr<Way> way_;
};

}  // namespace tq

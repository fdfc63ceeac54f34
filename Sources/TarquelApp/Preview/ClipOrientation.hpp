#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QUrl>
#include <thread>

namespace tq {

/// How the pictures of a clip have to be turned, which Qt's player does not look for. Reads the clip's tables on a
/// thread of its own.
class ClipOrientation : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QUrl file READ file WRITE setFile NOTIFY fileChanged)
  Q_PROPERTY(bool isKnown READ isKnown NOTIFY isKnownChanged)
  Q_PROPERTY(int clockwise READ clockwise NOTIFY isKnownChanged)

 public:
  using QObject::QObject;

  QUrl file() const { return file_; }
  void setFile(const QUrl& file);

  /// False until the clip has been read, well or in vain.
  bool isKnown() const { return isKnown_; }

  /// 0, 90, 180 or 270 degrees; 0 for clips that are no mp4, m4v or mov.
  int clockwise() const { return clockwise_; }

 Q_SIGNALS:
  void fileChanged();
  void isKnownChanged();

 private:
  void know(bool isKnown, int clockwise);

  QUrl file_;
  bool isKnown_ = false;
  int clockwise_ = 0;
  std::jthread reading_;
};

}  // namespace tq

#pragma once

#include <QFile>
#include <QObject>
#include <QQmlEngine>
#include <QUrl>

namespace tq {

/// A clip under an address that Qt's player can open. Of a local file it percent-encodes the path and takes what comes
/// of it for the file's name, so that it finds no clip with a blank or a letter beyond ASCII in its name. Such a clip
/// is held open, and its address is that of the open file (proc(5), /proc/self/fd).
class PlayableFile : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QUrl file READ file WRITE setFile NOTIFY fileChanged)
  Q_PROPERTY(QUrl address READ address NOTIFY fileChanged)

 public:
  using QObject::QObject;

  QUrl file() const { return file_; }
  void setFile(const QUrl& file);

  /// Empty for what cannot be opened, and for a name that is not UTF-8, which Qt cannot say. Holds good until another
  /// file is set.
  QUrl address() const { return address_; }

 Q_SIGNALS:
  void fileChanged();

 private:
  QUrl file_;
  QUrl address_;
  QFile open_;
};

}  // namespace tq

#pragma once

#include <QClipboard>
#include <QGuiApplication>
#include <QObject>
#include <QQmlEngine>
#include <QString>

namespace tq {

/// The desktop's clipboard, for texts that are longer than what a view holds of them.
class Clipboard : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON

 public:
  using QObject::QObject;

  Q_INVOKABLE void copy(const QString& text) const { QGuiApplication::clipboard()->setText(text); }
};

}  // namespace tq

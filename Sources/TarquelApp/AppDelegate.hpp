#pragma once

#include <QList>
#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <QUrl>
#include <functional>

namespace tq {

/// What the program is asked from outside: to open files, and to end. Both members are empty until the main window has
/// appeared.
class AppDelegate : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program has one.")

 public:
  using QObject::QObject;

  std::function<void(const QList<QUrl>& urls)> onOpenURLs;
  std::function<int()> activeJobCount;  ///< how many jobs a quit would stop

  /// Files from another program. Without a window yet they are dropped.
  void openURLs(const QList<QUrl>& urls);

  /// The wish to quit: granted at once when no job is working, else the window asks its user.
  Q_INVOKABLE void terminate();

  /// The user wants to quit all the same.
  Q_INVOKABLE void terminateNow() { Q_EMIT terminated(); }

 Q_SIGNALS:
  void quitQuestion(const QString& message, const QString& informativeText);
  void terminated();
};

/// What a menu says of updates. They come with the system's packages, so that there is never one to check for here.
class UpdaterViewModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program has one.")
  Q_PROPERTY(bool canCheckForUpdates READ canCheckForUpdates CONSTANT)

 public:
  using QObject::QObject;
  bool canCheckForUpdates() const { return false; }
};

}  // namespace tq

#pragma once

#include <QDir>
#include <QObject>
#include <QQmlEngine>
#include <QStandardPaths>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <utility>

#include "TarquelApp/Text.hpp"

namespace tq {

/// What the views ask of the desktop around them, and what it asks of them. Whoever makes the window says how it is
/// done.
class DesktopActions : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program has one.")
  Q_PROPERTY(QUrl videosFolder READ videosFolder CONSTANT)
  Q_PROPERTY(bool reducedMotion READ reducedMotion WRITE setReducedMotion NOTIFY reducedMotionChanged)

 public:
  using Show = std::function<void(const std::filesystem::path& file)>;

  /// @param showInFileManager  shows a file in its folder
  explicit DesktopActions(Show showInFileManager, QObject* parent = nullptr)
      : QObject(parent), showInFileManager_(std::move(showInFileManager)) {}

  /// Where a user's clips probably are: the folder that the desktop calls so, if it is there, else the home folder.
  static QUrl videosFolder() {
    const QString videos = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    return QUrl::fromLocalFile(QDir(videos).exists() ? videos : QDir::homePath());
  }

  /// The user wants nothing to glide or fade.
  bool reducedMotion() const { return reducedMotion_; }
  void setReducedMotion(bool reduced) {
    if (std::exchange(reducedMotion_, reduced) != reduced) Q_EMIT reducedMotionChanged();
  }

  /// Shows a file in its folder. What is no local file is ignored.
  Q_INVOKABLE void showInFileManager(const QUrl& file) const {
    if (const auto path = pathOf(file); !path.empty()) showInFileManager_(path);
  }

 Q_SIGNALS:
  void reducedMotionChanged();

 private:
  Show showInFileManager_;
  bool reducedMotion_ = false;
};

}  // namespace tq

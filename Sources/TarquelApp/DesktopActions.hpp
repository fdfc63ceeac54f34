#pragma once

#include <QDir>
#include <QObject>
#include <QQmlEngine>
#include <QStandardPaths>
#include <QUrl>
#include <QWindow>
#include <filesystem>
#include <functional>
#include <utility>

#include "TarquelApp/Desktop/FilePanel.hpp"
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
  using Ask = std::function<void(const FileQuestion& question, FileQuestion::Answer answer)>;

  /// @param showInFileManager  shows a file in its folder
  /// @param askForFiles        opens the desktop's panel, as `FilePanel::ask`; empty: it has none. It does not answer
  ///                           after this object's end
  explicit DesktopActions(Show showInFileManager, Ask askForFiles = {}, QObject* parent = nullptr)
      : QObject(parent), showInFileManager_(std::move(showInFileManager)), askForFiles_(std::move(askForFiles)) {}

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

  /// Lets the user choose clips, or one folder of them, over that window. `chosen` follows when they did, or
  /// `ownPanelWanted` where the desktop has no panel for it.
  Q_INVOKABLE void chooseClips(QWindow* window, const QString& title, const QStringList& namePatterns) {
    ask({.title = title, .namePatterns = namePatterns, .folder = videosFolder(), .window = window});
  }
  Q_INVOKABLE void chooseFolder(QWindow* window, const QString& title) {
    ask({.title = title, .wantsFolder = true, .folder = videosFolder(), .window = window});
  }

 Q_SIGNALS:
  void reducedMotionChanged();
  void chosen(const QList<QUrl>& urls);
  void ownPanelWanted(bool forFolder);

 private:
  void ask(const FileQuestion& question) {
    const auto answer = [this, forFolder = question.wantsFolder](const std::optional<QList<QUrl>>& urls) {
      if (!urls) {
        Q_EMIT ownPanelWanted(forFolder);
      } else if (!urls->isEmpty()) {
        Q_EMIT chosen(*urls);
      }
    };
    if (askForFiles_) {
      askForFiles_(question, answer);
    } else {
      answer(std::nullopt);
    }
  }

  Show showInFileManager_;
  Ask askForFiles_;
  bool reducedMotion_ = false;
};

}  // namespace tq

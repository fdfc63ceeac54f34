#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QUrl>
#include <filesystem>
#include <functional>
#include <utility>

#include "TarquelApp/Text.hpp"

namespace tq {

/// What the views ask of the desktop around them. Whoever makes the window says how it is done.
class DesktopActions : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program has one.")

 public:
  using Show = std::function<void(const std::filesystem::path& file)>;

  explicit DesktopActions(Show showInFileManager, QObject* parent = nullptr)
      : QObject(parent), showInFileManager_(std::move(showInFileManager)) {}

  /// Shows a file in its folder. What is no local file is ignored.
  Q_INVOKABLE void showInFileManager(const QUrl& file) const {
    if (const auto path = pathOf(file); !path.empty()) showInFileManager_(path);
  }

 private:
  Show showInFileManager_;
};

}  // namespace tq

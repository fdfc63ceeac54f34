#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QUrl>
#include <chrono>
#include <filesystem>

namespace tq {

/// Shows a file in its folder, in the file manager of the user's desktop. Lives on the main thread and never blocks it.
class FileBrowser : public QObject {
  Q_OBJECT

 public:
  /// @param bus       the session bus; it need not be connected
  /// @param patience  how long a file manager may take, which the call may have to start first
  explicit FileBrowser(QDBusConnection bus, std::chrono::milliseconds patience = std::chrono::seconds(15),
                       QObject* parent = nullptr);

  /// Asks org.freedesktop.FileManager1 for a window with the file selected. Where that fails, the folder that holds the
  /// file is opened with the desktop's own handler of folders; the file itself is never opened. A path that is not
  /// absolute is one of the current folder. What cannot be shown at all is not shown; nobody is told.
  void show(const std::filesystem::path& file);

 private:
  QDBusConnection bus_;
  const std::chrono::milliseconds patience_;
};

}  // namespace tq

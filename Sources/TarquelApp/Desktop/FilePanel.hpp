#pragma once

#include <QDBusConnection>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QWindow>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tq {

class PortalRequest;

/// What a panel asks for.
struct FileQuestion {
  QString title;
  QStringList namePatterns;   ///< shell patterns of the files that are shown at first; of no meaning for a folder
  bool wantsFolder = false;   ///< one folder, instead of any number of files
  QUrl folder;                ///< where to begin
  QWindow* window = nullptr;  ///< that the panel stands over; may be null

  /// Called with what was chosen, which may be nothing; without a value: there is no panel of the desktop's.
  using Answer = std::function<void(const std::optional<QList<QUrl>>& chosen)>;
};

/// The desktop's own panel for choosing files, which its portal opens (org.freedesktop.portal.FileChooser, see
/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.FileChooser.html). Lives on the main
/// thread and never blocks it.
class FilePanel : public QObject {
  Q_OBJECT

 public:
  /// @param bus       the session bus; it need not be connected
  /// @param patience  how long a portal may take, which the call may have to start first
  explicit FilePanel(QDBusConnection bus, std::chrono::milliseconds patience = std::chrono::seconds(10),
                     QObject* parent = nullptr);

  /// As a panel that is closed.
  ~FilePanel() override;

  /// Opens a panel, in place of one that is open. The answer comes later and at most once; not at all when the panel is
  /// replaced or this object ends. After a choice the next panel begins in the folder of that.
  void ask(const FileQuestion& question, FileQuestion::Answer answer);

 private:
  QDBusConnection bus_;
  const std::chrono::milliseconds patience_;
  std::unique_ptr<PortalRequest> request_;
  QUrl lastFolder_;
};

}  // namespace tq

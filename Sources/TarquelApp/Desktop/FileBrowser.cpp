#include "TarquelApp/Desktop/FileBrowser.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDesktopServices>
#include <QStringList>
#include <system_error>

#include "TarquelApp/Desktop/BusCall.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {

namespace {

/// https://www.freedesktop.org/wiki/Specifications/file-manager-interface/
QDBusMessage showItems(const QUrl& file) {
  auto message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("/org/freedesktop/FileManager1"),
      QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
  const QString startupID;
  message.setArguments({QStringList(QString::fromLatin1(file.toEncoded())), startupID});
  return message;
}

/// Ends in a slash, so that whatever has taken the folder's place by then is not opened in its stead.
QUrl folderOf(const std::filesystem::path& file) {
  return qtFileURL(file.parent_path() / "");
}

}  // namespace

FileBrowser::FileBrowser(QDBusConnection bus, std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), patience_(patience) {}

void FileBrowser::show(const std::filesystem::path& file) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::absolute(file, error);
  if (file.empty() || error) return;

  const auto asked = askBus(bus_, showItems(qtFileURL(path)), static_cast<int>(patience_.count()));
  auto* answer = new QDBusPendingCallWatcher(asked, this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [answer, folder = folderOf(path)] {
    answer->deleteLater();
    if (answer->isError()) QDesktopServices::openUrl(folder);
  });
}

}  // namespace tq

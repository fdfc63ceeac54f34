#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>
#include <filesystem>
#include <span>

namespace tq {

/// What a start of the program is asked to do: by a command line, by the desktop file's "%U", or by a later start.
struct LaunchRequest {
  QList<QUrl> files;        ///< absolute URLs of local files and folders, in the order given
  QString activationToken;  ///< allows the program to bring its window to the front; empty: it has none

  /// Reads the command line without the program's name, and the token from the environment (`XDG_ACTIVATION_TOKEN`,
  /// else `DESKTOP_STARTUP_ID`). To be called before the application object is made, which takes these variables away.
  /// An argument is a file URL, or a path that counts from `workingDirectory`; other URLs are dropped.
  static LaunchRequest read(std::span<char* const> arguments, const std::filesystem::path& workingDirectory);

  /// As another program sent it by org.freedesktop.Application; nothing in it is trusted.
  static LaunchRequest received(const QStringList& uris, const QVariantMap& platformData);

  QStringList uris() const;
  QVariantMap platformData() const;

  bool operator==(const LaunchRequest&) const = default;
};

}  // namespace tq

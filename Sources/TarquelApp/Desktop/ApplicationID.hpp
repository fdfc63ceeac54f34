#pragma once

#include <QString>

namespace tq {

/// What the desktop knows this program by: its name on the session bus, the name of its desktop file without
/// ".desktop" (`QGuiApplication::setDesktopFileName`), of its icon, and the id of its AppStream metadata.
struct ApplicationID {
  static QString name() { return QStringLiteral("org.tarquel.Tarquel"); }

  /// The name as a path of D-Bus, as the Desktop Entry Specification forms it.
  static QString objectPath() { return QStringLiteral("/org/tarquel/Tarquel"); }

  /// The program as a launcher names it.
  static QString launcherURI() { return QStringLiteral("application://") + name() + QStringLiteral(".desktop"); }
};

}  // namespace tq

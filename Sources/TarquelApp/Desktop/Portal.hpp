#pragma once

#include <QDBusConnection>
#include <QString>
#include <QUuid>

namespace tq::portal {

// How the desktop's portal is reached on the session bus (https://flatpak.github.io/xdg-desktop-portal/docs/).

inline QString service() {
  return QStringLiteral("org.freedesktop.portal.Desktop");
}

inline QString path() {
  return QStringLiteral("/org/freedesktop/portal/desktop");
}

/// Whose signals are listened to. Qt waits for the bus to say who owns a name, and loses what a new owner says at once.
inline QString anySender() {
  return {};
}

/// Of one of its parts: "Settings", "Inhibit" and so on.
inline QString interface(const QString& part) {
  return QStringLiteral("org.freedesktop.portal.") + part;
}

/// What a request may bring as "handle_token". Nobody else can guess it.
inline QString requestToken() {
  return QStringLiteral("tarquel") + QUuid::createUuid().toString(QUuid::Id128);
}

/// Where a portal puts the request that brings this token, so that its answer cannot come before somebody listens.
inline QString requestPath(const QDBusConnection& bus, const QString& token) {
  const QString sender = bus.baseService().mid(1).replace(u'.', u'_');
  return path() + QStringLiteral("/request/") + sender + u'/' + token;
}

}  // namespace tq::portal

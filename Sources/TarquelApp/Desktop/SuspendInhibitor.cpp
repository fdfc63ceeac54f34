#include "TarquelApp/Desktop/SuspendInhibitor.hpp"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <QVariantMap>
#include <utility>

#include "TarquelApp/Desktop/Inhibition.hpp"
#include "TarquelApp/Desktop/Portal.hpp"

namespace tq {

namespace {

QString reason() {
  return QStringLiteral("Video files are being described");
}

/// https://flatpak.github.io/xdg-desktop-portal/docs/doc-org.freedesktop.portal.Inhibit.html
QDBusMessage askPortal(const QString& token) {
  constexpr quint32 suspend = 4;
  auto message = QDBusMessage::createMethodCall(
      portal::service(), portal::path(), portal::interface(QStringLiteral("Inhibit")), QStringLiteral("Inhibit"));
  const QString parentWindow;
  message.setArguments({parentWindow, suspend,
                        QVariantMap{{QStringLiteral("reason"), reason()}, {QStringLiteral("handle_token"), token}}});
  return message;
}

/// The portal's inhibitor is an object of its own that lasts until it is closed.
Inhibition::Take portalRequest(const QDBusConnection& bus) {
  return [bus](const QDBusMessage& answer) -> std::shared_ptr<void> {
    const auto handle = answer.arguments().value(0);
    if (handle.userType() != qMetaTypeId<QDBusObjectPath>()) return nullptr;
    const auto close = [bus](QDBusObjectPath* path) {
      auto message = QDBusMessage::createMethodCall(
          portal::service(), path->path(), portal::interface(QStringLiteral("Request")), QStringLiteral("Close"));
      message.setAutoStartService(false);
      bus.send(message);
      delete path;
    };
    return {new QDBusObjectPath(handle.value<QDBusObjectPath>()), close};
  };
}

/// https://www.freedesktop.org/wiki/Software/systemd/inhibit/
QDBusMessage askLogin1() {
  auto message = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
      QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
  message.setArguments({QStringLiteral("sleep"), QStringLiteral("Tarquel"), reason(), QStringLiteral("block")});
  return message;
}

/// The login manager's inhibitor lasts as long as this descriptor is open.
std::shared_ptr<void> descriptor(const QDBusMessage& answer) {
  const auto value = answer.arguments().value(0);
  if (value.userType() != qMetaTypeId<QDBusUnixFileDescriptor>()) return nullptr;
  return std::make_shared<QDBusUnixFileDescriptor>(value.value<QDBusUnixFileDescriptor>());
}

}  // namespace

SuspendInhibitor::SuspendInhibitor(QDBusConnection sessionBus, QDBusConnection systemBus,
                                   std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent),
      token_(portal::requestToken()),
      portal_(std::make_shared<Inhibition>(sessionBus, askPortal(token_), portalRequest(sessionBus))),
      loginManager_(std::make_shared<Inhibition>(systemBus, askLogin1(), descriptor)),
      portalWatcher_(portal::service(), sessionBus, QDBusServiceWatcher::WatchForUnregistration) {
  sessionBus.connect(portal::anySender(), portal::requestPath(sessionBus, token_),
                     portal::interface(QStringLiteral("Request")), QStringLiteral("Response"), this,
                     SLOT(portalResponded(uint)));
  patience_.setSingleShot(true);
  patience_.setInterval(patience);
  connect(&patience_, &QTimer::timeout, this, [this] {
    if (!portal_->isHeld()) askLoginManager();
  });
  connect(&portalWatcher_, &QDBusServiceWatcher::serviceUnregistered, this, [this] { portal_->lose(); });
}

SuspendInhibitor::~SuspendInhibitor() {
  setActive(false);
}

void SuspendInhibitor::setActive(bool active) {
  if (active == std::exchange(isActive_, active)) return;
  if (active) {
    portal_->want([this] { askLoginManager(); });
    patience_.start();
  } else {
    patience_.stop();
    portal_->drop();
    loginManager_->drop();
  }
}

/// A portal takes every request, and says afterwards whether the desktop behind it can do that.
void SuspendInhibitor::portalResponded(uint code) {
  if (code != 0) portal_->lose();
}

void SuspendInhibitor::askLoginManager() {
  patience_.stop();
  loginManager_->want();
}

}  // namespace tq

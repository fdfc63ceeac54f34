#include "TarquelApp/Desktop/SingleInstance.hpp"

#include <QDBusError>
#include <QDBusMessage>
#include <QDeadlineTimer>

#include "TarquelApp/Desktop/ApplicationID.hpp"

namespace tq {

namespace {

// https://dbus.freedesktop.org/doc/dbus-specification.html#bus-messages-request-name
constexpr quint32 doNotQueue = 4;
constexpr quint32 primaryOwner = 1, alreadyOwner = 4, someoneElse = 3;

QDBusMessage callOfBus(const QString& method, const QVariantList& arguments) {
  auto message =
      QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                     QStringLiteral("org.freedesktop.DBus"), method);
  message.setArguments(arguments);
  return message;
}

/// https://specifications.freedesktop.org/desktop-entry-spec/latest/dbus.html
QDBusMessage handOver(const LaunchRequest& request) {
  const bool hasFiles = !request.files.isEmpty();
  auto message = QDBusMessage::createMethodCall(ApplicationID::name(), ApplicationID::objectPath(),
                                                QStringLiteral("org.freedesktop.Application"),
                                                hasFiles ? QStringLiteral("Open") : QStringLiteral("Activate"));
  if (hasFiles) message << request.uris();
  message << request.platformData();
  message.setAutoStartService(false);
  return message;
}

/// The owner of the name had gone, or went before it had answered.
bool hasGone(const QDBusMessage& answer) {
  switch (QDBusError(answer).type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::NoReply: return true;
    default: return answer.errorName() == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner");
  }
}

}  // namespace

SingleInstance::SingleInstance(QDBusConnection bus, std::chrono::milliseconds patience, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), patience_(patience) {}

SingleInstance::~SingleInstance() {
  if (isFirst_) bus_.send(callOfBus(QStringLiteral("ReleaseName"), {ApplicationID::name()}));
}

SingleInstance::Role SingleInstance::start(const LaunchRequest& request) {
  // Before the name is asked for: who finds its owner finds this object.
  if (!bus_.isConnected() ||
      !bus_.registerObject(ApplicationID::objectPath(), this, QDBusConnection::ExportScriptableSlots))
    return Role::alone;

  const QDeadlineTimer deadline(patience_);
  const auto ask = [&](const QDBusMessage& message) {
    return bus_.call(message, QDBus::Block, static_cast<int>(deadline.remainingTime()));
  };
  while (!deadline.hasExpired()) {
    const QDBusMessage claim = ask(callOfBus(QStringLiteral("RequestName"), {ApplicationID::name(), doNotQueue}));
    const quint32 owner = claim.arguments().value(0).toUInt();
    isFirst_ = owner == primaryOwner || owner == alreadyOwner;
    if (isFirst_) return Role::first;
    if (owner != someoneElse) break;

    const QDBusMessage answer = ask(handOver(request));
    if (answer.type() == QDBusMessage::ReplyMessage) return Role::handedOver;
    if (!hasGone(answer)) break;
  }
  bus_.unregisterObject(ApplicationID::objectPath());
  return Role::alone;
}

void SingleInstance::Activate(const QVariantMap& platformData) {
  Open({}, platformData);
}

void SingleInstance::Open(const QStringList& uris, const QVariantMap& platformData) {
  const LaunchRequest request = LaunchRequest::received(uris, platformData);
  if (!request.files.isEmpty()) Q_EMIT filesOpened(request.files);
  Q_EMIT activated(request.activationToken);
}

/// The desktop file offers no actions.
void SingleInstance::ActivateAction(const QString&, const QVariantList&, const QVariantMap& platformData) {
  Activate(platformData);
}

}  // namespace tq

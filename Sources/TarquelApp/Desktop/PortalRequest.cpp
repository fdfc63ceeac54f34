#include "TarquelApp/Desktop/PortalRequest.hpp"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <utility>

#include "TarquelApp/Desktop/BusCall.hpp"
#include "TarquelApp/Desktop/Portal.hpp"

namespace tq {

namespace {

const QString requestInterface = portal::interface(QStringLiteral("Request"));

}  // namespace

PortalRequest::PortalRequest(QDBusConnection bus, const QString& interface, const QString& method,
                             QVariantList arguments, QVariantMap options, std::chrono::milliseconds patience,
                             Handlers handlers, QObject* parent)
    : QObject(parent), bus_(std::move(bus)), handlers_(std::move(handlers)) {
  const QString token = portal::requestToken();
  listenAt(portal::requestPath(bus_, token));
  portalWatcher_.setConnection(bus_);
  portalWatcher_.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
  portalWatcher_.addWatchedService(portal::service());
  connect(&portalWatcher_, &QDBusServiceWatcher::serviceUnregistered, this, &PortalRequest::fail);

  auto call = QDBusMessage::createMethodCall(portal::service(), portal::path(), interface, method);
  options.insert(QStringLiteral("handle_token"), token);
  arguments.append(options);
  call.setArguments(arguments);
  auto* reply = new QDBusPendingCallWatcher(askBus(bus_, call, static_cast<int>(patience.count())), this);
  connect(reply, &QDBusPendingCallWatcher::finished, this, [this, reply] {
    reply->deleteLater();
    accept(reply->reply());
  });
}

PortalRequest::~PortalRequest() {
  if (!std::exchange(hasEnded_, true)) takeBack();
}

void PortalRequest::listenAt(const QString& path) {
  path_ = path;
  bus_.connect(portal::anySender(), path, requestInterface, QStringLiteral("Response"), this,
               SLOT(respond(uint, QVariantMap)));
}

/// Portals before 0.9 choose a path of their own.
void PortalRequest::accept(const QDBusMessage& reply) {
  if (hasEnded_) return;
  const auto handle = reply.arguments().value(0);
  if (reply.type() != QDBusMessage::ReplyMessage || handle.userType() != qMetaTypeId<QDBusObjectPath>()) {
    takeBack();
    fail();
  } else if (const QString path = handle.value<QDBusObjectPath>().path(); path != path_) {
    listenAt(path);
  }
}

/// 0 is an answer, 1 the user's wish to give none; anything else was the end of the request by something else.
void PortalRequest::respond(uint code, const QVariantMap& results) {
  if (code > 1) {
    fail();
  } else if (!std::exchange(hasEnded_, true)) {
    const auto answered = std::move(handlers_.answered);
    answered(code == 0 ? Answer(results) : std::nullopt);
  }
}

void PortalRequest::fail() {
  if (std::exchange(hasEnded_, true)) return;
  const auto failed = std::move(handlers_.failed);
  failed();
}

/// A portal that was too slow might still open its panel.
void PortalRequest::takeBack() {
  auto close = QDBusMessage::createMethodCall(portal::service(), path_, requestInterface, QStringLiteral("Close"));
  close.setAutoStartService(false);
  bus_.send(close);
}

}  // namespace tq

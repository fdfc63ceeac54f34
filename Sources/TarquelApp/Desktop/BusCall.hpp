#pragma once

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCall>

namespace tq {

/// Sends a call whose answer is never missing: a `QDBusPendingCallWatcher` of what `asyncCall` gives where there is no
/// connection would wait for ever.
/// @param limitMilliseconds  after which the answer is an error
inline QDBusPendingCall askBus(const QDBusConnection& bus, const QDBusMessage& call, int limitMilliseconds) {
  const QDBusPendingCall asked = bus.asyncCall(call, limitMilliseconds);
  return asked.isError() ? QDBusPendingCall::fromError(asked.error()) : asked;
}

}  // namespace tq

#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <functional>
#include <vector>

#include "Support/TemporaryFolder.hpp"

namespace tq::test {

/// A message bus of the test's own: a dbus-daemon that knows no service but those of the test.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const QString& address() const { return address_; }

  /// A connection of its own, as another program would have.
  QDBusConnection connect();

  /// Until the bus has all that was sent on this connection, and this connection all that was sent to it before.
  static void flush(const QDBusConnection& connection);

  /// To the daemon, such as SIGSTOP.
  void signal(int number) const;

  /// The end of the daemon: all connections break.
  void stop();

 private:
  TemporaryFolder folder_;
  QProcess daemon_;
  QString address_;
  QStringList connections_;
};

/// A connection to nothing, as a program has in a session without a bus.
QDBusConnection noBus();

/// A service that keeps what it is asked, and does not answer unless told to.
class FakeService : public QDBusVirtualObject {
 public:
  FakeService(PrivateBus& bus, const QString& name);

  /// Answers a call: `answer` may use `createReply` and `createErrorReply`.
  std::function<QDBusMessage(const QDBusMessage& call)> answer;

  /// All calls of that method so far.
  std::vector<QDBusMessage> callsOf(const QString& method) const;

  /// Answers a call that was left without an answer.
  void send(const QDBusMessage& message) { connection_.send(message); }

  /// The service ends, as by a crash.
  void vanish();

  /// Until all that either has sent the other before has arrived and been handled.
  void settle(const QDBusConnection& other);

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
  QString introspect(const QString&) const override { return {}; }

 private:
  QDBusConnection connection_;
  const QString name_;
  std::vector<QDBusMessage> calls_;
};

}  // namespace tq::test

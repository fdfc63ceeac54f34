#include "TarquelApp/Desktop/MuteBuses.hpp"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QLocalSocket>
#include <QString>
#include <array>
#include <memory>

namespace tq {

namespace {

/// What a client says first (https://dbus.freedesktop.org/doc/dbus-specification.html#auth-protocol), and the call of
/// Hello, which a bus answers before anything else: little-endian, a METHOD_CALL, no flags, version 1, an empty body,
/// serial 1, and the fields path, member, interface and destination.
QByteArray greeting() {
  QByteArray call("l\x01\x00\x01\x00\x00\x00\x00\x01\x00\x00\x00\x6e\x00\x00\x00", 16);
  const auto field = [&call](char code, char type, const QByteArray& text) {
    call.append((8 - call.size() % 8) % 8, '\0');
    call.append(code).append('\x01').append(type).append('\0');
    call.append(static_cast<char>(text.size())).append(3, '\0').append(text).append('\0');
  };
  field('\x01', 'o', "/org/freedesktop/DBus");
  field('\x03', 's', "Hello");
  field('\x02', 's', "org.freedesktop.DBus");
  field('\x06', 's', "org.freedesktop.DBus");
  call[12] = static_cast<char>(call.size() - 16);
  call.append((8 - call.size() % 8) % 8, '\0');
  return QByteArray("\0AUTH EXTERNAL\r\nDATA\r\nBEGIN\r\n", 30) + call;
}

/// The lines of the authentication are done with, or refused, and a message has come where one may.
bool isAnswered(const QByteArray& said) {
  if (said.contains("REJECTED") || said.contains("ERROR")) return true;
  const qsizetype agreed = said.indexOf("OK ");
  const qsizetype end = agreed < 0 ? -1 : said.indexOf("\r\n", agreed);
  return end >= 0 && said.size() > end + 2;
}

/// Of one entry of an address such as "unix:path=/run/user/1000/bus,guid=1234"; null when it is no Unix socket.
struct SocketName {
  QString name;
  bool isAbstract = false;
};

SocketName socketName(const QByteArray& entry) {
  if (!entry.startsWith("unix:")) return {};
  for (const QByteArray& pair : entry.mid(5).split(',')) {
    const qsizetype equals = pair.indexOf('=');
    const QString value = QFile::decodeName(QByteArray::fromPercentEncoding(pair.mid(equals + 1)));
    if (pair.startsWith("path=")) return {value, false};
    if (pair.startsWith("abstract=")) return {value, true};
  }
  return {};
}

/// A connection to the first entry that takes one, with the greeting sent, as a client would connect.
std::unique_ptr<QLocalSocket> greet(const QByteArray& address, QDeadlineTimer deadline) {
  for (const QByteArray& entry : address.split(';')) {
    const SocketName socket = socketName(entry);
    if (socket.name.isNull()) return nullptr;
    auto connection = std::make_unique<QLocalSocket>();
    if (socket.isAbstract) connection->setSocketOptions(QLocalSocket::AbstractNamespaceOption);
    connection->connectToServer(socket.name);
    if (!connection->waitForConnected(static_cast<int>(deadline.remainingTime()))) continue;
    connection->write(greeting());
    connection->flush();
    return connection;
  }
  return nullptr;
}

bool answers(QLocalSocket& connection, QDeadlineTimer deadline) {
  QByteArray said;
  while (!isAnswered(said)) {
    // One that hangs up says as much.
    if (connection.state() != QLocalSocket::ConnectedState) return true;
    if (!connection.waitForReadyRead(static_cast<int>(deadline.remainingTime())) && deadline.hasExpired()) return false;
    said += connection.readAll();
  }
  return true;
}

/// Where a client looks for the session's bus without an address; "autolaunch:" starts one, and is left alone.
QByteArray usualSessionBus() {
  const QByteArray folder = qgetenv("XDG_RUNTIME_DIR");
  return folder.isEmpty() ? QByteArray() : "unix:path=" + folder.toPercentEncoding("/") + "/bus";
}

struct Bus {
  const char* variable;
  QByteArray usual;
  std::unique_ptr<QLocalSocket> connection{};
};

}  // namespace

void leaveOutMuteBuses(std::chrono::milliseconds patience) {
  const QDeadlineTimer deadline(patience);
  std::array<Bus, 2> buses{{{.variable = "DBUS_SESSION_BUS_ADDRESS", .usual = usualSessionBus()},
                            {.variable = "DBUS_SYSTEM_BUS_ADDRESS", .usual = "unix:path=/run/dbus/system_bus_socket"}}};
  for (Bus& bus : buses) {
    const QByteArray named = qgetenv(bus.variable);
    bus.connection = greet(named.isEmpty() ? bus.usual : named, deadline);
  }
  for (const Bus& bus : buses)
    if (bus.connection && !answers(*bus.connection, deadline)) qputenv(bus.variable, "disabled:");
}

}  // namespace tq

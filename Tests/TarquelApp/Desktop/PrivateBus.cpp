#include "TarquelApp/Desktop/PrivateBus.hpp"

#include <QUuid>
#include <csignal>
#include <stdexcept>
#include <sys/types.h>

#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

constexpr const char* configuration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
  "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir=%1</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

QString uniqueName() {
  return QUuid::createUuid().toString();
}

/// A message that marks a point in the order of messages.
constexpr const char* marker = "Marker";

}  // namespace

PrivateBus::PrivateBus() {
  const QString folder = QString::fromStdString(folder_.path().string());
  const auto file = folder_.write("bus.conf", QString::fromLatin1(configuration).arg(folder).toStdString());
  daemon_.setStandardErrorFile(QProcess::nullDevice());
  daemon_.start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--nofork"), QStringLiteral("--nopidfile"), QStringLiteral("--print-address=1"),
                 QStringLiteral("--config-file=%1").arg(QString::fromStdString(file))});
  while (!daemon_.canReadLine())
    if (!daemon_.waitForReadyRead()) throw std::runtime_error("dbus-daemon did not start");
  address_ = QString::fromLocal8Bit(daemon_.readLine()).trimmed();
}

PrivateBus::~PrivateBus() {
  for (const QString& connection : connections_)
    QDBusConnection::disconnectFromBus(connection);
  stop();
}

QDBusConnection PrivateBus::connect() {
  connections_.append(uniqueName());
  const auto connection = QDBusConnection::connectToBus(address_, connections_.back());
  if (!connection.isConnected()) throw std::runtime_error("the private bus cannot be reached");
  return connection;
}

void PrivateBus::flush(const QDBusConnection& connection) {
  connection.call(QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/"),
                                                 QStringLiteral("org.freedesktop.DBus.Peer"), QStringLiteral("Ping")));
}

void PrivateBus::signal(int number) const {
  ::kill(static_cast<pid_t>(daemon_.processId()), number);
}

void PrivateBus::stop() {
  daemon_.kill();
  daemon_.waitForFinished();
}

QDBusConnection noBus() {
  return QDBusConnection(uniqueName());
}

FakeService::FakeService(PrivateBus& bus, const QString& name) : connection_(bus.connect()), name_(name) {
  connection_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
  if (!connection_.registerService(name)) throw std::runtime_error("the name is taken: " + name.toStdString());
}

std::vector<QDBusMessage> FakeService::callsOf(const QString& method) const {
  std::vector<QDBusMessage> result;
  for (const QDBusMessage& call : calls_)
    if (call.member() == method) result.push_back(call);
  return result;
}

void FakeService::vanish() {
  QDBusConnection::disconnectFromBus(connection_.name());
  connection_ = noBus();  // the last one who holds it
}

void FakeService::settle(const QDBusConnection& other) {
  const auto markers = [this] { return callsOf(QString::fromLatin1(marker)).size(); };
  const auto before = markers();
  other.send(QDBusMessage::createMethodCall(name_, QStringLiteral("/"), QStringLiteral("test.Marker"),
                                            QString::fromLatin1(marker)));
  turnUntil([&] { return markers() > before; });
  PrivateBus::flush(connection_);
  PrivateBus::flush(other);
  QCoreApplication::processEvents();
}

bool FakeService::handleMessage(const QDBusMessage& message, const QDBusConnection& connection) {
  calls_.push_back(message);
  if (answer && message.member() != QString::fromLatin1(marker)) connection.send(answer(message));
  return true;
}

}  // namespace tq::test

#include "TarquelApp/Desktop/FakeDesktop.hpp"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusUnixFileDescriptor>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <ostream>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

#include "TarquelApp/Turning.hpp"

namespace tq::test {

namespace {

const QString launcherURI = QStringLiteral("application://org.tarquel.Tarquel.desktop");

}  // namespace

void PrintTo(const DockUpdate& update, std::ostream* out) {
  *out << update.uri.toStdString() << " " << update.count << " " << update.countVisible << " " << update.progress << " "
       << update.progressVisible;
}

DockUpdate shownInDock(qint64 count, double progress) {
  return {launcherURI, count, true, progress, true};
}

DockUpdate clearedInDock() {
  return {launcherURI, 0, false, 0, false};
}

Dock::Dock(PrivateBus& bus) : connection(bus.connect()) {
  const QString anyService, anyPath;
  connection.connect(anyService, anyPath, QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"),
                     this, SLOT(update(QString, QVariantMap)));
  PrivateBus::flush(connection);
}

void Dock::settle(const QDBusConnection& sender) {
  PrivateBus::flush(sender);
  PrivateBus::flush(connection);
  QCoreApplication::processEvents();
}

void Dock::update(const QString& uri, const QVariantMap& properties) {
  const auto value = [&](const char* key) { return properties.value(QLatin1String(key)); };
  EXPECT_EQ(value("count").typeId(), QMetaType::LongLong);
  EXPECT_EQ(value("progress").typeId(), QMetaType::Double);
  updates.push_back({uri, value("count").toLongLong(), value("count-visible").toBool(), value("progress").toDouble(),
                     value("progress-visible").toBool()});
}

Portal::Portal(PrivateBus& bus) : FakeService(bus, QStringLiteral("org.freedesktop.portal.Desktop")) {
  answer = grant;
}

QVariantMap Portal::optionsOf(const QDBusMessage& call) {
  return qdbus_cast<QVariantMap>(call.arguments().value(2));
}

QString Portal::handleOf(const QDBusMessage& call) {
  const QString token = optionsOf(call).value(QStringLiteral("handle_token")).toString();
  const QString sender = call.service().mid(1).replace(u'.', u'_');
  return QStringLiteral("/org/freedesktop/portal/desktop/request/") + sender + u'/' + token;
}

QDBusMessage Portal::grant(const QDBusMessage& call) {
  if (call.interface() == QStringLiteral("org.freedesktop.portal.Request")) return call.createReply();
  return call.createReply(QVariant::fromValue(QDBusObjectPath(handleOf(call))));
}

void Portal::respond(const QString& handle, uint code, const QVariantMap& results) {
  auto response =
      QDBusMessage::createSignal(handle, QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"));
  response.setArguments({code, results});
  send(response);
}

LoginManager::LoginManager(PrivateBus& bus) : FakeService(bus, QStringLiteral("org.freedesktop.login1")) {
  answer = [this](const QDBusMessage& call) { return grant(call); };
}

QDBusMessage LoginManager::grant(const QDBusMessage& call) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  lastGiven_ = Descriptor(ends[0]);
  const Descriptor given(ends[1]);
  return call.createReply(QVariant::fromValue(QDBusUnixFileDescriptor(given.get())));
}

void LoginManager::turnUntilReleased() const {
  turnUntil([this] { return !isHeld(); });
}

bool LoginManager::isHeld() const {
  if (lastGiven_.get() < 0) return false;
  pollfd end{.fd = lastGiven_.get(), .events = POLLIN, .revents = 0};
  return ::poll(&end, 1, 0) == 0;
}

}  // namespace tq::test

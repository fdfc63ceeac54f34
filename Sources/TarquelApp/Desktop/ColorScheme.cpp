#include "TarquelApp/Desktop/ColorScheme.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QEventLoop>
#include <QTimer>

#include "TarquelApp/Desktop/Portal.hpp"

namespace tq {

namespace {

const QString interface = portal::interface(QStringLiteral("Settings"));
const QString area = QStringLiteral("org.freedesktop.appearance");
const QString key = QStringLiteral("color-scheme");

/// 1 is dark, 2 is light. The answer to a question is wrapped once more than the news of a change.
ColorScheme::Preference preferenceOf(QVariant value) {
  while (value.canConvert<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  switch (value.typeId() == QMetaType::UInt ? value.toUInt() : 0) {
    case 1: return ColorScheme::Preference::dark;
    case 2: return ColorScheme::Preference::light;
    default: return ColorScheme::Preference::none;
  }
}

}  // namespace

ColorScheme::ColorScheme(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {
  bus_.connect(portal::anySender(), portal::path(), interface, QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
}

ColorScheme::Preference ColorScheme::ask(std::chrono::milliseconds patience) {
  if (!bus_.isConnected()) return Preference::none;
  QDBusMessage question =
      QDBusMessage::createMethodCall(portal::service(), portal::path(), interface, QStringLiteral("Read"));
  question << area << key;
  QDBusPendingCallWatcher answer(bus_.asyncCall(question, static_cast<int>(patience.count())));
  QEventLoop loop;
  connect(&answer, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
  QTimer::singleShot(patience, &loop, &QEventLoop::quit);
  if (!answer.isFinished()) loop.exec();
  const QDBusPendingReply<QDBusVariant> reply = answer;
  return reply.isFinished() && reply.isValid() ? preferenceOf(reply.value().variant()) : Preference::none;
}

void ColorScheme::settingChanged(const QString& changedArea, const QString& changedKey, const QDBusVariant& value) {
  if (changedArea == area && changedKey == key) Q_EMIT changed(preferenceOf(value.variant()));
}

}  // namespace tq

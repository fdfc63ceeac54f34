#include "TarquelApp/Desktop/MotionPreference.hpp"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <algorithm>
#include <utility>

#include "TarquelApp/Desktop/Portal.hpp"

namespace tq {

namespace {

const QString interface = portal::interface(QStringLiteral("Settings"));

struct Setting {
  QString area;
  QString key;
  std::optional<bool> (*read)(const QVariant& value);  ///< nothing: not a value of this setting
};

const std::array<Setting, 2> settings{{
    {QStringLiteral("org.freedesktop.appearance"), QStringLiteral("reduced-motion"),
     [](const QVariant& value) -> std::optional<bool> {
       if (value.typeId() != QMetaType::UInt) return std::nullopt;
       return value.toUInt() == 1;
     }},
    {QStringLiteral("org.gnome.desktop.interface"), QStringLiteral("enable-animations"),
     [](const QVariant& value) -> std::optional<bool> {
       if (value.typeId() != QMetaType::Bool) return std::nullopt;
       return !value.toBool();
     }},
}};

}  // namespace

MotionPreference::MotionPreference(QDBusConnection bus, QObject* parent) : QObject(parent), bus_(std::move(bus)) {
  if (!bus_.isConnected()) return;
  bus_.connect(portal::anySender(), portal::path(), interface, QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QString, QString, QDBusVariant)));
  for (const Setting& setting : settings)
    ask(setting.area, setting.key);
}

bool MotionPreference::isReduced() const {
  return std::ranges::any_of(wishes_, [](const std::optional<bool>& wish) { return wish.value_or(false); });
}

void MotionPreference::ask(const QString& area, const QString& key) {
  QDBusMessage question =
      QDBusMessage::createMethodCall(portal::service(), portal::path(), interface, QStringLiteral("Read"));
  question << area << key;
  auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
  connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, area, key] {
    answer->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *answer;
    if (reply.isValid()) learn(area, key, reply.value().variant());
  });
}

void MotionPreference::settingChanged(const QString& area, const QString& key, const QDBusVariant& value) {
  learn(area, key, value.variant());
}

/// The answer to a question is wrapped once more than the news of a change.
void MotionPreference::learn(const QString& area, const QString& key, QVariant value) {
  while (value.canConvert<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  const bool before = isReduced();
  for (std::size_t index = 0; index < settings.size(); ++index)
    if (settings[index].area == area && settings[index].key == key) wishes_[index] = settings[index].read(value);
  if (isReduced() != before) Q_EMIT changed(isReduced());
}

}  // namespace tq

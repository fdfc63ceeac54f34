#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <array>
#include <optional>

namespace tq {

/// Whether the user wants programs to move as little as they can, as the desktop's portal tells it
/// (org.freedesktop.portal.Settings): "reduced-motion" of "org.freedesktop.appearance", or "enable-animations" of
/// "org.gnome.desktop.interface". Lives on the main thread and never waits.
class MotionPreference : public QObject {
  Q_OBJECT

 public:
  /// Asks the portal, and listens from now on. `bus` is the session bus; it need not be connected. A desktop that does
  /// not answer has no such wish.
  explicit MotionPreference(QDBusConnection bus, QObject* parent = nullptr);

  bool isReduced() const;

 Q_SIGNALS:
  void changed(bool isReduced);

 private Q_SLOTS:
  void settingChanged(const QString& area, const QString& key, const QDBusVariant& value);

 private:
  void ask(const QString& area, const QString& key);
  void learn(const QString& area, const QString& key, QVariant value);

  QDBusConnection bus_;
  std::array<std::optional<bool>, 2> wishes_;  ///< of each of the two settings, once it is known
};

}  // namespace tq

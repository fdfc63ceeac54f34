#pragma once

#include <QDBusConnection>
#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <chrono>

namespace tq {

/// Whether the user wants programs to look light or dark, as the desktop's portal tells it
/// (org.freedesktop.portal.Settings, "color-scheme" of "org.freedesktop.appearance"). Lives on the main thread.
class ColorScheme : public QObject {
  Q_OBJECT

 public:
  enum class Preference { none, dark, light };
  Q_ENUM(Preference)

  /// Listens from now on. `bus` is the session bus; it need not be connected.
  explicit ColorScheme(QDBusConnection bus, QObject* parent = nullptr);

  /// Asks the portal and waits for its answer, turning the event loop, for no longer than `patience`. A desktop without
  /// a portal, or one that does not answer, has no preference. For a start, before there is a window to change its
  /// look.
  Preference ask(std::chrono::milliseconds patience = std::chrono::milliseconds(200));

 Q_SIGNALS:
  void changed(tq::ColorScheme::Preference preference);

 private Q_SLOTS:
  void settingChanged(const QString& area, const QString& key, const QDBusVariant& value);

 private:
  QDBusConnection bus_;
};

}  // namespace tq

#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QString>
#include <QTimer>
#include <chrono>
#include <memory>

namespace tq {

class Inhibition;

/// Keeps the machine from going to sleep while there is work. The screen may go dark all the same. Asks the desktop's
/// portal (org.freedesktop.portal.Inhibit), and where that fails, is lost or does not answer in time, the login manager
/// (org.freedesktop.login1). Where neither helps, the machine may sleep; nobody is told.
/// Lives on the main thread and never blocks it.
class SuspendInhibitor : public QObject {
  Q_OBJECT

 public:
  /// @param sessionBus, systemBus  need not be connected
  /// @param patience               how long the portal may take before the login manager is asked too
  SuspendInhibitor(QDBusConnection sessionBus, QDBusConnection systemBus,
                   std::chrono::milliseconds patience = std::chrono::seconds(5), QObject* parent = nullptr);

  /// As `setActive(false)`.
  ~SuspendInhibitor() override;

  /// After `false` nothing is held, and what an earlier request gets later is given back as it arrives.
  void setActive(bool active);

 private Q_SLOTS:
  void portalResponded(uint code);

 private:
  void askLoginManager();

  const QString token_;  ///< of the requests to the portal
  const std::shared_ptr<Inhibition> portal_, loginManager_;
  QDBusServiceWatcher portalWatcher_;
  QTimer patience_;
  bool isActive_ = false;
};

}  // namespace tq

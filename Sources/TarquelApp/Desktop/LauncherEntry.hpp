#pragma once

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <chrono>

#include "TarquelApp/Desktop/ApplicationID.hpp"

namespace tq {

/// The badge and the bar that docks and task bars draw over the program's icon. Tells them by the signal
/// com.canonical.Unity.LauncherEntry.Update, which most desktops hear, and which nobody needs to answer.
/// Lives on the main thread and never blocks it.
class LauncherEntry : public QObject {
  Q_OBJECT

 public:
  /// @param bus       the session bus; it need not be connected
  /// @param interval  the least time between two signals
  explicit LauncherEntry(QDBusConnection bus, std::chrono::milliseconds interval = std::chrono::milliseconds(100),
                         QObject* parent = nullptr);

  /// Takes badge and bar away.
  ~LauncherEntry() override;

  /// What is to be seen from now on. A signal goes out only when that changes what is drawn; of quick changes the last
  /// one goes out.
  /// @param activeJobs  jobs that have not ended; with none, neither badge nor bar is shown
  /// @param progress    of all of them together, 0 to 1; shown in steps of a hundredth
  void show(int activeJobs, double progress);

 private:
  struct Look {
    int count = 0;
    int percent = 0;
    bool operator==(const Look&) const = default;
  };

  void sendChange();
  void send();

  QDBusConnection bus_;
  QDBusServiceWatcher launcher_;
  QTimer pause_;
  Look wanted_, sent_;
};

}  // namespace tq

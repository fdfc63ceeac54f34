#pragma once

#include <QObject>
#include <QTimer>

#include "TarquelApp/AppState.hpp"
#include "TarquelApp/Desktop/LauncherEntry.hpp"
#include "TarquelApp/Desktop/SuspendInhibitor.hpp"

namespace tq {

/// Keeps the desktop informed of the queue: how many jobs have not ended and how far they are, and that the machine
/// must not go to sleep meanwhile. Many changes are one look at the queue.
class DesktopStatus : public QObject {
  Q_OBJECT

 public:
  /// All outlive this object.
  DesktopStatus(AppState& app, LauncherEntry& launcher, SuspendInhibitor& inhibitor, QObject* parent = nullptr);

 private:
  void tell();

  AppState& app_;
  LauncherEntry& launcher_;
  SuspendInhibitor& inhibitor_;
  QTimer pause_{this};
};

}  // namespace tq

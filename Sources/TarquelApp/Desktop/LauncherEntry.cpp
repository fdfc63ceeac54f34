#include "TarquelApp/Desktop/LauncherEntry.hpp"

#include <QDBusMessage>
#include <algorithm>
#include <cmath>

namespace tq {

namespace {

/// https://wiki.ubuntu.com/Unity/LauncherAPI
QDBusMessage update(int count, int percent) {
  auto signal = QDBusMessage::createSignal(
      ApplicationID::objectPath(), QStringLiteral("com.canonical.Unity.LauncherEntry"), QStringLiteral("Update"));
  const QVariantMap properties{{QStringLiteral("count"), static_cast<qint64>(count)},
                               {QStringLiteral("count-visible"), count > 0},
                               {QStringLiteral("progress"), percent / 100.0},
                               {QStringLiteral("progress-visible"), count > 0}};
  signal.setArguments({ApplicationID::launcherURI(), properties});
  return signal;
}

int percentOf(double progress) {
  return std::isfinite(progress) ? static_cast<int>(std::lround(std::clamp(progress, 0.0, 1.0) * 100)) : 0;
}

}  // namespace

LauncherEntry::LauncherEntry(QDBusConnection bus, std::chrono::milliseconds interval, QObject* parent)
    : QObject(parent),
      bus_(bus),
      launcher_(QStringLiteral("com.canonical.Unity"), bus, QDBusServiceWatcher::WatchForRegistration) {
  pause_.setSingleShot(true);
  pause_.setInterval(interval);
  connect(&pause_, &QTimer::timeout, this, &LauncherEntry::sendChange);
  // A launcher that comes later has missed what was said.
  connect(&launcher_, &QDBusServiceWatcher::serviceRegistered, this, [this] {
    if (sent_ != Look{}) send();
  });
}

LauncherEntry::~LauncherEntry() {
  wanted_ = {};
  if (sent_ != wanted_) send();
}

void LauncherEntry::show(int activeJobs, double progress) {
  wanted_ = activeJobs > 0 ? Look{activeJobs, percentOf(progress)} : Look{};
  if (!pause_.isActive()) sendChange();
}

void LauncherEntry::sendChange() {
  if (wanted_ == sent_) return;
  send();
  pause_.start();
}

void LauncherEntry::send() {
  sent_ = wanted_;
  bus_.send(update(sent_.count, sent_.percent));
}

}  // namespace tq

#include "TarquelApp/DesktopStatus.hpp"

namespace tq {

namespace {

using namespace std::chrono_literals;

/// Often enough for a bar that moves, seldom enough for a look at all of a long queue.
constexpr auto interval = 250ms;

/// A job that has ended is whole, however it ended.
double overallProgress(const JobList& jobs) {
  if (jobs.empty()) return 0;
  double sum = 0;
  for (const JobList::Row& job : jobs.rows())
    sum += isTerminal(job->status) ? 1 : job->progress;
  return sum / static_cast<double>(jobs.size());
}

}  // namespace

DesktopStatus::DesktopStatus(AppState& app, LauncherEntry& launcher, SuspendInhibitor& inhibitor, QObject* parent)
    : QObject(parent), app_(app), launcher_(launcher), inhibitor_(inhibitor) {
  pause_.setSingleShot(true);
  pause_.setInterval(interval);
  connect(&pause_, &QTimer::timeout, this, &DesktopStatus::tell);
  const auto tellSoon = [this] {
    if (!pause_.isActive()) pause_.start();
  };
  connect(&app, &AppState::activeJobCountChanged, this, &DesktopStatus::tell);
  connect(app.jobs(), &JobListModel::jobReplaced, this, tellSoon);
  connect(app.jobs(), &JobListModel::countChanged, this, tellSoon);
  tell();
}

void DesktopStatus::tell() {
  launcher_.show(app_.activeJobCount(), overallProgress(app_.jobList()));
  inhibitor_.setActive(app_.activeJobCount() > 0);
}

}  // namespace tq

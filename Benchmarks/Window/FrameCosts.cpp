#include "Benchmarks/Window/FrameCosts.hpp"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QThread>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <utility>

#include "Benchmarks/Shared/Measure.hpp"

namespace tq::window {

namespace {

/// What changes nothing draws nothing, and is over after so long.
constexpr qint64 stillMilliseconds = 60;

/// Processor time of this thread, so that other work on the machine does not count (clock_gettime(2)).
double threadMilliseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

/// clock_gettime(2), in seconds: what perf-record(1) can put beside its samples.
double traceClock() {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

void trace(const std::string& what, double milliseconds, double begin) {
  std::fprintf(stderr, "%s: %.1f ms, --time %.6f,%.6f\n", what.c_str(), milliseconds, begin, traceClock());
}

double quantileOf(const std::vector<double>& values, double share) {
  return values.empty() ? 0 : compare::quantile(values, share);
}

}  // namespace

bool TimedApplication::notify(QObject* receiver, QEvent* event) {
  if (QThread::currentThread() != thread() || depth_ > 0) return QGuiApplication::notify(receiver, event);
  const std::string what =
      std::string(receiver->metaObject()->className()) + " got event " + std::to_string(event->type());
  const double begin = traceClock();
  const double start = threadMilliseconds();
  ++depth_;
  const bool handled = QGuiApplication::notify(receiver, event);
  --depth_;
  const double spent = threadMilliseconds() - start;
  longest_ = std::max(longest_, spent);
  if (spent > traced_) trace(what, spent, begin);
  return handled;
}

double TimedApplication::takeLongest() {
  return std::exchange(longest_, 0);
}

FrameCosts::FrameCosts(TimedApplication& application, QQuickWindow& window)
    : application_(application), window_(window), start_(threadMilliseconds()), mark_(start_), begin_(traceClock()) {
  QObject::connect(
      &window_, &QQuickWindow::beforeRendering, &window_, [this] { drawingMark_ = threadMilliseconds(); },
      Qt::DirectConnection);
  QObject::connect(
      &window_, &QQuickWindow::frameSwapped, &window_,
      [this] {
        const double now = threadMilliseconds();
        ours_.push_back(drawingMark_ - mark_);
        drawing_.push_back(now - drawingMark_);
        if (ours_.back() > application_.traced()) trace("a picture", ours_.back(), begin_);
        mark_ = now;
        begin_ = traceClock();
      },
      Qt::DirectConnection);
  waking_.start(5);
  application_.takeLongest();
}

void FrameCosts::step(const std::function<void()>& action) {
  const std::size_t before = ours_.size();
  action();
  QElapsedTimer elapsed;
  elapsed.start();
  while (ours_.size() == before && elapsed.elapsed() < stillMilliseconds)
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void FrameCosts::until(const std::function<bool()>& isDone) {
  while (!isDone())
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
}

void FrameCosts::printHead() {
  std::printf(
      "\n| what | pictures | ours, p99 | ours, longest | drawing, p99 | longest event | processor time |\n"
      "|---|---|---|---|---|---|---|\n");
}

void FrameCosts::print(const std::string& what) {
  std::printf("| %s | %zu | %.1f ms | %.1f ms | %.1f ms | %.1f ms | %.0f ms |\n", what.c_str(), ours_.size(),
              quantileOf(ours_, 0.99), quantileOf(ours_, 1), quantileOf(drawing_, 0.99), application_.takeLongest(),
              threadMilliseconds() - start_);
  std::fflush(stdout);
  ours_.clear();
  drawing_.clear();
  start_ = mark_ = threadMilliseconds();
  begin_ = traceClock();
}

}  // namespace tq::window

#include "TarquelApp/MainThread.hpp"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimerEvent>
#include <utility>

namespace tq {

namespace {

/// A quarter of the time of a picture at 60 in a second: the rest is for what the views make of it, and for drawing.
constexpr qint64 sliceMilliseconds = 4;

}  // namespace

void MainThread::post(std::function<void()> item) {
  {
    std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    if (std::exchange(isAwake_, true)) return;
  }
  QCoreApplication::postEvent(this, new QEvent(QEvent::User));
}

void MainThread::customEvent(QEvent*) {
  runSlice();
}

void MainThread::timerEvent(QTimerEvent*) {
  killTimer(std::exchange(timer_, 0));
  runSlice();
}

/// Goes on by a timer of no time: events that are posted while posted events are delivered are delivered at once,
/// before anything is drawn; timers fire once in each turn of the loop.
void MainThread::runSlice() {
  QElapsedTimer elapsed;
  elapsed.start();
  for (;;) {
    std::function<void()> item;
    {
      std::lock_guard lock(mutex_);
      if (items_.empty()) {
        isAwake_ = false;
        return;
      }
      if (elapsed.elapsed() >= sliceMilliseconds) break;
      item = std::move(items_.front());
      items_.pop_front();
    }
    item();
  }
  timer_ = startTimer(0);
}

}  // namespace tq

#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <functional>
#include <stdexcept>

namespace tq::test {

/// Turns the application's event loop until that is so; throws when it never is.
inline void turnUntil(const std::function<bool()>& reached) {
  constexpr qint64 patienceMilliseconds = 60'000;
  QElapsedTimer elapsed;
  elapsed.start();
  while (!reached()) {
    if (elapsed.elapsed() > patienceMilliseconds) throw std::runtime_error("what the test waits for never happened");
    QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
  }
}

}  // namespace tq::test

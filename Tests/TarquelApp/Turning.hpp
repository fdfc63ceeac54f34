#pragma once

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QEventLoop>
#include <QTimer>
#include <functional>
#include <gmock/gmock.h>
#include <source_location>
#include <stdexcept>

namespace tq::test {

/// Turns the application's event loop until that is so; throws when it never is.
inline void turnUntil(const std::function<bool()>& reached) {
  constexpr qint64 patienceMilliseconds = 60'000;
  QElapsedTimer elapsed;
  elapsed.start();
  QTimer look;  // what other threads bring about may come without an event
  look.start(5);
  while (!reached()) {
    if (elapsed.elapsed() > patienceMilliseconds) throw std::runtime_error("what the test waits for never happened");
    QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

/// Turns the event loop until what is read matches; a mismatch that stays fails the test. What cannot be read yet, and
/// throws, does not match.
template <class Read, class Matcher>
void expectSoon(const Read& read, const Matcher& expected,
                std::source_location where = std::source_location::current()) {
  using Value = std::decay_t<decltype(read())>;
  const auto matcher = testing::SafeMatcherCast<const Value&>(expected);
  try {
    turnUntil([&] {
      try {
        return matcher.Matches(read());
      } catch (const std::runtime_error&) {
        return false;
      }
    });
  } catch (const std::runtime_error&) {
    const testing::ScopedTrace trace(where.file_name(), static_cast<int>(where.line()), "expected here");
    EXPECT_THAT(read(), matcher);
  }
}

}  // namespace tq::test

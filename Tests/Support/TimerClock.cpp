#include "Support/TimerClock.hpp"

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {

using namespace std::chrono_literals;

Date TimerClock::now() const {
  std::lock_guard lock(mutex_);
  return now_;
}

void TimerClock::sleep(std::chrono::nanoseconds duration, std::stop_token stop) const {
  if (duration < 1s) {
    settling.pass(stop);
    return throwIfStopped(stop);
  }
  std::unique_lock lock(mutex_);
  lastSleep_ = duration;
  ++sleeps_;
  asleep_ = true;
  changed_.notify_all();
  const bool fired = changed_.wait(lock, stop, [this] { return fires_; });
  asleep_ = fires_ = false;
  if (!fired) throw Cancelled();
}

void TimerClock::advance(std::chrono::nanoseconds passed) {
  std::lock_guard lock(mutex_);
  now_ += passed;
}

void TimerClock::fire(std::chrono::nanoseconds passed) {
  std::unique_lock lock(mutex_);
  fire(lock, passed);
}

void TimerClock::tick(std::chrono::nanoseconds passed) {
  std::unique_lock lock(mutex_);
  const int before = fire(lock, passed);
  // What wakes the thread may also be something else; it works at the new time in either case.
  changed_.wait(lock, [&] { return asleep_ && sleeps_ > before; });
}

int TimerClock::fire(std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds passed) {
  changed_.wait(lock, [this] { return asleep_; });
  now_ += passed;
  fires_ = true;
  changed_.notify_all();
  return sleeps_;
}

std::chrono::nanoseconds TimerClock::lastSleep() const {
  std::lock_guard lock(mutex_);
  return lastSleep_;
}

}  // namespace tq::test

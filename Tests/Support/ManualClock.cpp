#include "Support/ManualClock.hpp"

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {

Date ManualClock::now() const {
  std::lock_guard lock(mutex_);
  return now_;
}

std::chrono::steady_clock::time_point ManualClock::steadyNow() const {
  std::lock_guard lock(mutex_);
  return steady_;
}

void ManualClock::sleep(std::chrono::nanoseconds duration, std::stop_token stop) const {
  throwIfStopped(stop);
  std::lock_guard lock(mutex_);
  sleeps_.push_back(duration);
  now_ += duration;
  steady_ += duration;
}

void ManualClock::advance(std::chrono::nanoseconds duration) {
  std::lock_guard lock(mutex_);
  now_ += duration;
  steady_ += duration;
}

std::vector<std::chrono::nanoseconds> ManualClock::sleeps() const {
  std::lock_guard lock(mutex_);
  return sleeps_;
}

}  // namespace tq::test

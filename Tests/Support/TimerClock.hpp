#pragma once

#include <condition_variable>
#include <mutex>

#include "Support/Gate.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq::test {

/// A clock for one thread that does something every second or more: it sleeps until the test has the timer fire.
/// Shorter sleeps pass at once, or when `settling` lets them.
class TimerClock final : public Clock {
 public:
  enum class ShortSleeps { pass, wait };

  explicit TimerClock(ShortSleeps shortSleeps = ShortSleeps::pass) {
    if (shortSleeps == ShortSleeps::pass) settling.open();
  }

  Date now() const override;
  std::chrono::steady_clock::time_point steadyNow() const override { return {}; }
  void sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override;

  /// Moves the time on and leaves the timer alone.
  void advance(std::chrono::nanoseconds passed);

  /// Moves the time on, or back, and has the timer fire, once the thread sleeps.
  void fire(std::chrono::nanoseconds passed = {});

  /// Moves the time on, or back, has the timer fire and returns when the thread has done its work and sleeps again.
  void tick(std::chrono::nanoseconds passed = {});

  /// Duration of the latest sleep that was no short one.
  std::chrono::nanoseconds lastSleep() const;

  mutable Gate settling;  ///< where each short sleep arrives

 private:
  int fire(std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds passed);

  mutable std::mutex mutex_;
  mutable std::condition_variable_any changed_;
  Date now_{std::chrono::seconds(1'700'000'000)};
  mutable std::chrono::nanoseconds lastSleep_{};
  mutable int sleeps_ = 0;
  mutable bool asleep_ = false;
  mutable bool fires_ = false;
};

}  // namespace tq::test

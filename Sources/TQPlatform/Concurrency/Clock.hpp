#pragma once

#include <chrono>
#include <stop_token>

namespace tq {

/// A moment of the calendar, UTC.
using Date = std::chrono::system_clock::time_point;

using Seconds = std::chrono::duration<double>;

/// Where the time comes from and how one waits for it. Passed to whatever needs either, so that a test decides.
class Clock {
 public:
  virtual ~Clock() = default;

  virtual Date now() const = 0;

  /// A time that only rises, for measuring durations.
  virtual std::chrono::steady_clock::time_point steadyNow() const = 0;

  /// Returns after `duration`; a stop request ends the wait at once with `Cancelled`.
  virtual void sleep(std::chrono::nanoseconds duration, std::stop_token stop) const = 0;
};

/// The real time of this machine.
class SystemClock final : public Clock {
 public:
  Date now() const override;
  std::chrono::steady_clock::time_point steadyNow() const override;
  void sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override;
};

}  // namespace tq

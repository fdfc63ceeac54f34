#pragma once

#include <condition_variable>
#include <mutex>
#include <vector>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq::test {

/// A clock that stands still. `sleep` returns at once, having moved the time on by the duration and noted it; a stop
/// request still ends it with `Cancelled`.
class ManualClock final : public Clock {
 public:
  explicit ManualClock(Date start = Date(std::chrono::seconds(1'700'000'000))) : now_(start) {}

  Date now() const override;
  std::chrono::steady_clock::time_point steadyNow() const override;
  void sleep(std::chrono::nanoseconds duration, std::stop_token stop) const override;

  void advance(std::chrono::nanoseconds duration);
  std::vector<std::chrono::nanoseconds> sleeps() const;

 private:
  mutable std::mutex mutex_;
  mutable Date now_;
  mutable std::chrono::steady_clock::time_point steady_{};
  mutable std::vector<std::chrono::nanoseconds> sleeps_;
};

}  // namespace tq::test

#include "TQPlatform/Concurrency/Clock.hpp"

#include <condition_variable>
#include <mutex>

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {

Date SystemClock::now() const {
  return std::chrono::system_clock::now();
}

std::chrono::steady_clock::time_point SystemClock::steadyNow() const {
  return std::chrono::steady_clock::now();
}

void SystemClock::sleep(std::chrono::nanoseconds duration, std::stop_token stop) const {
  std::mutex mutex;
  std::condition_variable_any never;
  std::unique_lock lock(mutex);
  never.wait_for(lock, stop, duration, [] { return false; });
  throwIfStopped(stop);
}

}  // namespace tq

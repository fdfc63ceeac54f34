#pragma once

#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <vector>

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {

/// Holds threads until the test lets them go, so that a test steers what overlaps. Every pass takes one permit.
class Gate {
 public:
  /// Blocks until a permit is there; a stop request ends the wait with `Cancelled`.
  void pass(const std::stop_token& stop = {}) {
    std::unique_lock lock(mutex_);
    ++arrivals_;
    changed_.notify_all();
    if (!changed_.wait(lock, stop, [this] { return open_ || permits_ > 0; })) throw Cancelled();
    if (!open_) --permits_;
  }

  /// Blocks until `count` threads in all have come to the gate, those that passed included.
  void waitForArrivals(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return arrivals_ >= count; });
  }

  void admitOne() {
    std::lock_guard lock(mutex_);
    ++permits_;
    changed_.notify_all();
  }

  void open() {
    std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }

  int arrivals() {
    std::lock_guard lock(mutex_);
    return arrivals_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable_any changed_;
  int arrivals_ = 0;
  int permits_ = 0;
  bool open_ = false;
};

}  // namespace tq::test

#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "TQPlatform/Concurrency/Executor.hpp"

namespace tq {

/// The event loop of a program without a window: whoever runs it is the owner of all that is posted to it.
class EventLoop {
 public:
  /// From any thread; never blocks.
  void post(std::function<void()> item);

  /// Runs the item that waits longest, after waiting for one at most that long. False when none came.
  bool runNext(std::chrono::milliseconds patience);

  /// Posts to this loop, which outlives it.
  Executor executor() {
    return [this](std::function<void()> item) { post(std::move(item)); };
  }

 private:
  std::mutex mutex_;
  std::condition_variable posted_;
  std::deque<std::function<void()>> items_;
};

}  // namespace tq

#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <stop_token>
#include <thread>

namespace tq {

/// Runs what is posted to it one after the other, in order, on one thread of its own. Posting never blocks. The
/// destructor lets the item that is running end and drops the rest.
class SerialQueue {
 public:
  SerialQueue();
  ~SerialQueue() = default;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// The item must not throw.
  void post(std::function<void()> item);

  /// Waits until everything posted before has run. Not from an item of this queue.
  void flush();

 private:
  void work(const std::stop_token& stop);

  std::mutex mutex_;
  std::condition_variable_any posted_;
  std::deque<std::function<void()>> items_;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace tq

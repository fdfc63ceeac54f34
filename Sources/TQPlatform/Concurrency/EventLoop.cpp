#include "TQPlatform/Concurrency/EventLoop.hpp"

#include <utility>

namespace tq {

void EventLoop::post(std::function<void()> item) {
  {
    std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
  }
  posted_.notify_one();
}

bool EventLoop::runNext(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  if (!posted_.wait_for(lock, patience, [this] { return !items_.empty(); })) return false;
  const auto item = std::move(items_.front());
  items_.pop_front();
  lock.unlock();
  item();
  return true;
}

}  // namespace tq

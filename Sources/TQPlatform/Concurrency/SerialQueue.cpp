#include "TQPlatform/Concurrency/SerialQueue.hpp"

#include <future>
#include <memory>
#include <utility>

namespace tq {

SerialQueue::SerialQueue() : thread_([this](const std::stop_token& stop) { work(stop); }) {}

void SerialQueue::post(std::function<void()> item) {
  {
    std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
  }
  posted_.notify_one();
}

void SerialQueue::flush() {
  const auto reached = std::make_shared<std::promise<void>>();
  const auto future = reached->get_future();
  post([reached] { reached->set_value(); });
  future.wait();
}

void SerialQueue::work(const std::stop_token& stop) {
  std::unique_lock lock(mutex_);
  while (posted_.wait(lock, stop, [this] { return !items_.empty(); }) && !stop.stop_requested()) {
    auto item = std::move(items_.front());
    items_.pop_front();
    lock.unlock();
    item();
    item = nullptr;  // what it owns may post in its destructor
    lock.lock();
  }
}

}  // namespace tq

#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

namespace tq::describe {

/// Messages from any thread to one that reads them in order. Sending never blocks on the reader.
template <class Message>
class Mailbox {
 public:
  void send(Message message) {
    {
      std::lock_guard lock(mutex_);
      messages_.push_back(std::move(message));
    }
    arrived_.notify_one();
  }

  /// The next message; absent when none came within `patience`.
  std::optional<Message> receive(std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    if (!arrived_.wait_for(lock, patience, [this] { return !messages_.empty(); })) return std::nullopt;
    Message message = std::move(messages_.front());
    messages_.pop_front();
    return message;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Message> messages_;
};

}  // namespace tq::describe

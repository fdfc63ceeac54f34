#include "TQPlatform/Concurrency/Tasks.hpp"

#include <algorithm>
#include <exception>
#include <optional>
#include <system_error>
#include <vector>

#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq {

namespace {

/// What the workers of one `forEachWindowed` share.
class Window {
 public:
  Window(std::size_t count, const std::function<void(std::size_t, std::stop_token)>& body)
      : count_(count), body_(body) {}

  void work() {
    while (const auto index = next()) {
      try {
        body_(*index, stopSource_.get_token());
      } catch (...) {
        fail(std::current_exception());
      }
    }
  }

  void fail(std::exception_ptr error) {
    {
      std::lock_guard lock(mutex_);
      if (!error_) error_ = std::move(error);
    }
    stopSource_.request_stop();
  }

  std::exception_ptr error() const {
    std::lock_guard lock(mutex_);
    return error_;
  }

 private:
  std::optional<std::size_t> next() {
    std::lock_guard lock(mutex_);
    if (error_ || next_ == count_) return std::nullopt;
    return next_++;
  }

  const std::size_t count_;
  const std::function<void(std::size_t, std::stop_token)>& body_;
  std::stop_source stopSource_;
  mutable std::mutex mutex_;
  std::size_t next_ = 0;
  std::exception_ptr error_;
};

}  // namespace

void forEachWindowed(std::size_t count, std::size_t width, std::stop_token stop,
                     const std::function<void(std::size_t, std::stop_token)>& body) {
  Window window(count, body);
  {
    const std::stop_callback cancel(stop, [&] { window.fail(std::make_exception_ptr(Cancelled())); });
    std::vector<std::jthread> helpers;
    try {
      for (std::size_t workers = 1; workers < std::min(count, width); ++workers)
        helpers.emplace_back([&window] { window.work(); });
    } catch (const std::system_error&) {
      // The machine gives no more threads; those that are there do it all.
    }
    window.work();
  }
  if (const auto error = window.error()) std::rethrow_exception(error);
}

TaskScope::~TaskScope() {
  stopAndWait();
}

std::stop_source TaskScope::start(std::function<void(std::stop_token)> body) {
  const auto ended = takeEnded();
  std::list<Task> started(1);
  Task& task = started.front();
  std::lock_guard lock(mutex_);
  task.thread = std::jthread([this, &task, body = std::move(body)](std::stop_token stop) {
    body(std::move(stop));
    std::lock_guard endLock(mutex_);
    task.ended = true;
  });
  tasks_.splice(tasks_.end(), started);
  return task.thread.get_stop_source();
}

void TaskScope::stopAndWait() {
  for (;;) {
    std::list<Task> tasks;
    {
      std::lock_guard lock(mutex_);
      tasks.swap(tasks_);
    }
    if (tasks.empty()) return;
    for (Task& task : tasks)
      task.thread.request_stop();
    for (Task& task : tasks)
      task.thread.join();
  }
}

std::list<TaskScope::Task> TaskScope::takeEnded() {
  std::list<Task> ended;
  std::lock_guard lock(mutex_);
  for (auto task = tasks_.begin(); task != tasks_.end();) {
    const auto next = std::next(task);
    if (task->ended) ended.splice(ended.end(), tasks_, task);
    task = next;
  }
  return ended;
}

}  // namespace tq

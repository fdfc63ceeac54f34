#pragma once

#include <cstddef>
#include <functional>
#include <list>
#include <mutex>
#include <stop_token>
#include <thread>

namespace tq {

/// Runs `body(0)` to `body(count - 1)`, started in that order and at most `width` (at least 1) at once: each end starts
/// the next. The first error wins: nothing more is started, the bodies still running see their stop token, and when all
/// have ended the error is thrown. A stop request does the same with `Cancelled`. Blocks the calling thread, which is
/// one of those that run bodies; where the machine gives too few threads, fewer than `width` run at once.
void forEachWindowed(std::size_t count, std::size_t width, std::stop_token stop,
                     const std::function<void(std::size_t index, std::stop_token stop)>& body);

/// Tasks that live no longer than their scope: the destructor asks all of them to stop and waits until they have ended.
/// May be used from any thread, its own tasks included; only the destructor may not run on one of them.
class TaskScope {
 public:
  TaskScope() = default;
  ~TaskScope();
  TaskScope(const TaskScope&) = delete;
  TaskScope& operator=(const TaskScope&) = delete;

  /// Starts a task on a thread of its own; what is returned can ask it to stop. The body must not throw. Throws
  /// `std::system_error` when the machine gives no more threads; nothing has been started then.
  std::stop_source start(std::function<void(std::stop_token stop)> body);

  /// Asks all tasks to stop and waits for their ends. Tasks started meanwhile are included.
  void stopAndWait();

 private:
  struct Task {
    bool ended = false;  // guarded by mutex_
    std::jthread thread;
  };

  std::list<Task> takeEnded();

  std::mutex mutex_;
  std::list<Task> tasks_;
};

}  // namespace tq

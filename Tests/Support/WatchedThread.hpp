#pragma once

#include <atomic>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <unistd.h>

namespace tq::test {

/// A thread of which a test can tell that it has come to a wait, so that the test steers what overlaps.
class WatchedThread {
 public:
  explicit WatchedThread(std::function<void()> body)
      : thread_([this, body = std::move(body)] {
          id_ = ::gettid();
          body();
          ended_ = true;
        }) {}

  /// Blocks until the thread sleeps in the system, which is how it waits for a lock, or has ended.
  void waitUntilItWaits() const {
    while (!ended_ && !sleeps())
      std::this_thread::yield();
  }

  bool hasEnded() const { return ended_; }
  void join() { thread_.join(); }

 private:
  bool sleeps() const {
    if (id_ == 0) return false;
    std::ifstream file("/proc/self/task/" + std::to_string(id_) + "/stat");
    std::string number, name, state;  // the name is this program's own and holds no blank
    file >> number >> name >> state;
    return state == "S";
  }

  std::atomic<pid_t> id_ = 0;
  std::atomic<bool> ended_ = false;
  std::jthread thread_;  // last: it uses all of the above
};

}  // namespace tq::test

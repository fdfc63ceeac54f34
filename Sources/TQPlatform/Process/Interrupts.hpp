#pragma once

#include <functional>
#include <thread>

namespace tq {

/// Keeps the wish to end the program (SIGINT of Ctrl-C, SIGTERM, SIGHUP) waiting until an `InterruptWatcher` takes it,
/// for the calling thread and all that it starts: to be called before any other thread is there. Those of the three
/// that were ignored before, as under `nohup`, stay so. Also has writes to a closed pipe fail instead of ending the
/// program.
void holdInterrupts();

/// Turns these wishes into calls of a function on a thread of its own, where any lock may be taken.
class InterruptWatcher {
 public:
  /// Holds interrupts, if that is not done yet. `onInterrupt` gets their count so far, from 1. It must not throw.
  explicit InterruptWatcher(std::function<void(int count)> onInterrupt);
  ~InterruptWatcher();
  InterruptWatcher(const InterruptWatcher&) = delete;
  InterruptWatcher& operator=(const InterruptWatcher&) = delete;

 private:
  std::jthread thread_;
};

/// Ends the program at once, without destructors or exit handlers.
[[noreturn]] void leaveAtOnce(int exitStatus);

}  // namespace tq

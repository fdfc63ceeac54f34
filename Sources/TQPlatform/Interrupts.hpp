#pragma once

#include <functional>
#include <thread>

namespace tq {

/// Turns the wish to end the program (SIGINT of Ctrl-C, SIGTERM, SIGHUP) into calls of a function on a thread of its
/// own, where any lock may be taken; those of the three that were ignored before, as under `nohup`, stay so. To be made
/// before any other thread starts, since it blocks these signals for the thread that makes it and for all that thread
/// starts. It also has writes to a closed pipe fail instead of ending the program.
class InterruptWatcher {
 public:
  /// `onInterrupt` gets the count of interrupts so far, from 1. It must not throw.
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

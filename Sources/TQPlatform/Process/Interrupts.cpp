#include "TQPlatform/Process/Interrupts.hpp"

#include <pthread.h>
#include <signal.h>
#include <unistd.h>
#include <utility>

namespace tq {

namespace {

/// Sent to the watching thread alone, to wake it for its end.
constexpr int wakeSignal = SIGUSR1;

bool isIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// What the program was told to ignore when it was started, as `nohup` does, stays ignored: blocked, it would arrive.
sigset_t watchedSignals() {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, wakeSignal);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP})
    if (!isIgnored(signal)) ::sigaddset(&set, signal);
  return set;
}

}  // namespace

void holdInterrupts() {
  ::signal(SIGPIPE, SIG_IGN);
  const sigset_t set = watchedSignals();
  ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

InterruptWatcher::InterruptWatcher(std::function<void(int)> onInterrupt) {
  holdInterrupts();
  const sigset_t set = watchedSignals();
  thread_ = std::jthread([set, onInterrupt = std::move(onInterrupt)](const std::stop_token& stop) {
    int count = 0;
    while (!stop.stop_requested()) {
      int received = 0;
      if (::sigwait(&set, &received) == 0 && received != wakeSignal) onInterrupt(++count);
    }
  });
}

InterruptWatcher::~InterruptWatcher() {
  thread_.request_stop();
  ::pthread_kill(thread_.native_handle(), wakeSignal);
}

void leaveAtOnce(int exitStatus) {
  ::_exit(exitStatus);
}

}  // namespace tq

#include <gtest/gtest.h>
#include <latch>
#include <signal.h>
#include <unistd.h>
#include <vector>

#include "TQPlatform/Process/Interrupts.hpp"

namespace tq {
namespace {

TEST(InterruptWatcher, CountsInterruptsAndEndsQuietly) {
  std::latch twice(2);
  std::vector<int> counts;
  {
    InterruptWatcher watcher([&](int count) {
      counts.push_back(count);
      twice.count_down();
    });
    kill(getpid(), SIGINT);
    // One signal of a kind can be pending at a time, hence another kind for the second.
    kill(getpid(), SIGTERM);
    twice.wait();
  }
  EXPECT_EQ(counts, (std::vector<int>{1, 2}));
}

TEST(InterruptWatcher, WhatWasIgnoredBeforeStaysIgnored) {
  // In a process of its own, since signals that were blocked before would not be ignored.
  EXPECT_EXIT(
      {
        sigset_t none;
        sigemptyset(&none);
        pthread_sigmask(SIG_SETMASK, &none, nullptr);
        signal(SIGHUP, SIG_IGN);
        std::latch interrupted(1);
        int counts = 0;
        {
          InterruptWatcher watcher([&](int count) {
            counts = count;
            interrupted.count_down();
          });
          kill(getpid(), SIGHUP);
          kill(getpid(), SIGTERM);
          interrupted.wait();
        }
        _exit(counts);
      },
      testing::ExitedWithCode(1), "");
}

}  // namespace
}  // namespace tq

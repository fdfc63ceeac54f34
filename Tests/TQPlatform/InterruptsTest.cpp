#include <gtest/gtest.h>
#include <latch>
#include <signal.h>
#include <unistd.h>
#include <vector>

#include "TQPlatform/Interrupts.hpp"

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

}  // namespace
}  // namespace tq

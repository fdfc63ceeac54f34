#include <algorithm>
#include <gtest/gtest.h>
#include <latch>
#include <memory>
#include <vector>

#include "Support/WatchedThread.hpp"
#include "TQPlatform/Concurrency/SerialQueue.hpp"

namespace tq {
namespace {

TEST(SerialQueue, RunsItemsInTheOrderOfPosting) {
  SerialQueue queue;
  std::vector<int> order;
  for (int number = 0; number < 100; ++number)
    queue.post([&order, number] { order.push_back(number); });
  queue.flush();
  ASSERT_EQ(order.size(), 100u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(SerialQueue, EveryPostWakesIt) {
  SerialQueue queue;
  for (int round = 0; round < 1000; ++round)
    queue.flush();
}

TEST(SerialQueue, PostingDoesNotWaitForARunningItem) {
  SerialQueue queue;
  std::latch running(1), release(1);
  int ran = 0;
  queue.post([&] {
    running.count_down();
    release.wait();
    ++ran;
  });
  running.wait();
  queue.post([&] { ++ran; });
  release.count_down();
  queue.flush();
  EXPECT_EQ(ran, 2);
}

TEST(SerialQueue, AnItemMayPostAnother) {
  SerialQueue queue;
  std::latch second(1);
  queue.post([&] { queue.post([&] { second.count_down(); }); });
  second.wait();
}

TEST(SerialQueue, WhatAnItemOwnsMayPostWhenItGoes) {
  struct Poster {
    SerialQueue& queue;
    std::latch& posted;
    ~Poster() {
      queue.post([&latch = posted] { latch.count_down(); });
    }
  };
  std::latch posted(1);
  SerialQueue queue;
  queue.post([owned = std::make_shared<Poster>(queue, posted)] {});
  posted.wait();
}

TEST(SerialQueue, TheEndDropsWhatHasNotBegun) {
  int ran = 0;
  std::latch running(1), release(1);
  auto queue = std::make_unique<SerialQueue>();
  queue->post([&] {
    running.count_down();
    release.wait();
  });
  running.wait();
  queue->post([&] { ++ran; });
  test::WatchedThread ender([&] { queue.reset(); });
  ender.waitUntilItWaits();
  EXPECT_FALSE(ender.hasEnded());
  release.count_down();
  ender.join();
  EXPECT_EQ(ran, 0);
}

TEST(SerialQueue, TheEndWaitsForTheItemThatIsRunning) {
  bool ended = false;
  std::latch running(1), release(1);
  std::jthread releaser;
  {
    SerialQueue queue;
    queue.post([&] {
      running.count_down();
      release.wait();
      ended = true;
    });
    running.wait();
    releaser = std::jthread([&] { release.count_down(); });
  }
  EXPECT_TRUE(ended);
}

}  // namespace
}  // namespace tq

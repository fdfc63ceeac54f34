#include <gtest/gtest.h>
#include <latch>
#include <list>
#include <stdexcept>
#include <string>
#include <thread>

#include "Support/WatchedThread.hpp"
#include "TQPlatform/Concurrency/Monitor.hpp"

namespace tq {
namespace {

TEST(Monitor, NothingInterleavesBetweenSuspensions) {
  Monitor monitor;
  int value = 0;
  const auto bump = [&] {
    for (int round = 0; round < 1000; ++round) {
      auto held = monitor.enter();
      const int seen = value;
      std::this_thread::yield();
      value = seen + 1;
    }
  };
  { std::jthread first(bump), second(bump); }
  EXPECT_EQ(value, 2000);
}

TEST(Monitor, OthersStepInWhileSuspended) {
  Monitor monitor;
  std::string order;
  std::latch suspended(1), stepped(1);
  std::jthread waiting([&] {
    auto held = monitor.enter();
    order += "a";
    const int answer = held.whileSuspended([&] {
      suspended.count_down();
      stepped.wait();
      return 7;
    });
    EXPECT_EQ(answer, 7);
    order += "c";
  });
  suspended.wait();
  {
    auto held = monitor.enter();
    order += "b";
  }
  stepped.count_down();
  waiting.join();
  EXPECT_EQ(order, "abc");
}

TEST(Monitor, IsHeldAgainAfterAWaitThatThrew) {
  Monitor monitor;
  std::latch tried(1);
  std::string order;
  std::jthread other;
  {
    auto held = monitor.enter();
    EXPECT_THROW(held.whileSuspended([]() -> void { throw std::runtime_error("no answer"); }), std::runtime_error);
    other = std::jthread([&] {
      tried.count_down();
      auto otherHeld = monitor.enter();
      order += "other";
    });
    tried.wait();
    std::this_thread::yield();
    order += "holder,";
  }
  other.join();
  EXPECT_EQ(order, "holder,other");
}

TEST(Monitor, OperationsGetInInTheOrderInWhichTheyAsked) {
  Monitor monitor;
  std::string order;
  std::list<test::WatchedThread> threads;
  {
    auto held = monitor.enter();
    for (char name = 'a'; name < 'k'; ++name) {
      const auto enter = [&monitor, &order, name] {
        auto own = monitor.enter();
        order += name;
      };
      threads.emplace_back(enter).waitUntilItWaits();
    }
    // Who comes back from a suspension queues up as well.
    held.whileSuspended([] {});
    order += "!";
  }
  threads.clear();
  EXPECT_EQ(order, "abcdefghij!");
}

}  // namespace
}  // namespace tq

#include <algorithm>
#include <atomic>
#include <barrier>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <latch>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "Support/NoMoreThreads.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"

namespace tq {
namespace {

TEST(ForEachWindowed, VisitsEveryIndexOnce) {
  std::vector<std::atomic<int>> visits(100);
  forEachWindowed(100, 4, {}, [&](std::size_t index, std::stop_token) { ++visits[index]; });
  for (const auto& count : visits)
    EXPECT_EQ(count, 1);
}

TEST(ForEachWindowed, NothingToDoReturnsAtOnce) {
  forEachWindowed(0, 4, {}, [](std::size_t, std::stop_token) { FAIL(); });
}

TEST(ForEachWindowed, WidthZeroWorksOneByOneInOrder) {
  std::vector<std::size_t> order;
  forEachWindowed(5, 0, {}, [&](std::size_t index, std::stop_token) { order.push_back(index); });
  EXPECT_EQ(order, (std::vector<std::size_t>{0, 1, 2, 3, 4}));
}

TEST(ForEachWindowed, RunsAsManyAtOnceAsItsWidth) {
  std::latch allInside(3);
  forEachWindowed(3, 3, {}, [&](std::size_t, std::stop_token) { allInside.arrive_and_wait(); });
}

TEST(ForEachWindowed, NeverRunsMoreAtOnceThanItsWidth) {
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::barrier threeInside(3);
  forEachWindowed(300, 3, {}, [&](std::size_t, std::stop_token) {
    {
      std::lock_guard lock(mutex);
      threads.insert(std::this_thread::get_id());
    }
    threeInside.arrive_and_wait();
  });
  EXPECT_EQ(threads.size(), 3u);
}

TEST(ForEachWindowed, FirstErrorWinsAndStopsTheOthers) {
  std::latch bothInside(2);
  std::atomic<int> started = 0;
  std::atomic<bool> otherSawStop = false;
  try {
    forEachWindowed(10, 2, {}, [&](std::size_t index, std::stop_token stop) {
      ++started;
      bothInside.arrive_and_wait();
      if (index == 0) throw std::runtime_error("first");
      while (!stop.stop_requested())
        std::this_thread::yield();
      otherSawStop = true;
      throw std::runtime_error("second");
    });
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "first");
  }
  EXPECT_TRUE(otherSawStop);
  EXPECT_EQ(started, 2);
}

TEST(ForEachWindowed, StopBeforeTheStartRunsNothing) {
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(forEachWindowed(3, 2, source.get_token(), [](std::size_t, std::stop_token) { ADD_FAILURE(); }),
               Cancelled);
}

TEST(ForEachWindowed, StopInTheMiddleStartsNothingMoreAndWaitsForTheRunning) {
  std::stop_source source;
  std::atomic<int> ended = 0;
  EXPECT_THROW(forEachWindowed(10, 1, source.get_token(),
                               [&](std::size_t, std::stop_token stop) {
                                 source.request_stop();
                                 EXPECT_TRUE(stop.stop_requested());
                                 ++ended;
                               }),
               Cancelled);
  EXPECT_EQ(ended, 1);
}

TEST(ForEachWindowed, WithoutMoreThreadsTheCallingOneDoesItAll) {
  std::vector<std::atomic<int>> visits(100);
  {
    const test::NoMoreThreads shortage;
    forEachWindowed(100, 4, {}, [&](std::size_t index, std::stop_token) { ++visits[index]; });
  }
  for (const auto& count : visits)
    EXPECT_EQ(count, 1);
}

TEST(TaskScope, WithoutMoreThreadsAStartFailsAndTheScopeStaysUsable) {
  std::atomic<int> ran = 0;
  {
    TaskScope scope;
    const auto body = [&](std::stop_token) { ++ran; };
    {
      const test::NoMoreThreads shortage;
      EXPECT_THROW(scope.start(body), std::system_error);
    }
    scope.start(body);
    scope.stopAndWait();
    EXPECT_EQ(ran, 1);
  }
}

TEST(TaskScope, WhatATaskStartsWhileAllAreStoppedIsStoppedAndAwaitedToo) {
  std::atomic<bool> secondEnded = false;
  TaskScope scope;
  scope.start([&](std::stop_token stop) {
    while (!stop.stop_requested())
      std::this_thread::yield();
    scope.start([&](std::stop_token secondStop) {
      while (!secondStop.stop_requested())
        std::this_thread::yield();
      secondEnded = true;
    });
  });
  scope.stopAndWait();
  EXPECT_TRUE(secondEnded);
}

TEST(TaskScope, ThreadsOfEndedTasksAreGivenBack) {
  // A thread that nobody has joined keeps its stack, which is a line of this table.
  const auto mappings = [] {
    std::ifstream table("/proc/self/maps");
    return std::count(std::istreambuf_iterator<char>(table), {}, '\n');
  };
  TaskScope scope;
  const auto runTasks = [&] {
    for (int round = 0; round < 300; ++round) {
      std::latch ran(1);
      scope.start([&](std::stop_token) { ran.count_down(); });
      ran.wait();
    }
  };
  runTasks();  // a sanitizer keeps lines of its own for the first threads, and no more for later ones
  const auto before = mappings();
  runTasks();
  EXPECT_LT(mappings() - before, 150);
}

TEST(TaskScope, DestructorStopsAndWaits) {
  std::atomic<bool> ended = false;
  {
    TaskScope scope;
    scope.start([&](std::stop_token stop) {
      while (!stop.stop_requested())
        std::this_thread::yield();
      ended = true;
    });
  }
  EXPECT_TRUE(ended);
}

TEST(TaskScope, OneTaskIsStoppedWithoutTheOthers) {
  TaskScope scope;
  std::latch stopped(1);
  std::atomic<bool> otherStopped = false;
  auto one = scope.start([&](std::stop_token stop) {
    while (!stop.stop_requested())
      std::this_thread::yield();
    stopped.count_down();
  });
  scope.start([&](std::stop_token stop) {
    stopped.wait();
    otherStopped = stop.stop_requested();
  });
  one.request_stop();
  stopped.wait();
  EXPECT_FALSE(otherStopped);
}

TEST(TaskScope, ATaskMayStartTheNext) {
  std::atomic<int> ran = 0;
  {
    TaskScope scope;
    std::latch last(1);
    std::function<void(std::stop_token)> body = [&](std::stop_token) {
      if (++ran < 50)
        scope.start(body);
      else
        last.count_down();
    };
    scope.start(body);
    last.wait();
  }
  EXPECT_EQ(ran, 50);
}

}  // namespace
}  // namespace tq

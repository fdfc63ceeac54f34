#include <QElapsedTimer>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <thread>
#include <vector>

#include "TarquelApp/MainThread.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::turnUntil;

TEST(MainThread, RunsItemsOfOtherThreadsInTheirOrderOnItsOwn) {
  MainThread mainThread;
  std::vector<int> ran;
  bool elsewhere = false;
  const auto home = std::this_thread::get_id();
  {
    const std::jthread worker([&] {
      for (int number = 0; number < 100; ++number)
        mainThread.post([&, number] {
          elsewhere = elsewhere || std::this_thread::get_id() != home;
          ran.push_back(number);
        });
    });
  }
  EXPECT_TRUE(ran.empty());
  turnUntil([&] { return ran.size() == 100; });
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
  EXPECT_FALSE(elsewhere);
}

TEST(MainThread, AFloodOfItemsLetsOtherEventsThrough) {
  MainThread mainThread;
  bool flooding = true;
  std::function<void()> again = [&] {
    QElapsedTimer elapsed;
    elapsed.start();
    while (elapsed.elapsed() < 2) {
    }
    if (flooding) mainThread.post(again);
  };
  mainThread.post(again);
  QObject other;
  QMetaObject::invokeMethod(
      &other, [&] { flooding = false; }, Qt::QueuedConnection);
  turnUntil([&] { return !flooding; });
  QCoreApplication::processEvents();
}

TEST(MainThread, ItemsAfterAPauseRunToo) {
  MainThread mainThread;
  int ran = 0;
  for (int round = 1; round <= 3; ++round) {
    mainThread.post([&] { ++ran; });
    turnUntil([&] { return ran == round; });
  }
}

TEST(MainThread, WhatIsLeftWhenItEndsIsDropped) {
  bool ran = false;
  {
    MainThread mainThread;
    mainThread.post([&] { ran = true; });
  }
  QCoreApplication::processEvents();
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace tq

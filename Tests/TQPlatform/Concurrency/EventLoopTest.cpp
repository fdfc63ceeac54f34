#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <thread>
#include <vector>

#include "TQPlatform/Concurrency/EventLoop.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::milliseconds none{0};

TEST(EventLoop, RunsWhatIsPostedInItsOrder) {
  EventLoop loop;
  std::vector<int> ran;
  for (const int number : {1, 2, 3})
    loop.post([&ran, number] { ran.push_back(number); });
  EXPECT_THAT(ran, IsEmpty());
  while (loop.runNext(none)) {
  }
  EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST(EventLoop, SaysWhenNothingCame) {
  EventLoop loop;
  EXPECT_FALSE(loop.runNext(none));
}

TEST(EventLoop, AnItemMayPostAnother) {
  EventLoop loop;
  bool ran = false;
  loop.post([&] { loop.post([&] { ran = true; }); });
  EXPECT_TRUE(loop.runNext(none));
  EXPECT_FALSE(ran);
  EXPECT_TRUE(loop.runNext(none));
  EXPECT_TRUE(ran);
}

TEST(EventLoop, WakesUpForAnotherThread) {
  EventLoop loop;
  const std::jthread other([&] { loop.post([] {}); });
  EXPECT_TRUE(loop.runNext(std::chrono::seconds(60)));
}

TEST(OwnerCalls, ReachTheirOwner) {
  EventLoop loop;
  const OwnerCalls calls(loop.executor());
  bool ran = false;
  {
    const std::jthread worker([&] { calls.post([&] { ran = true; }); });
  }
  EXPECT_FALSE(ran);
  loop.runNext(none);
  EXPECT_TRUE(ran);
}

TEST(OwnerCalls, AreDroppedWhenTheirObjectIsGone) {
  EventLoop loop;
  auto calls = std::make_unique<OwnerCalls>(loop.executor());
  bool ran = false;
  calls->post([&] { ran = true; });
  calls.reset();
  EXPECT_TRUE(loop.runNext(none));
  EXPECT_FALSE(ran);
}

}  // namespace
}  // namespace tq

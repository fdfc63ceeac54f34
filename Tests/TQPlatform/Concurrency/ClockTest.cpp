#include <gtest/gtest.h>
#include <thread>

#include "Support/ManualClock.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {
namespace {

TEST(SystemClock, SleepsAtLeastAsLongAsAsked) {
  const SystemClock clock;
  const auto start = clock.steadyNow();
  clock.sleep(std::chrono::milliseconds(2), {});
  EXPECT_GE(clock.steadyNow() - start, std::chrono::milliseconds(2));
}

TEST(SystemClock, AStopRequestEndsALongSleepAtOnce) {
  const SystemClock clock;
  std::stop_source source;
  std::jthread stopper([&] { source.request_stop(); });
  EXPECT_THROW(clock.sleep(std::chrono::hours(1), source.get_token()), Cancelled);
}

TEST(ManualClock, SleepingMovesTheTimeAndIsNoted) {
  const test::ManualClock clock;
  const auto start = clock.now();
  clock.sleep(std::chrono::seconds(5), {});
  EXPECT_EQ(clock.now() - start, std::chrono::seconds(5));
  EXPECT_EQ(clock.sleeps(), std::vector<std::chrono::nanoseconds>{std::chrono::seconds(5)});
}

}  // namespace
}  // namespace tq

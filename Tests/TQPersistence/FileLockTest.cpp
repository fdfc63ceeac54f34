#include <filesystem>
#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>

#include "TQPersistence/FileLock.hpp"

namespace tq::test {
namespace {

TEST(FileLockRegistry, TwoSpellingsOfOnePathShareALock) {
  FileLockRegistry registry;
  EXPECT_EQ(&registry.queue("/a/b/../c"), &registry.queue("/a/c"));
  EXPECT_EQ(&registry.queue("/a/./c"), &registry.queue("/a//c"));
  EXPECT_EQ(&registry.queue("/a/c/"), &registry.queue("/a/c"));
  EXPECT_EQ(&registry.queue("c"), &registry.queue(std::filesystem::current_path() / "c"));
}

TEST(FileLockRegistry, TwoFilesHaveLocksOfTheirOwn) {
  FileLockRegistry registry;
  EXPECT_NE(&registry.queue("/a/b"), &registry.queue("/a/c"));
}

TEST(FileLockRegistry, ALockStaysWhereItIsWhenOthersAreAdded) {
  FileLockRegistry registry;
  std::mutex* const first = &registry.queue("/first");
  for (int index = 0; index < 1000; ++index)
    registry.queue("/" + std::to_string(index));
  EXPECT_EQ(&registry.queue("/first"), first);
}

TEST(FileLockSync, GivesTheResultOfTheBody) {
  FileLockRegistry registry;
  EXPECT_EQ(FileLock::sync(registry, "/a", [] { return 42; }), 42);
}

TEST(FileLockSync, PassesAFailureOnAndIsFreeAgain) {
  FileLockRegistry registry;
  EXPECT_THROW(FileLock::sync(registry, "/a", [] { throw std::runtime_error("no"); }), std::runtime_error);
  EXPECT_EQ(FileLock::sync(registry, "/a", [] { return 1; }), 1);
}

TEST(FileLockSync, BodiesOfOneFileNeverOverlap) {
  FileLockRegistry registry;
  int counter = 0;
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < 4; ++thread)
      threads.emplace_back([&] {
        for (int round = 0; round < 1000; ++round)
          FileLock::sync(registry, round % 2 == 0 ? "/a/c" : "/a/b/../c", [&] {
            const int before = counter;
            std::this_thread::yield();
            counter = before + 1;
          });
      });
  }
  EXPECT_EQ(counter, 4000);
}

TEST(FileLockSync, AnotherFileIsNotHeldUp) {
  FileLockRegistry registry;
  const bool entered =
      FileLock::sync(registry, "/a", [&] { return FileLock::sync(registry, "/b", [] { return true; }); });
  EXPECT_TRUE(entered);
}

}  // namespace
}  // namespace tq::test

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/FileSystem/FileState.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

class FileStateTest : public testing::Test {
 protected:
  /// Gives the file that date, in seconds since 1970 and 5 ns, and tells what the file system made of it.
  timespec setDate(time_t seconds) {
    const timespec times[] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, {.tv_sec = seconds, .tv_nsec = 5}};
    EXPECT_EQ(::utimensat(AT_FDCWD, file_.c_str(), times, 0), 0);
    struct stat status {};
    EXPECT_EQ(::stat(file_.c_str(), &status), 0);
    return status.st_mtim;
  }

  const test::TemporaryFolder folder_;
  const fs::path file_ = folder_.write("file", "12345");
};

TEST_F(FileStateTest, TellsKindSizeAndDateToTheNanosecond) {
  setDate(1'700'000'000);
  const auto state = fileState(file_);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->kind, FileKind::regular);
  EXPECT_EQ(state->size, 5);
  EXPECT_EQ(state->modified, Date(1'700'000'000s + 5ns));
  EXPECT_EQ(fileState(folder_.path())->kind, FileKind::folder);
  EXPECT_EQ(fileState("/dev/null")->kind, FileKind::other);
}

TEST_F(FileStateTest, ADateOutOfRangeIsItsNearestEnd) {
  constexpr time_t year2300 = 10'413'792'000, year1900 = -2'208'988'800, year1600 = -11'676'096'000;
  for (const time_t wanted : {year2300, year1900, year1600}) {
    const auto [held, nanoseconds] = setDate(wanted);  // not every file system can hold it
    const auto expected = held == year2300   ? Date::max()
                          : held == year1600 ? Date::min()
                                             : Date(std::chrono::seconds(held) + std::chrono::nanoseconds(nanoseconds));
    EXPECT_EQ(fileState(file_)->modified, expected) << wanted << " held as " << held;
  }
}

TEST_F(FileStateTest, LinksAreFollowedToTheSameFile) {
  fs::create_symlink(file_, folder_ / "link");
  fs::create_hard_link(file_, folder_ / "hard");
  const auto state = fileState(file_);
  EXPECT_EQ(fileState(folder_ / "link")->identity, state->identity);
  EXPECT_EQ(fileState(folder_ / "link")->kind, FileKind::regular);
  EXPECT_EQ(fileState(folder_ / "hard")->identity, state->identity);
  EXPECT_NE(fileState(folder_.write("copy", "12345"))->identity, state->identity);
}

TEST_F(FileStateTest, WhatCannotBeLookedAtHasNone) {
  fs::create_symlink(folder_ / "nowhere", folder_ / "dangling");
  EXPECT_FALSE(fileState(folder_ / "missing"));
  EXPECT_FALSE(fileState(folder_ / "dangling"));
  EXPECT_FALSE(fileState(file_ / "below"));
  EXPECT_FALSE(fileState(""));
}

}  // namespace
}  // namespace tq

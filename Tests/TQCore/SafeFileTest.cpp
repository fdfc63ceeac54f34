#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "Support/Unprivileged.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

using test::TemporaryFolder;

TEST(ReadBounded, ReadsAFileOfExactlyTheLimit) {
  const TemporaryFolder folder;
  EXPECT_EQ(textOf(SafeFile::readBounded(folder.write("a.json", "12345"), 5)), "12345");
}

TEST(ReadBounded, ReadsAnEmptyFile) {
  const TemporaryFolder folder;
  EXPECT_TRUE(SafeFile::readBounded(folder.write("a.json", ""), 0).empty());
}

TEST(ReadBounded, RefusesOneByteMoreWithTheSizeInTheMessage) {
  const TemporaryFolder folder;
  const auto file = folder.write("a.json", "123456");
  try {
    SafeFile::readBounded(file, 5);
    FAIL();
  } catch (const TQError& error) {
    EXPECT_EQ(error, TQError::fileTooLarge(file, 6));
    EXPECT_EQ(error.description(), "File too large (6 bytes): a.json");
  }
}

TEST(ReadBounded, LooksAtTheSizeBeforeItReads) {
  const TemporaryFolder folder;
  const auto file = folder.write("huge.json", "");
  // A sparse file that could never be loaded.
  const std::int64_t size = std::int64_t{1} << 40;
  std::filesystem::resize_file(file, static_cast<std::uintmax_t>(size));
  try {
    SafeFile::readBounded(file, SafeFile::maxAggregateBytes);
    FAIL();
  } catch (const TQError& error) {
    EXPECT_EQ(error, TQError::fileTooLarge(file, size));
  }
}

TEST(ReadBounded, ReadsAFileWhoseSizeSaysNothing) {
  // The kernel gives 0 for the size of these.
  EXPECT_FALSE(SafeFile::readBounded("/proc/self/status", 1).empty());
}

TEST(ReadBounded, PassesTheSystemsErrorOn) {
  const TemporaryFolder folder;
  try {
    SafeFile::readBounded(folder / "missing.json", 5);
    FAIL();
  } catch (const SystemError& error) {
    EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
  }
}

TEST(ReadBounded, ReadsIntoTheSameBufferAgainAndAgain) {
  const TemporaryFolder folder;
  Bytes buffer;
  for (const char* content : {"12345", "", "1", "123"})
    EXPECT_EQ(textOf(SafeFile::readBounded(folder.write("a.json", content), 5, buffer)), content);
  EXPECT_THROW(SafeFile::readBounded(folder.write("a.json", "123456"), 5, buffer), TQError);
}

TEST(ReadBounded, FindsAFileTooLargeThatItMayNotEvenRead) {
  const TemporaryFolder folder;
  std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
  const auto large = folder.write("large.json", "123456"), small = folder.write("small.json", "1");
  for (const auto& file : {large, small})
    std::filesystem::permissions(file, std::filesystem::perms::none);
  const test::Unprivileged user;
  EXPECT_THROW(SafeFile::readBounded(large, 5), TQError);
  EXPECT_THROW(SafeFile::readBounded(small, 5), SystemError);
}

TEST(SafeFile, HasItsTwoLimits) {
  EXPECT_EQ(SafeFile::maxMetadataBytes, 16 * 1024 * 1024);
  EXPECT_EQ(SafeFile::maxAggregateBytes, 256 * 1024 * 1024);
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>
#include <stdexcept>

#include "Support/TemporaryFolder.hpp"
#include "TQCore/FileHash.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

using test::TemporaryFolder;

// No bytes at all, and the examples of FIPS 180-2.
constexpr const char* hashOfNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
constexpr const char* hashOfABC = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
constexpr const char* hashOfAMillionAs = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(FileHash, OfAnEmptyFileIsTheHashOfNoBytes) {
  const TemporaryFolder folder;
  EXPECT_EQ(FileHash::sha256Hex(folder.write("a", ""), 1024), hashOfNothing);
}

TEST(FileHash, DoesNotDependOnTheSizeOfTheChunks) {
  const TemporaryFolder folder;
  const auto small = folder.write("a", "abc");
  for (const std::size_t size : {1, 2, 3, 4, 1024})
    EXPECT_EQ(FileHash::sha256Hex(small, size), hashOfABC) << size;
  const auto large = folder.write("b", std::string(1'000'000, 'a'));
  for (const std::size_t size : {1000, 999, 1'048'576})
    EXPECT_EQ(FileHash::sha256Hex(large, size), hashOfAMillionAs);
}

TEST(FileHash, FailsOnAMissingFileAndOnAFolder) {
  const TemporaryFolder folder;
  EXPECT_THROW(FileHash::sha256Hex(folder / "missing", 1024), SystemError);
  EXPECT_THROW(FileHash::sha256Hex(folder.path(), 1024), SystemError);
}

TEST(FileHash, NeedsAChunkOfAtLeastOneByte) {
  const TemporaryFolder folder;
  EXPECT_THROW(FileHash::sha256Hex(folder.write("a", "abc"), 0), std::invalid_argument);
}

TEST(FileHash, StopsWhenToldTo) {
  const TemporaryFolder folder;
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(FileHash::sha256Hex(folder.write("a", "abc"), 1, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq

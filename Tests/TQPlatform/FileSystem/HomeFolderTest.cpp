#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "TQPlatform/FileSystem/HomeFolder.hpp"

namespace tq::test {
namespace {

TEST(HomeFolder, IsWhatTheEnvironmentSays) {
  const EnvironmentVariable home("HOME", "/somewhere/else");
  EXPECT_EQ(homeFolder(), "/somewhere/else");
}

TEST(HomeFolder, ComesFromTheUserTableWhenTheEnvironmentSaysNothingUsable) {
  std::filesystem::path fromTable;
  {
    const EnvironmentVariable home("HOME", std::nullopt);
    fromTable = homeFolder();
  }
  EXPECT_TRUE(fromTable.is_absolute());
  for (const char* unusable : {"", "relative/home"}) {
    const EnvironmentVariable home("HOME", unusable);
    EXPECT_EQ(homeFolder(), fromTable);
  }
}

}  // namespace
}  // namespace tq::test

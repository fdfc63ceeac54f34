#include <gtest/gtest.h>
#include <set>
#include <unordered_set>

#include "TQPlatform/UUID.hpp"

namespace tq::test {
namespace {

constexpr std::string_view upper = "0F8FAD5B-D9CB-469F-A165-70867728950E";
constexpr std::string_view lower = "0f8fad5b-d9cb-469f-a165-70867728950e";

TEST(UUID, ReadsEitherCaseAndWritesUpperCase) {
  ASSERT_TRUE(UUID::parse(upper));
  EXPECT_EQ(UUID::parse(upper)->text(), upper);
  EXPECT_EQ(UUID::parse(lower)->text(), upper);
  EXPECT_EQ(UUID::parse(lower), UUID::parse(upper));
}

TEST(UUID, TheDefaultIsNil) {
  EXPECT_EQ(UUID().text(), "00000000-0000-0000-0000-000000000000");
}

TEST(UUID, RefusesEveryOtherForm) {
  const std::string text(upper);
  EXPECT_FALSE(UUID::parse(""));
  EXPECT_FALSE(UUID::parse(text.substr(1)));
  EXPECT_FALSE(UUID::parse(text + "0"));
  EXPECT_FALSE(UUID::parse("{" + text + "}"));
  EXPECT_FALSE(UUID::parse("0F8FAD5BD9CB469FA16570867728950E"));
  EXPECT_FALSE(UUID::parse("GF8FAD5B-D9CB-469F-A165-70867728950E"));
  EXPECT_FALSE(UUID::parse("0F8FAD5B-D9CB-469F-A165-70867728950 "));
  EXPECT_FALSE(UUID::parse("0F8FAD5BD-9CB-469F-A165-70867728950E"));
  EXPECT_FALSE(UUID::parse(text.substr(0, 35) + std::string(1, '\0')));
}

TEST(UUID, RandomOnesAreVersionFourAndDiffer) {
  std::set<UUID> seen;
  for (int round = 0; round < 100; ++round) {
    const UUID id = UUID::random();
    seen.insert(id);
    EXPECT_EQ(id.text()[14], '4');
    EXPECT_NE(std::string("89AB").find(id.text()[19]), std::string::npos);
    EXPECT_EQ(UUID::parse(id.text()), id);
  }
  EXPECT_EQ(seen.size(), 100u);
}

TEST(UUID, IsAKeyOfAHashTable) {
  std::unordered_set<UUID> set{*UUID::parse(upper)};
  EXPECT_TRUE(set.contains(*UUID::parse(lower)));
  EXPECT_FALSE(set.contains(UUID()));
}

}  // namespace
}  // namespace tq::test

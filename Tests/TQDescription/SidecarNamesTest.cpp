#include <gtest/gtest.h>

#include "TQDescription/SidecarNames.hpp"

namespace tq {
namespace {

TEST(StemOf, DropsTheFolderAndTheLastExtensionOnly) {
  EXPECT_EQ(stemOf("/clips/clip.mov"), "clip");
  EXPECT_EQ(stemOf("clip.take2.mov"), "clip.take2");
  EXPECT_EQ(stemOf("a.b/clip"), "clip");
}

TEST(StemOf, KeepsANameThatStartsWithItsOnlyPoint) {
  EXPECT_EQ(stemOf("/clips/.mov"), ".mov");
  EXPECT_EQ(stemOf(".hidden.mov"), ".hidden");
}

TEST(StemOf, KeepsNamesInAnyEncoding) {
  EXPECT_EQ(stemOf("/clips/caf\xe9.mov"), "caf\xe9");
}

TEST(SidecarName, IsTheStemAndTheKind) {
  EXPECT_EQ(sidecarName("clip", SidecarKind::markdown), "clip.description.md");
  EXPECT_EQ(sidecarName("clip", SidecarKind::json), "clip.description.json");
  EXPECT_EQ(sidecarName("clip", SidecarKind::poster), "clip.description.jpg");
}

TEST(NumberedSidecarName, CarriesTheNumberInBracketsAfterABlank) {
  EXPECT_EQ(numberedSidecarName("clip", 2, SidecarKind::markdown), "clip.description (2).md");
  EXPECT_EQ(numberedSidecarName("clip", 9999, SidecarKind::json), "clip.description (9999).json");
  EXPECT_EQ(numberedSidecarName("clip", 10, SidecarKind::poster), "clip.description (10).jpg");
}

TEST(IsJSONSidecar, TakesUnnumberedNamesAlone) {
  EXPECT_TRUE(isJSONSidecar("/v/clip.description.json"));
  EXPECT_TRUE(isJSONSidecar("/v/clip (2).description.json"));
  EXPECT_FALSE(isJSONSidecar("/v/clip.description (2).json"));
  EXPECT_FALSE(isJSONSidecar("/v/clip.description.JSON"));
  EXPECT_FALSE(isJSONSidecar("/v/clip.description.md"));
  EXPECT_FALSE(isJSONSidecar("/v/x.description.json/clip.json"));
}

}  // namespace
}  // namespace tq

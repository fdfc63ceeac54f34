#include <gtest/gtest.h>

#include "TQDescription/Library/LoadedSidecar.hpp"

namespace tq {
namespace {

LoadedSidecar sidecar(std::string filename = "clip.mov") {
  DescriptionResult result;
  result.source.filename = std::move(filename);
  return {.sidecarURL = "/v/clip.description.json", .result = result};
}

TEST(LoadedSidecar, KnowsItsPoster) {
  EXPECT_EQ(sidecar().posterURL(), "/v/clip.description.jpg");
  const LoadedSidecar dotted{.sidecarURL = "/v.d/a.b (2).description.json", .result = sidecar().result};
  EXPECT_EQ(dotted.posterURL(), "/v.d/a.b (2).description.jpg");
}

TEST(LoadedSidecar, KnowsItsClip) {
  EXPECT_EQ(sidecar().sourceVideoURL(), "/v/clip.mov");
  EXPECT_EQ(sidecar("../clip.mov").sourceVideoURL(), std::nullopt);
  EXPECT_EQ(sidecar("").sourceVideoURL(), std::nullopt);
}

TEST(LoadedSidecar, IsEqualByPathAndContent) {
  LoadedSidecar other = sidecar();
  EXPECT_EQ(other, sidecar());
  EXPECT_EQ(hashOf(other), hashOf(sidecar()));

  other.sidecarURL = "/w/clip.description.json";
  EXPECT_NE(other, sidecar());
  EXPECT_NE(hashOf(other), hashOf(sidecar()));

  EXPECT_NE(sidecar("other.mov"), sidecar());
  EXPECT_NE(hashOf(sidecar("other.mov")), hashOf(sidecar()));
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>

#include "TQDescription/Library/MediaPathResolver.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using std::string_view_literals::operator""sv;

std::optional<fs::path> resolved(std::string_view name, const fs::path& sidecar = "/v/clip.description.json") {
  return MediaPathResolver::resolve(sidecar, name);
}

TEST(MediaPathResolver, FindsTheClipBesideItsSidecar) {
  EXPECT_EQ(resolved("clip.mov"), "/v/clip.mov");
}

TEST(MediaPathResolver, TakesAnyNameThatStaysInTheFolder) {
  EXPECT_EQ(resolved("Straße (1) – take.mov"), "/v/Straße (1) – take.mov");
  EXPECT_EQ(resolved("..."), "/v/...");
  EXPECT_EQ(resolved("..clip"), "/v/..clip");
  EXPECT_EQ(resolved(" "), "/v/ ");
  EXPECT_EQ(resolved("a\\..\\b.mov"), "/v/a\\..\\b.mov");
}

TEST(MediaPathResolver, RefusesAnEmptyName) {
  EXPECT_EQ(resolved(""), std::nullopt);
}

TEST(MediaPathResolver, RefusesEverySlash) {
  for (const std::string_view name : {"../clip.mov", "/etc/passwd", "sub/clip.mov", "clip.mov/", "/", "./clip.mov"})
    EXPECT_EQ(resolved(name), std::nullopt) << name;
}

TEST(MediaPathResolver, RefusesAZeroByte) {
  EXPECT_EQ(resolved("clip.mov\0.txt"sv), std::nullopt);
  EXPECT_EQ(resolved("\0"sv), std::nullopt);
}

TEST(MediaPathResolver, RefusesTheParentFolder) {
  EXPECT_EQ(resolved(".."), std::nullopt);
}

TEST(MediaPathResolver, TakesADotForTheFolderItself) {
  EXPECT_EQ(resolved("."), "/v");
}

TEST(MediaPathResolver, StandardizesTheFolder) {
  EXPECT_EQ(resolved("clip.mov", "/v/./sub/../clip.description.json"), "/v/clip.mov");
  EXPECT_EQ(resolved("clip.mov", "/v//sub///clip.description.json"), "/v/sub/clip.mov");
  EXPECT_EQ(resolved("..", "/v/sub/./clip.description.json"), std::nullopt);
  EXPECT_EQ(resolved(".", "/v/sub/./clip.description.json"), "/v/sub");
}

TEST(MediaPathResolver, KnowsTheRootFolderWhoseNameEndsInASlash) {
  EXPECT_EQ(resolved("clip.mov", "/clip.description.json"), "/clip.mov");
  EXPECT_EQ(resolved(".", "/clip.description.json"), "/");
  EXPECT_EQ(resolved("..", "/clip.description.json"), "/") << "the root is its own parent";
}

TEST(MediaPathResolver, IsNotDeceivedByAFolderWhoseNameBeginsAlike) {
  EXPECT_EQ(resolved("..", "/v/ab/clip.description.json"), std::nullopt);
  EXPECT_EQ(resolved("..", "/v/..ab/clip.description.json"), std::nullopt);
}

TEST(MediaPathResolver, TakesARelativeSidecarFromTheCurrentFolder) {
  EXPECT_EQ(resolved("clip.mov", "clip.description.json"), fs::current_path() / "clip.mov");
  EXPECT_EQ(resolved("clip.mov", "sub/clip.description.json"), fs::current_path() / "sub/clip.mov");
}

TEST(MediaPathResolver, HasNoAnswerWithoutASidecar) {
  EXPECT_EQ(resolved("clip.mov", ""), std::nullopt);
}

}  // namespace
}  // namespace tq

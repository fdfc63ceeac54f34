#include <gtest/gtest.h>

#include "TQCore/DefaultModels.hpp"
#include "TQCore/VideoExtensions.hpp"

namespace tq {
namespace {

TEST(VideoExtensions, TakesEachSupportedExtension) {
  for (const char* name : {"a.mov", "a.mp4", "a.m4v", "a.mkv", "a.webm", "a.avi", "a.mxf"})
    EXPECT_TRUE(VideoExtensions::isVideo(name)) << name;
  EXPECT_EQ(VideoExtensions::supported.size(), 7u);
}

TEST(VideoExtensions, DoesNotCareForTheCaseOfLetters) {
  EXPECT_TRUE(VideoExtensions::isVideo("clip.MOV"));
  EXPECT_TRUE(VideoExtensions::isVideo("/My Clips/clip.WebM"));
}

TEST(VideoExtensions, RefusesOtherExtensions) {
  for (const char* name : {"clip.mpg", "clip.mts", "clip.mov.txt", "clip.movie", "clip.mo"})
    EXPECT_FALSE(VideoExtensions::isVideo(name)) << name;
}

TEST(VideoExtensions, RefusesNamesWithoutAnExtension) {
  for (const char* name : {"clip", "clip.", ".mov", "mov", "", "/folder.mov/clip"})
    EXPECT_FALSE(VideoExtensions::isVideo(name)) << name;
}

TEST(LowercasedExtension, IsThatOfTheLastComponentWithoutThePoint) {
  EXPECT_EQ(lowercasedExtension("/a.b/Clip.Part1.MKV"), "mkv");
  EXPECT_EQ(lowercasedExtension("clip.É"), "é");
  EXPECT_EQ(lowercasedExtension("clip"), "");
  EXPECT_EQ(lowercasedExtension("clip."), "");
  EXPECT_EQ(lowercasedExtension(".mov"), "");
}

TEST(DefaultModels, AreThoseThatSettingsStartFrom) {
  EXPECT_STREQ(DefaultModels::anthropicVision, "claude-sonnet-4-5");
  EXPECT_STREQ(DefaultModels::whisperOpenAI, "whisper-1");
  EXPECT_STREQ(DefaultModels::whisper, "whisper-large-v3");
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>

#include "TQFrames/FFmpegRouter.hpp"

namespace tq::test {
namespace {

TEST(FFmpegRouter, TheFourContainersNeedTheTools) {
  for (const char* name : {"a.mkv", "a.webm", "a.avi", "a.mxf"})
    EXPECT_TRUE(FFmpegRouter::requiresFFmpeg(name)) << name;
}

TEST(FFmpegRouter, CaseDoesNotMatter) {
  EXPECT_TRUE(FFmpegRouter::requiresFFmpeg("/clips/A.MKV"));
  EXPECT_TRUE(FFmpegRouter::requiresFFmpeg("a.WebM"));
}

TEST(FFmpegRouter, OtherNamesDoNot) {
  for (const char* name : {"a.mov", "a.mp4", "a.m4v", "mkv", ".mkv", "a.mkv.mov", "a.", "a", "", "folder.mkv/clip"})
    EXPECT_FALSE(FFmpegRouter::requiresFFmpeg(name)) << name;
}

TEST(FFmpegRouter, OnlyTheLastExtensionCounts) {
  EXPECT_TRUE(FFmpegRouter::requiresFFmpeg("a.mov.mkv"));
}

}  // namespace
}  // namespace tq::test

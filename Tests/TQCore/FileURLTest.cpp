#include <gtest/gtest.h>

#include "TQCore/FileURL.hpp"

namespace tq {
namespace {

TEST(FileURL, KeepsTheCharactersOfAPathSegment) {
  const std::string path = "/azAZ09-._~!$&'()*+,;=:@/x";
  EXPECT_EQ(fileURL(path), "file://" + path);
}

TEST(FileURL, EncodesEverythingElseByteByByte) {
  EXPECT_EQ(fileURL("/a b/é%?#[].mov"), "file:///a%20b/%C3%A9%25%3F%23%5B%5D.mov");
  EXPECT_EQ(fileURL("/\xff\n\"<>\\^`{|}"), "file:///%FF%0A%22%3C%3E%5C%5E%60%7B%7C%7D");
}

TEST(FileURL, TakesRelativePathsFromTheCurrentFolder) {
  EXPECT_EQ(fileURL("a.mov"), fileURL(std::filesystem::current_path() / "a.mov"));
}

TEST(ParseFileURL, ReadsBackEveryPath) {
  for (const char* path : {"/", "/a b/é%?#[].mov", "/\xff\n", "/folder/", "//x/y", "/100%25"})
    EXPECT_EQ(parseFileURL(fileURL(path))->string(), path);
}

TEST(ParseFileURL, TakesAPlainAbsolutePathAsItStands) {
  EXPECT_EQ(parseFileURL("/a b/100%25 #1?.mov")->string(), "/a b/100%25 #1?.mov");
}

TEST(ParseFileURL, ReadsLowerCaseEscapesAndUnescapedText) {
  EXPECT_EQ(parseFileURL("file:///%c3%a9 é")->string(), "/é é");
}

TEST(ParseFileURL, KnowsTheLocalHostAndAnyCaseOfTheScheme) {
  EXPECT_EQ(parseFileURL("file://localhost/a")->string(), "/a");
  EXPECT_EQ(parseFileURL("FILE:///a")->string(), "/a");
}

TEST(ParseFileURL, RefusesEverythingElse) {
  for (const char* text :
       {"", "a/b", "file:", "file://", "file://localhost", "file://server/share", "file:/a", "http://localhost/a",
        "file:///a?b", "file:///a#b", "file:///a%", "file:///a%2", "file:///a%zz", "file:///a%+1", "file:///a%00b"})
    EXPECT_FALSE(parseFileURL(text)) << text;
}

TEST(ParseFileURL, RefusesAZeroByte) {
  EXPECT_FALSE(parseFileURL(std::string_view("/a\0b", 4)));
}

}  // namespace
}  // namespace tq

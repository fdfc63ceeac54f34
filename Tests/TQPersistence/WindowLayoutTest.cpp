#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/WindowLayout.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq::test {
namespace {

class WindowLayoutStoreTest : public testing::Test {
 protected:
  TemporaryFolder base;
  std::filesystem::path file = base / "tarquel/window-layout.json";
  WindowLayoutStore store{AppSupportPaths(base.path())};
};

TEST_F(WindowLayoutStoreTest, WhatIsSavedIsLoadedAgain) {
  store.save({.sidebarWidth = 412});
  EXPECT_EQ(store.load(), WindowLayout{.sidebarWidth = 412});
  store.save({});
  EXPECT_EQ(store.load(), WindowLayout{});
}

TEST_F(WindowLayoutStoreTest, AMissingOrCorruptFileGivesNothing) {
  EXPECT_EQ(store.load(), WindowLayout{});
  for (const char* content : {"", "[]", R"({"sidebarWidth": "wide"})", R"({"sidebarWidth": 2.5})"}) {
    base.write("tarquel/window-layout.json", content);
    EXPECT_EQ(store.load(), WindowLayout{}) << content;
  }
}

TEST_F(WindowLayoutStoreTest, AFolderInPlaceOfTheFileFailsTheSave) {
  std::filesystem::create_directories(file);
  EXPECT_THROW(store.save({.sidebarWidth = 1}), SystemError);
}

}  // namespace
}  // namespace tq::test

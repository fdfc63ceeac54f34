#include <gtest/gtest.h>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/UIState.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

class UIStateStoreTest : public testing::Test {
 protected:
  UIState loaded(std::string_view content) const {
    base.write("tarquel/ui-state.json", content);
    return store.load();
  }

  TemporaryFolder base;
  fs::path file = base / "tarquel/ui-state.json";
  UIStateStore store{AppSupportPaths(base.path())};
  UIState nothing;
};

TEST_F(UIStateStoreTest, AMissingFileGivesNothing) {
  EXPECT_EQ(store.load(), nothing);
}

TEST_F(UIStateStoreTest, AnEmptyObjectGivesNothing) {
  EXPECT_EQ(loaded("{}"), nothing);
}

TEST_F(UIStateStoreTest, ACorruptFileGivesNothing) {
  for (const char* content : {"", "no json", "[]", R"({"contentMode": "library", "selectedPrefTab": 5})"})
    EXPECT_EQ(loaded(content), nothing) << content;
}

TEST_F(UIStateStoreTest, AFolderInPlaceOfTheFileGivesNothingAndFailsTheSave) {
  fs::create_directories(file);
  EXPECT_EQ(store.load(), nothing);
  EXPECT_THROW(store.save(nothing), SystemError);
}

TEST_F(UIStateStoreTest, EveryKeyIsOptional) {
  const UIState state = loaded(R"({"contentMode": "library", "unknown": 1, "selectedPrefTab": null})");
  EXPECT_EQ(state, (UIState{.selectedPrefTab = {}, .contentMode = "library", .lastLibraryFolderPath = {}}));
}

TEST_F(UIStateStoreTest, WhatIsSavedIsLoadedAgain) {
  const UIState state{.selectedPrefTab = "a", .contentMode = "b", .lastLibraryFolderPath = "/c d"};
  store.save(state);
  EXPECT_EQ(store.load(), state);
  EXPECT_EQ(parseJSON(contentOf(file)),
            parseJSON(R"({"selectedPrefTab": "a", "contentMode": "b", "lastLibraryFolderPath": "/c d"})"));
}

TEST_F(UIStateStoreTest, WhatIsAbsentIsLeftOut) {
  store.save(nothing);
  EXPECT_EQ(parseJSON(contentOf(file)), parseJSON("{}"));
}

TEST_F(UIStateStoreTest, ADiskThatIsFullIsReportedAndTheOldFileStaysWhole) {
  const UIState state{.selectedPrefTab = "a", .contentMode = {}, .lastLibraryFolderPath = {}};
  store.save(state);
  {
    const FileSizeLimit limit(1);
    EXPECT_THROW(store.save(nothing), SystemError);
  }
  EXPECT_EQ(store.load(), state);
}

TEST_F(UIStateStoreTest, ASaveLeavesThePermissionsAlone) {
  fs::permissions(base.write("tarquel/ui-state.json", "{}"), fs::perms(0664));
  store.save(nothing);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0664));
}

}  // namespace
}  // namespace tq::test

// The two modes of the window, and what it remembers of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using test::expectSoon;
using enum JobStatus;

class WindowMode : public testing::Test, protected test::WindowHarness {
 protected:
  std::optional<std::string> modeOnDisk() const { return UIStateStore(paths).load().contentMode; }

  void expectQueue() {
    EXPECT_TRUE(shows("sidebar"));
    EXPECT_FALSE(shows("library"));
    EXPECT_TRUE(labelled("Queue", item("modePicker")).property("isCurrent").toBool());
  }
  void expectLibrary() {
    EXPECT_FALSE(shows("sidebar"));
    EXPECT_TRUE(shows("library"));
    EXPECT_TRUE(labelled("Library", item("modePicker")).property("isCurrent").toBool());
  }

  /// No later save of the interface's state can succeed.
  void blockSaves() {
    fs::remove(paths.uiStateURL());
    fs::create_directories(paths.uiStateURL() / "in the way");
  }
};

TEST_F(WindowMode, ANewUserSeesTheQueue) {
  launch();
  expectQueue();
  EXPECT_EQ(modeOnDisk(), std::nullopt) << "nobody has chosen yet";
}

TEST_F(WindowMode, ThePickerHasALabelAndTwoChoices) {
  launch();
  EXPECT_EQ(text("modePicker", "label"), "Mode");
  EXPECT_EQ(item("modePicker").property("choices").toStringList(),
            QStringList({QStringLiteral("Queue"), QStringLiteral("Library")}));
}

TEST_F(WindowMode, AChoiceIsShownAndSavedAtOnce) {
  launch();
  click(labelled("Library"));
  expectLibrary();
  EXPECT_EQ(modeOnDisk(), "Library");
  click(labelled("Queue"));
  expectQueue();
  EXPECT_EQ(modeOnDisk(), "Queue");
}

TEST_F(WindowMode, TheChoiceIsThereAgainAfterARestart) {
  launch();
  click(labelled("Library"));
  launch();
  expectLibrary();
}

TEST_F(WindowMode, AnyOtherTextIsTheQueue) {
  for (const char* text : {"library", "LIBRARY", "Library ", "", "nonsense", "Queue"}) {
    UIStateStore(paths).save({.contentMode = text});
    launch();
    expectQueue();
  }
}

TEST_F(WindowMode, AChoiceReplacesATextThatMeansNothing) {
  UIStateStore(paths).save({.selectedPrefTab = "keys", .contentMode = "nonsense", .lastLibraryFolderPath = "/clips"});
  launch();
  press(Qt::Key_1, Qt::ControlModifier);
  const UIState expected{.selectedPrefTab = "keys", .contentMode = "Queue", .lastLibraryFolderPath = "/clips"};
  EXPECT_EQ(UIStateStore(paths).load(), expected) << "what else it remembers stays";
}

TEST_F(WindowMode, AFailedSaveIsDropped) {
  launch();
  blockSaves();
  click(labelled("Library"));
  expectLibrary();
  EXPECT_FALSE(shows("alertMessage"));
  EXPECT_EQ(state().lastError(), QString());
}

TEST_F(WindowMode, ThePickerFollowsTheKeyboard) {
  launch();
  press(Qt::Key_2, Qt::ControlModifier);
  expectLibrary();
  press(Qt::Key_1, Qt::ControlModifier);
  expectQueue();
}

TEST_F(WindowMode, TheQueueGoesOnBehindTheLibrary) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  click(labelled("Library"));
  clips.letGo("a.mov");
  turnUntilStatus("a.mov", done);
  click(labelled("Queue"));
  expectSoon([&] { return text("detailStatus", "label"); }, "Done");
}

}  // namespace
}  // namespace tq

// Choosing clips and folders on a desktop that has panels for it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;

class WindowDesktopPanel : public testing::Test, protected test::WindowHarness {
 protected:
  WindowDesktopPanel() {
    filePanel = [this](const FileQuestion& asked, FileQuestion::Answer answer) {
      question = asked;
      give = std::move(answer);
    };
    launch();
  }

  void openClips() { press(Qt::Key_O, Qt::ControlModifier); }
  void openFolder() { press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier); }

  FileQuestion question;
  FileQuestion::Answer give;
};

TEST_F(WindowDesktopPanel, IsAskedForClipsInThePlaceOfQts) {
  openClips();
  EXPECT_EQ(question.title, QStringLiteral("Open Video…"));
  EXPECT_FALSE(question.wantsFolder);
  EXPECT_EQ(question.namePatterns, state().videoNamePatterns());
  EXPECT_EQ(question.folder, DesktopActions::videosFolder());
  EXPECT_EQ(question.window, &window());
  EXPECT_FALSE(shows("fileDialogListView"));
}

TEST_F(WindowDesktopPanel, WhatIsChosenThereIsTaken) {
  openClips();
  give(QList{clip("a.mov"), clip("b 100%.MKV")});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("a.mov", "b 100%.MKV"));
}

TEST_F(WindowDesktopPanel, AFolderIsAskedForByACommandOfItsOwn) {
  const QUrl inside = clip("trip/c.mp4");
  openFolder();
  EXPECT_EQ(question.title, QStringLiteral("Open Folder…"));
  EXPECT_TRUE(question.wantsFolder);
  EXPECT_EQ(question.window, &window());
  give(QList{inside.adjusted(QUrl::RemoveFilename)});
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("trip/c.mp4"));
}

TEST_F(WindowDesktopPanel, ADismissedOneTakesNothing) {
  openClips();
  give(QList<QUrl>());
  EXPECT_FALSE(shows("fileDialogListView"));
  EXPECT_THAT(clipsOnceAllAreIn(), IsEmpty());
}

TEST_F(WindowDesktopPanel, WhereItFailsQtsOpensForClips) {
  openClips();
  give(std::nullopt);
  turnUntil([&] { return shows("fileDialogListView"); });
  EXPECT_EQ(text("dialogTitleBarLabel"), "Open Video…");
}

TEST_F(WindowDesktopPanel, WhereItFailsQtsOpensForAFolder) {
  openFolder();
  give(std::nullopt);
  turnUntil([&] { return shows("fileDialogListView"); });
  EXPECT_EQ(text("dialogTitleBarLabel"), "Open Folder…");
}

}  // namespace
}  // namespace tq

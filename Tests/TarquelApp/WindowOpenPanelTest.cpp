// Choosing clips and folders in the panels, as its user does: with the mouse and with keys, in the panels that Qt draws
// itself where the desktop has none.

#include <QTest>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/EnvironmentVariable.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class WindowOpenPanel : public testing::Test, protected test::WindowHarness {
 protected:
  WindowOpenPanel() {
    clip("videos/a.mov");
    clip("videos/b 100%.MKV");
    clip("videos/notes.txt");
    clip("videos/trip/c.mp4");
    clip("videos/trip/deep/d.mov");
    engine.folder.write("config/user-dirs.dirs", "XDG_VIDEOS_DIR=\"" + (engine.folder / "videos").string() + "\"\n");
  }

  /// What the panel that is open lists, from top to bottom.
  std::vector<std::string> listed() {
    std::vector<std::string> names;
    for (const QQuickItem* entry : entries())
      names.push_back(textOf(entry->property("fileName").toString()));
    return names;
  }

  QQuickItem& entry(const std::string& name) {
    for (QQuickItem* found : entries())
      if (textOf(found->property("fileName").toString()) == name) return *found;
    throw std::runtime_error("the panel does not list " + name);
  }

  void open() {
    press(Qt::Key_O, Qt::ControlModifier);
    expectSoon([&] { return listed(); }, ElementsAre("a.mov", "b 100%.MKV", "trip"));
  }

  void launchAndOpen() {
    launch();
    open();
  }

  void launchAndOpenFolder() {
    launch();
    press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
    expectSoon([&] { return listed(); }, ElementsAre("trip"));
  }

  void expectClosed() {
    expectSoon([&] { return shows("fileDialogListView"); }, false);
  }

  void doubleClick(QQuickItem& target) {
    picture();
    const QPointF middle(target.width() / 2, target.height() / 2);
    QTest::mouseDClick(&window(), Qt::LeftButton, Qt::NoModifier, target.mapToScene(middle).toPoint());
  }

 private:
  std::vector<QQuickItem*> entries() {
    const auto lists = items("fileDialogListView");
    if (lists.empty()) return {};
    std::vector<QQuickItem*> found;
    const int count = lists.front()->property("count").toInt();
    for (int index = 0; index < count; ++index) {
      QQuickItem* entry = nullptr;
      QMetaObject::invokeMethod(lists.front(), "itemAtIndex", Q_RETURN_ARG(QQuickItem*, entry), Q_ARG(int, index));
      if (entry) found.push_back(entry);
    }
    return found;
  }

  const test::EnvironmentVariable config_{"XDG_CONFIG_HOME", (engine.folder / "config").string()};
};

TEST_F(WindowOpenPanel, ListsTheClipsAndFoldersWhereTheUsersVideosAre) {
  launchAndOpen();
  EXPECT_EQ(text("dialogTitleBarLabel"), "Open Video…");
}

TEST_F(WindowOpenPanel, ComesWithEachOfItsCommands) {
  launch();
  for (const auto& open :
       std::vector<std::function<void()>>{[&] { click("openButton"); }, [&] { click("chooseButton"); },
                                          [&] {
                                            openMenu("File");
                                            choose("Open Video…");
                                          },
                                          [&] { press(Qt::Key_O, Qt::ControlModifier); }}) {
    open();
    expectSoon([&] { return shows("fileDialogListView"); }, true);
    press(Qt::Key_Escape);
    expectClosed();
  }
  EXPECT_THAT(clipsOnceAllAreIn(), IsEmpty());
}

TEST_F(WindowOpenPanel, AClickAndOpenTakeAClip) {
  launchAndOpen();
  click(entry("b 100%.MKV"));
  click(labelled("Open"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/b 100%.MKV"));
}

TEST_F(WindowOpenPanel, ADoubleClickTakesAClip) {
  launchAndOpen();
  doubleClick(entry("a.mov"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/a.mov"));
}

TEST_F(WindowOpenPanel, TheKeysChooseAsWell) {
  launchAndOpen();
  item("fileDialogListView").forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Down);
  press(Qt::Key_Return);
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/b 100%.MKV"));
}

TEST_F(WindowOpenPanel, AFolderInItIsGoneInto) {
  launchAndOpen();
  doubleClick(entry("trip"));
  expectSoon([&] { return listed(); }, ElementsAre("c.mp4", "deep"));
  doubleClick(entry("c.mp4"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/trip/c.mp4"));
}

TEST_F(WindowOpenPanel, CancelTakesNothing) {
  launchAndOpen();
  click(entry("a.mov"));
  click(labelled("Cancel"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), IsEmpty());
}

TEST_F(WindowOpenPanel, EscapeTakesNothing) {
  launchAndOpen();
  click(entry("a.mov"));
  press(Qt::Key_Escape);
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), IsEmpty());
}

TEST_F(WindowOpenPanel, TheSameClipCanBeChosenAgain) {
  launchAndOpen();
  doubleClick(entry("a.mov"));
  expectClosed();
  open();
  doubleClick(entry("a.mov"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/a.mov", "videos/a.mov"));
}

TEST_F(WindowOpenPanel, AFolderIsChosenByACommandOfItsOwn) {
  launchAndOpenFolder();
  EXPECT_EQ(text("dialogTitleBarLabel"), "Open Folder…");
  click(entry("trip"));
  click(labelled("Open"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), ElementsAre("videos/trip/c.mp4", "videos/trip/deep/d.mov"));
}

TEST_F(WindowOpenPanel, CancelTakesNoFolder) {
  launchAndOpenFolder();
  click(entry("trip"));
  click(labelled("Cancel"));
  expectClosed();
  EXPECT_THAT(clipsOnceAllAreIn(), IsEmpty());
}

}  // namespace
}  // namespace tq

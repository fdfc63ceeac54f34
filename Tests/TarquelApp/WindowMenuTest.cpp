// The menus, the toolbar, and the shortcuts of both.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;
using enum JobStatus;

class WindowMenu : public testing::Test, protected test::WindowHarness {
 protected:
  std::vector<std::string> entriesOf(const std::string& title) {
    openMenu(title);
    const auto entries = menuEntries();
    press(Qt::Key_Escape);
    turnUntil([&] { return menuEntries().empty(); });
    return entries;
  }

  void chooseFrom(const std::string& title, const std::string& entry) {
    openMenu(title);
    choose(entry);
  }

  QObject& fileDialog() { return *window().findChild<QObject*>(QStringLiteral("fileDialog")); }
  bool panelIsOpen() { return fileDialog().property("visible").toBool(); }
  void closePanel() {
    QMetaObject::invokeMethod(&fileDialog(), "reject");
    expectSoon([&] { return panelIsOpen(); }, false);
  }

  void expectLibraryWithSearch() {
    EXPECT_TRUE(shows("library"));
    EXPECT_EQ(UIStateStore(paths).load().contentMode, "Library");
    EXPECT_TRUE(state().pendingSearchFocus());
  }
};

TEST_F(WindowMenu, HasTheCommandsOfTheProgram) {
  launch();
  EXPECT_THAT(entriesOf("File"), IsSupersetOf({"Open Video…", "(Clear Completed)", "Quit"}));
  EXPECT_THAT(entriesOf("Edit"), IsSupersetOf({"Find", "Preferences…"}));
  EXPECT_THAT(entriesOf("View"), IsSupersetOf({"Show Queue", "Show Library"}));
  EXPECT_THAT(entriesOf("Job"), ElementsAre("(Retry)", "(Cancel)", "(Quick Look)", "(Show in Finder)"));
  EXPECT_THAT(entriesOf("Help"), Contains("(Check for Updates…)"));
}

TEST_F(WindowMenu, WhatConcernsAJobIsForTheSelectedOne) {
  launch();
  drop("done.mov", done);
  EXPECT_THAT(entriesOf("Job"), ElementsAre("(Retry)", "(Cancel)", "Quick Look", "Show in Finder"));
  clips.hold("running.mov", calling);
  drop("running.mov", calling);
  state().setSelectedJobID(qtText(job("running.mov").id.text()));
  EXPECT_THAT(entriesOf("Job"), ElementsAre("(Retry)", "Cancel", "Quick Look", "Show in Finder"));
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  state().setSelectedJobID(qtText(job("failed.mov").id.text()));
  EXPECT_THAT(entriesOf("Job"), ElementsAre("Retry", "(Cancel)", "Quick Look", "Show in Finder"));
}

TEST_F(WindowMenu, RetryAndCancelHaveShortcuts) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  press(Qt::Key_R, Qt::ControlModifier);
  EXPECT_EQ(job("a.mov").status, calling) << "a running job has no Retry";
  press(Qt::Key_Period, Qt::ControlModifier);
  turnUntilStatus("a.mov", cancelled);
  clips.letGo("a.mov");
  press(Qt::Key_R, Qt::ControlModifier);
  turnUntilStatus("a.mov", done);
}

TEST_F(WindowMenu, ShowInFinderHasAShortcut) {
  launch();
  drop("a.mov", done);
  press(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "a.mov"));
}

TEST_F(WindowMenu, ShowLibraryAndShowQueueSwitchAndSave) {
  launch();
  chooseFrom("View", "Show Library");
  EXPECT_TRUE(shows("library"));
  EXPECT_EQ(UIStateStore(paths).load().contentMode, "Library");
  EXPECT_FALSE(state().pendingSearchFocus());
  chooseFrom("View", "Show Queue");
  EXPECT_TRUE(shows("sidebar"));
  EXPECT_EQ(UIStateStore(paths).load().contentMode, "Queue");
}

TEST_F(WindowMenu, TheModesHaveShortcuts) {
  launch();
  press(Qt::Key_2, Qt::ControlModifier);
  EXPECT_EQ(UIStateStore(paths).load().contentMode, "Library");
  press(Qt::Key_1, Qt::ControlModifier);
  EXPECT_EQ(UIStateStore(paths).load().contentMode, "Queue");
}

TEST_F(WindowMenu, FindGoesToTheLibraryAndAsksForItsSearchField) {
  launch();
  chooseFrom("Edit", "Find");
  expectLibraryWithSearch();
}

TEST_F(WindowMenu, FindHasAShortcutAlsoWhileTheListHasTheKeyboard) {
  launch();
  drop("a.mov", done);
  turnUntil([&] { return shows("queueRow"); });
  click("queueRow");
  press(Qt::Key_F, Qt::ControlModifier);
  expectLibraryWithSearch();
}

TEST_F(WindowMenu, ClearCompletedIsThereWhenSomeJobIsDone) {
  launch();
  const auto isEnabled = [&] { return item("clearButton").isEnabled(); };
  EXPECT_EQ(text("clearButton"), "Clear Completed");
  EXPECT_EQ(text("clearButton", "drawing"), "check");
  EXPECT_FALSE(isEnabled());
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  EXPECT_FALSE(isEnabled());
  drop("done.mov", done);
  EXPECT_TRUE(isEnabled());
  EXPECT_THAT(entriesOf("File"), Contains("Clear Completed"));
  click("clearButton");
  EXPECT_FALSE(isEnabled());
  EXPECT_EQ(state().jobList().size(), 1U);
  EXPECT_EQ(job(0).status, failed) << "only what is done goes";
}

TEST_F(WindowMenu, ClearCompletedInTheMenuDoesTheSame) {
  launch();
  drop("done.mov", done);
  chooseFrom("File", "Clear Completed");
  EXPECT_TRUE(state().jobList().empty());
}

TEST_F(WindowMenu, ADisabledButtonDoesNothing) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  click("clearButton");
  EXPECT_EQ(state().jobList().size(), 1U);
}

TEST_F(WindowMenu, ThePanelOffersTheVideosThatAreTaken) {
  launch();
  EXPECT_EQ(fileDialog().property("fileMode").toInt(), 1) << "several files";
  const QString filters = fileDialog().property("nameFilters").toStringList().join(QLatin1Char('\n'));
  for (const char* extension : {"mov", "mp4", "m4v", "mkv", "webm", "avi", "mxf"}) {
    EXPECT_TRUE(filters.contains(QStringLiteral("*.") + QLatin1String(extension))) << extension;
    EXPECT_TRUE(filters.contains(QStringLiteral("*.") + QString(QLatin1String(extension)).toUpper())) << extension;
  }
}

TEST_F(WindowMenu, AFolderCanBeOpenedToo) {
  launch();
  clip("trip/a.mov");
  press(Qt::Key_O, Qt::ControlModifier | Qt::ShiftModifier);
  QObject& dialog = *window().findChild<QObject*>(QStringLiteral("folderDialog"));
  expectSoon([&] { return dialog.property("visible").toBool(); }, true);
  dialog.setProperty("selectedFolder", qtFileURL(engine.folder / "trip"));
  dialog.setProperty("currentFolder", qtFileURL(engine.folder / "trip"));
  QMetaObject::invokeMethod(&dialog, "accept");
  turnUntilStatus("a.mov", done);
}

TEST_F(WindowMenu, PreferencesOpenAWindowOfTheirOwn) {
  launch();
  press(Qt::Key_Comma, Qt::ControlModifier);
  turnUntil([&] { return otherWindow("preferences") != nullptr; });
  const QQuickWindow& preferences = *otherWindow("preferences");
  EXPECT_GE(preferences.minimumWidth(), 560);
  EXPECT_GE(preferences.minimumHeight(), 500);
  EXPECT_EQ(preferences.size(), QSize(640, 680));
}

TEST_F(WindowMenu, PreferencesHaveTheUpdateCheckToo) {
  launch();
  press(Qt::Key_Comma, Qt::ControlModifier);
  turnUntil([&] { return otherWindow("preferences") != nullptr; });
  const QQuickItem& button = labelled("Check for Updates…", *otherWindow("preferences")->contentItem());
  EXPECT_TRUE(button.isVisible());
  EXPECT_FALSE(button.isEnabled()) << "updates come with the system's packages";
}

TEST_F(WindowMenu, TheToolBarSaysWhatItsButtonsDo) {
  launch();
  EXPECT_EQ(text("openButton"), "Open Video…");
  EXPECT_EQ(text("openButton", "drawing"), "plus");
  EXPECT_TRUE(item("openButton").isEnabled());
  EXPECT_LT(item("modePicker").mapToScene({}).x(), item("openButton").mapToScene({}).x());
  EXPECT_LT(item("openButton").mapToScene({}).x(), item("clearButton").mapToScene({}).x());
}

TEST_F(WindowMenu, EachCommandHasItsOwnShortcut) {
  launch();
  std::map<std::string, std::string> keys;
  for (const QObject* action : window().findChildren<QObject*>())
    if (action->inherits("QQuickAction") && action->property("text").isValid())
      keys[textOf(action->property("text").toString())] = textOf(action->property("shortcut").toString());
  EXPECT_EQ(keys["Open Video…"], "Ctrl+O");
  EXPECT_EQ(keys["Show Queue"], "Ctrl+1");
  EXPECT_EQ(keys["Show Library"], "Ctrl+2");
  EXPECT_EQ(keys["Find"], "Ctrl+F");
  EXPECT_EQ(keys["Check for Updates…"], "");
}

TEST_F(WindowMenu, QuitInTheMenuEndsTheProgram) {
  launch();
  chooseFrom("File", "Quit");
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowMenu, NoShortcutIsThereTwice) {
  launch();
  std::vector<std::string> shortcuts;
  for (const QObject* action : window().findChildren<QObject*>())
    if (action->inherits("QQuickAction"))
      if (const QString keys = action->property("shortcut").toString(); !keys.isEmpty())
        shortcuts.push_back(keys.toStdString());
  const std::size_t count = shortcuts.size();
  std::ranges::sort(shortcuts);
  EXPECT_EQ(std::ranges::unique(shortcuts).size(), 0U);
  EXPECT_GE(count, 6U);
}

}  // namespace
}  // namespace tq

// The window as a screen reader uses it: what it finds by name and role in the tree of assistive technology, it
// presses.

#include <QAccessible>
#include <QSignalSpy>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class WindowPress : public testing::Test, protected test::WindowHarness {
 protected:
  void SetUp() override { QAccessible::setActive(true); }
  void TearDown() override { QAccessible::setActive(false); }

  using Roles = std::set<QAccessible::Role>;
  // What Qt's own controls call themselves counts: it wins over what a view says on some versions.
  static inline const Roles buttons{QAccessible::Button, QAccessible::RadioButton};
  static inline const Roles menus{QAccessible::MenuItem};
  static inline const Roles entries{QAccessible::MenuItem};
  static inline const Roles rows{QAccessible::ListItem};

  /// What is visible with one of these roles and a name that begins so; waits for it.
  QAccessibleInterface& found(const Roles& roles, const std::string& name) {
    QAccessibleInterface* found = nullptr;
    turnUntil([&] {
      found = find(*QAccessible::queryAccessibleInterface(&window()), roles, qtText(name));
      return found != nullptr;
    });
    return *found;
  }

  void pressFound(const Roles& roles, const std::string& name) {
    QAccessibleActionInterface* actions = found(roles, name).actionInterface();
    ASSERT_NE(actions, nullptr) << name;
    ASSERT_TRUE(actions->actionNames().contains(QAccessibleActionInterface::pressAction())) << name;
    actions->doAction(QAccessibleActionInterface::pressAction());
  }

  void pressButton(const std::string& name) { pressFound(buttons, name); }
  void pressEntry(const std::string& name) { pressFound(entries, name); }

  void pressMenu(const std::string& title) {
    pressFound(menus, title);
    turnUntil([&] { return !menuEntries().empty(); });
  }

  void pressInMenu(const std::string& title, const std::string& entry) {
    pressMenu(title);
    pressEntry(entry);
    expectSoon([&] { return menuEntries(); }, IsEmpty());
  }

  void launchWithFailure() {
    launch();
    clips.fail("a.mov", "no");
    drop("a.mov", failed);
    turnUntil([&] { return shows("queueRow"); });
    picture();
  }

 private:
  static QAccessibleInterface* find(QAccessibleInterface& from, const Roles& roles, const QString& name) {
    if (from.state().invisible) return nullptr;
    if (roles.contains(from.role()) && from.text(QAccessible::Name).startsWith(name)) return &from;
    for (int index = 0; index < from.childCount(); ++index)
      if (QAccessibleInterface* child = from.child(index))
        if (QAccessibleInterface* inside = find(*child, roles, name)) return inside;
    return nullptr;
  }
};

TEST_F(WindowPress, TheButtonsThatOpenThePanel) {
  launch();
  for (const char* button : {"Choose Files…", "Open Video…"}) {
    pressButton(button);
    expectSoon([&] { return shows("fileDialogListView"); }, true);
    press(Qt::Key_Escape);
    expectSoon([&] { return shows("fileDialogListView"); }, false);
  }
}

TEST_F(WindowPress, ClearCompletedOnceSomethingIs) {
  launch();
  drop("a.mov", done);
  pressButton("Clear Completed");
  EXPECT_TRUE(state().jobList().empty());
}

TEST_F(WindowPress, ADisabledButtonDoesNothing) {
  launch();
  QSignalSpy clicks(&item("clearButton"), SIGNAL(clicked()));
  pressButton("Clear Completed");
  EXPECT_EQ(clicks.size(), 0);
  drop("a.mov", done);
  pressButton("Clear Completed");
  EXPECT_EQ(clicks.size(), 1);
}

TEST_F(WindowPress, TheModesAreAChoice) {
  launch();
  EXPECT_TRUE(found(buttons, "Queue").state().checked);
  pressButton("Library");
  EXPECT_TRUE(shows("library"));
  EXPECT_TRUE(found(buttons, "Library").state().checked);
  EXPECT_FALSE(found(buttons, "Queue").state().checked);
  pressButton("Queue");
  EXPECT_TRUE(shows("sidebar"));
}

TEST_F(WindowPress, TheTabsAreAChoice) {
  launch();
  drop("a.mov", done);
  for (const char* tab : {"JSON", "Source", "Markdown"}) {
    pressButton(tab);
    EXPECT_TRUE(labelled(tab).property("isCurrent").toBool());
    EXPECT_TRUE(found(buttons, tab).state().checked);
  }
}

TEST_F(WindowPress, ARowIsSelected) {
  launch();
  drop("a.mov", done);
  drop("b.mov", done);
  turnUntil([&] { return items("queueRow").size() == 2; });
  picture();
  EXPECT_TRUE(found(rows, "a.mov, Done").state().selected);
  pressFound(rows, "b.mov, Done");
  expectSoon([&] { return text("detailName"); }, "b.mov");
  EXPECT_TRUE(found(rows, "b.mov, Done").state().selected);
  EXPECT_FALSE(found(rows, "a.mov, Done").state().selected);
}

TEST_F(WindowPress, TheCommandsOfTheMenuBar) {
  launchWithFailure();
  pressInMenu("View", "Show Library");
  EXPECT_TRUE(shows("library"));
  pressInMenu("View", "Show Queue");
  EXPECT_TRUE(shows("sidebar"));
  pressInMenu("Job", "Show in Finder");
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "a.mov"));
  clips.answer("a.mov", test::goodAnswer());
  pressInMenu("Job", "Retry");
  turnUntilStatus("a.mov", done);
  pressInMenu("File", "Clear Completed");
  EXPECT_TRUE(state().jobList().empty());
  pressInMenu("File", "Quit");
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowPress, ACommandThatIsNotToBeHadDoesNothing) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  pressInMenu("Job", "Retry");
  EXPECT_EQ(job("a.mov").status, calling);
  pressInMenu("Job", "Cancel");
  turnUntilStatus("a.mov", cancelled);
}

TEST_F(WindowPress, TheCommandsOfARow) {
  launchWithFailure();
  item("queueRow").forceActiveFocus(Qt::TabFocusReason);
  const auto choose = [&](const char* entry) {
    press(Qt::Key_Menu);
    pressEntry(entry);
    expectSoon([&] { return menuEntries(); }, IsEmpty());
  };
  choose("Show in Finder");
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "a.mov"));
  clips.hold("a.mov", calling);
  choose("Retry");
  turnUntilStatus("a.mov", calling);
  choose("Cancel");
  turnUntilStatus("a.mov", cancelled);
  const test::ExpectedQtWarning noClip(QStringLiteral("no picture"));
  choose("Quick Look");
  turnUntil([&] { return otherWindow("quickLook") != nullptr; });
  expectSoon([&] { return otherWindow("quickLook")->findChild<QQuickItem*>(QStringLiteral("noPicture"))->isVisible(); },
             true);
}

TEST_F(WindowPress, ShowInFinderBesideTheName) {
  launchWithFailure();
  pressButton("Show in Finder");
  EXPECT_THAT(shownInFileManager, ElementsAre(engine.folder / "a.mov"));
}

TEST_F(WindowPress, TheFramesAndTheirSheet) {
  launch();
  drop("a.mov", done);
  turnUntil([&] { return items("frameThumbnail").size() == 2; });
  pressButton("Frame 2,");
  expectSoon([&] { return text("frameTitle").substr(0, 12); }, "Frame 2 of 2");
  pressButton("Done");
  expectSoon([&] { return shows("frameTitle"); }, false);
  pressButton("Frames sent to model (2)");
  expectSoon([&] { return shows("frameThumbnail"); }, false);
  pressButton("Frames sent to model (2)");
  expectSoon([&] { return shows("frameThumbnail"); }, true);
}

TEST_F(WindowPress, TheAnswersToAnAlert) {
  launch();
  state().setLastError(QStringLiteral("It broke."));
  pressButton("OK");
  expectSoon([&] { return shows("alertMessage"); }, false);
  EXPECT_EQ(state().lastError(), QString());
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  delegate.terminate();
  pressButton("Cancel");
  expectSoon([&] { return shows("alertMessage"); }, false);
  EXPECT_EQ(terminations, 0);
  delegate.terminate();
  pressButton("Quit");
  EXPECT_EQ(terminations, 1);
}

TEST_F(WindowPress, TheMockOnTheFirstRunScreen) {
  save({});
  launch();
  pressButton("Use the built-in mock");
  expectSoon([&] { return shows("dropZone"); }, true);
}

}  // namespace
}  // namespace tq

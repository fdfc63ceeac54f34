// The window for those who use it without a mouse, without seeing it, or without telling its colours apart.

#include <QAccessible>
#include <QJSValue>
#include <QPainter>
#include <QQmlApplicationEngine>
#include <QQmlComponent>
#include <QTest>
#include <algorithm>
#include <cstdlib>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <stdexcept>

#include "TarquelApp/AccessibilityFaults.hpp"
#include "TarquelApp/Appearance.hpp"
#include "TarquelApp/Pictures/IconPictures.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowStates.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using test::WindowHarness;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// With assistive technology, as it was before the window was there.
class AccessibleWindow : public testing::Test, protected WindowHarness {
 protected:
  void SetUp() override { QAccessible::setActive(true); }
  void launch() {
    WindowHarness::launch();
    QAccessible::setActive(true);  // what is made later does not know on this screen
  }
  void TearDown() override {
    QAccessible::setActive(false);
    setAppearance(false);
  }

  /// Goes to that state, and has the rows laid out that it brought.
  void bring(const char* state) {
    test::windowState(state).bring(*this);
    picture();
  }

  QQuickItem* focused() { return window().activeFocusItem(); }

  /// The colours of the views.
  QObject& theme() {
    QQmlComponent component(qmlEngine(&window()));
    component.setData("import QtQml; import Tarquel; QtObject { readonly property QtObject theme: Theme }", QUrl());
    const std::unique_ptr<QObject> holder(component.create());
    if (!holder) throw std::runtime_error(component.errorString().toStdString());
    return *holder->property("theme").value<QObject*>();
  }

  /// Puts the keyboard on the selected row.
  QQuickItem* focusRow() {
    item("queueList").forceActiveFocus(Qt::TabFocusReason);
    return focused();
  }
};

class AccessibleState : public AccessibleWindow, public testing::WithParamInterface<test::WindowState> {};

TEST_P(AccessibleState, IsToldInWordsSeenAndReachedByTheKeyboard) {
  GetParam().bring(*this);
  QQuickWindow& front = test::windowInFront(*this);
  EXPECT_THAT(test::namingFaults(front), IsEmpty());
  EXPECT_THAT(test::contrastFaults(front), IsEmpty()) << "light";
  setAppearance(true);
  QCoreApplication::processEvents();
  EXPECT_THAT(test::contrastFaults(front), IsEmpty()) << "dark";
  if (!test::shownMenu(front)) {
    EXPECT_THAT(test::focusFaults(front), IsEmpty());
  }
}

INSTANTIATE_TEST_SUITE_P(Window, AccessibleState, testing::ValuesIn(test::windowStates()),
                         [](const auto& state) { return std::string(state.param.name); });

/// A window of its own, made from QML on the spot.
std::vector<std::string> faultsOf(const char* content, std::vector<std::string> (*find)(QQuickWindow& window)) {
  QQmlApplicationEngine engine;
  engine.loadData(QByteArray("import QtQuick; import QtQuick.Controls; ApplicationWindow { visible: true; width: 300; "
                             "height: 200; color: 'white'; ") +
                  content + " }");
  auto* window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
  if (!window || !QTest::qWaitForWindowExposed(window)) throw std::runtime_error("no window");
  window->requestActivate();
  turnUntil([&] { return window->isActive(); });
  return find(*window);
}

TEST_F(AccessibleWindow, FaultsOfNamesAreFound) {
  EXPECT_THAT(
      faultsOf("AbstractButton { width: 20; height: 20; Accessible.role: Accessible.Button }", test::namingFaults),
      ElementsAre(HasSubstr("no name")));
  EXPECT_THAT(faultsOf("Image { Accessible.role: Accessible.Graphic; width: 9; height: 9 }", test::namingFaults),
              ElementsAre(HasSubstr("no name")));
  EXPECT_THAT(faultsOf("Rectangle { MouseArea { width: 9; height: 9 } }", test::namingFaults),
              ElementsAre(HasSubstr("takes clicks")));
  EXPECT_THAT(faultsOf("Item { activeFocusOnTab: true }", test::namingFaults),
              ElementsAre(HasSubstr("not told to assistive technology")));
  EXPECT_THAT(faultsOf("Item { activeFocusOnTab: true; Accessible.name: 'x' }", test::namingFaults),
              ElementsAre(HasSubstr("no role")));
  EXPECT_THAT(faultsOf("Item { Accessible.role: Accessible.Button; Accessible.name: 'Open'; Label { text: 'Open' } }",
                       test::namingFaults),
              ElementsAre(HasSubstr("read out twice")));
}

TEST_F(AccessibleWindow, FaultsOfContrastAreFound) {
  EXPECT_THAT(faultsOf("Text { text: 'faint'; color: '#999999' }", test::contrastFaults),
              ElementsAre(HasSubstr("2.8")));
  EXPECT_THAT(faultsOf("Text { text: 'faint'; color: 'black'; opacity: 0.5 }", test::contrastFaults),
              ElementsAre(HasSubstr("3.9")));
  EXPECT_THAT(faultsOf("Text { text: 'clear'; color: '#595959' }", test::contrastFaults), IsEmpty());
}

TEST_F(AccessibleWindow, FaultsOfFocusAreFound) {
  constexpr const char* stop =
      "component Stop: Rectangle { width: 40; height: 20; activeFocusOnTab: true; "
      "border.width: activeFocus ? 3 : 0 } ";
  const auto faults = [&](const char* content) {
    return faultsOf((std::string(stop) + content).c_str(), test::focusFaults);
  };
  EXPECT_THAT(faults("Stop {} Stop { y: 40 } Stop { y: 80 }"), IsEmpty());
  EXPECT_THAT(faults("Stop {} Stop { y: 80 } Stop { y: 40 }"), Not(IsEmpty())) << "not as it is read";
  EXPECT_THAT(faults("Stop {} Stop { y: 40; border.width: 0 }"), ElementsAre(HasSubstr("does not show")));
  EXPECT_THAT(faults("Stop {} Stop { y: 40 } AbstractButton { y: 80; width: 9; height: 9; "
                     "Accessible.role: Accessible.Button; Accessible.name: 'x'; focusPolicy: Qt.ClickFocus }"),
              ElementsAre(HasSubstr("Tab does not come")));
}

TEST_F(AccessibleWindow, ContrastIsCountedAsItsDefinitionSays) {
  EXPECT_DOUBLE_EQ(test::contrastRatio(Qt::white, Qt::black), 21.0);
  EXPECT_NEAR(test::contrastRatio(QColor(0x77, 0x77, 0x77), Qt::white), 4.48, 0.005);
  EXPECT_NEAR(test::contrastRatio(Qt::white, QColor(0x77, 0x77, 0x77)), 4.48, 0.005);
}

/// The colours that no state shows side by side.
TEST_F(AccessibleWindow, RingsAndSelectionsStandOutInLightAndDark) {
  launch();
  for (const bool dark : {false, true}) {
    setAppearance(dark);
    QCoreApplication::processEvents();
    const auto contrast = [&](const char* one, const char* other) {
      return test::contrastRatio(theme().property(one).value<QColor>(), theme().property(other).value<QColor>());
    };
    for (const char* background : {"window", "base", "sidebar"})
      EXPECT_GE(contrast("accent", background), 3.0) << "a ring on " << background;
    for (const char* background : {"selection", "quietSelection", "hover", "sidebar", "window", "base"}) {
      for (const char* text : {"text", "secondaryText", "red"})
        EXPECT_GE(contrast(text, background), 4.5) << text << " on " << background;
      for (const char* icon : {"secondaryText", "accentText", "green", "redFill", "orange"})
        EXPECT_GE(contrast(icon, background), 3.0) << icon << " on " << background;
    }
  }
}

TEST_F(AccessibleWindow, StatusesAreToldApartWithoutColour) {
  launch();
  QVariant icons = theme().property("statusIcons");
  if (icons.userType() == qMetaTypeId<QJSValue>()) icons = icons.value<QJSValue>().toVariant();
  const QVariantMap names = icons.toMap();
  ASSERT_EQ(names.size(), 7);
  constexpr QSize size(20, 20);
  IconPictures pictures;
  std::map<QString, QImage> drawn;
  for (auto name = names.begin(); name != names.end(); ++name) {
    QImage picture(size, QImage::Format_Grayscale8);
    picture.fill(Qt::white);
    QPainter painter(&picture);
    painter.drawPixmap(0, 0, pictures.requestPixmap(name.value().toString() + QLatin1String("/000000"), nullptr, size));
    painter.end();
    drawn[name.key()] = picture;
  }
  for (const auto& [status, picture] : drawn)
    for (const auto& [other, otherPicture] : drawn) {
      if (!(status < other)) continue;
      int different = 0;
      for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
          if (std::abs(qGray(picture.pixel(x, y)) - qGray(otherPicture.pixel(x, y))) > 64) ++different;
      EXPECT_GE(different, 30) << status.toStdString() << " and " << other.toStdString();
    }
}

TEST_F(AccessibleWindow, WhatClosesGivesTheKeyboardBack) {
  bring("DoneMarkdown");
  QQuickItem* row = focusRow();
  ASSERT_TRUE(row->hasActiveFocus());
  const auto closes = [&](const char* what) {
    press(Qt::Key_Escape);
    turnUntil([&] { return !test::modalPopup(window()) && !test::shownMenu(window()) && window().isActive(); });
    SCOPED_TRACE(what);
    expectSoon([&] { return focused(); }, row);
  };
  press(Qt::Key_F10);
  turnUntil([&] { return test::shownMenu(window()) != nullptr; });
  closes("the menu of F10");
  press(Qt::Key_F10, Qt::ShiftModifier);
  turnUntil([&] { return test::shownMenu(window()) != nullptr; });
  closes("the row's menu");
  state().setLastError(QStringLiteral("Something."));
  turnUntil([&] { return test::modalPopup(window()) != nullptr; });
  closes("an alert");
  press(Qt::Key_Comma, Qt::ControlModifier);
  turnUntil([&] { return &test::windowInFront(*this) != &window(); });
  QTest::keyClick(&test::windowInFront(*this), Qt::Key_Escape);
  window().requestActivate();
  turnUntil([&] { return window().isActive(); });
  expectSoon([&] { return focused(); }, row);

  row = &item("frameThumbnail");
  row->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Space);
  turnUntil([&] { return test::modalPopup(window()) != nullptr; });
  closes("the preview");
}

TEST_F(AccessibleWindow, TheArrowKeysGoFromFrameToFrame) {
  bring("DoneMarkdown");
  items("frameThumbnail")[0]->forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_EQ(focused(), items("frameThumbnail")[1]);
  press(Qt::Key_Home);
  EXPECT_EQ(focused(), items("frameThumbnail")[0]);
  press(Qt::Key_End);
  press(Qt::Key_Space);
  turnUntil([&] { return test::modalPopup(window()) != nullptr; });
  EXPECT_THAT(text("frameTitle"), HasSubstr("Frame 2 of 2"));
}

TEST_F(AccessibleWindow, TheArrowKeysGoFromTabToTabAndFromModeToMode) {
  bring("DoneMarkdown");
  labelled("Markdown").forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_TRUE(labelled("JSON").hasActiveFocus());
  expectSoon([&] { return text("resultText"); }, HasSubstr("\"schema_version\""));
  press(Qt::Key_Right);
  EXPECT_TRUE(shows("sourceTable"));
  press(Qt::Key_Left);
  EXPECT_TRUE(labelled("JSON").hasActiveFocus());
  labelled("Queue").forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_TRUE(shows("library"));
}

TEST_F(AccessibleWindow, TheSelectedRowIsWhatIsReadOut) {
  bring("DoneMarkdown");
  QQuickItem* first = focusRow();
  const auto name = [&] {
    return QAccessible::queryAccessibleInterface(focused())->text(QAccessible::Name).toStdString();
  };
  EXPECT_THAT(name(), HasSubstr("harbour.mov, Done"));
  press(Qt::Key_Down);
  expectSoon(name, HasSubstr("pier.mov, Done"));
  EXPECT_NE(focused(), first);
}

/// The names of what assistive technology is told of the queue, in that order.
std::vector<std::string> toldOf(QQuickItem& list) {
  QAccessibleInterface* told = QAccessible::queryAccessibleInterface(&list);
  std::vector<std::string> names;
  for (int index = 0; index < told->childCount(); ++index)
    if (QAccessibleInterface* child = told->child(index);
        child && !child->state().invisible &&
        (child->role() == QAccessible::ListItem || child->role() == QAccessible::Heading))
      names.push_back(child->text(QAccessible::Name).section(QLatin1Char(','), 0, 0).toStdString());
  return names;
}

TEST_F(AccessibleWindow, TheQueueIsReadFromTopToBottom) {
  launch();
  clips.fail("b.mov", "no");
  drop("b.mov", JobStatus::failed);
  drop("c.mov", JobStatus::done);
  drop("a.mov", JobStatus::done);
  const auto told = [this] { return toldOf(item("queueList")); };
  expectSoon(told, ElementsAre("Done", "c.mov", "a.mov", "Failed", "b.mov"));
  clips.hold("d.mov", JobStatus::calling);
  drop("d.mov", JobStatus::calling);
  expectSoon(told, ElementsAre("Running", "d.mov", "Done", "c.mov", "a.mov", "Failed", "b.mov"));
}

TEST_F(AccessibleWindow, TheQueueIsReadFromTopToBottomWhenItHasBeenScrolledBack) {
  launch();
  QList<QUrl> many;
  for (int number = 100; number < 160; ++number)
    many.append(clip(std::to_string(number) + ".mov"));
  letGo(many);
  turnUntilStatus("159.mov", JobStatus::done);
  const auto places = [this] {
    std::vector<double> all;
    for (const QQuickItem* child : item("queueList").property("contentItem").value<QQuickItem*>()->childItems())
      if (child->isVisible()) all.push_back(child->y());
    return all;
  };
  item("queueList").forceActiveFocus();
  for (const Qt::Key key : {Qt::Key_End, Qt::Key_PageUp, Qt::Key_PageUp, Qt::Key_PageUp, Qt::Key_PageDown}) {
    press(key);
    expectSoon([&] { return std::ranges::is_sorted(places()); }, true);
  }
}

TEST_F(AccessibleWindow, ARowSaysWhereItStands) {
  bring("DoneMarkdown");
  const auto position = [this](const char* clip) {
    return QAccessible::queryAccessibleInterface(&row(clip))->text(QAccessible::Description).toStdString();
  };
  EXPECT_EQ(position("harbour.mov"), "1 of 2");
  EXPECT_EQ(position("pier.mov"), "2 of 2");
  drop("c.mov");
  expectSoon([&] { return position("pier.mov"); }, HasSubstr(" of 3"));
}

TEST_F(AccessibleWindow, TitlesOfMenusAreEntriesOfTheMenuBar) {
  launch();
  std::vector<std::string> titles;
  QAccessibleInterface* bar = nullptr;
  const QAccessibleInterface* whole = QAccessible::queryAccessibleInterface(&window());
  for (int index = 0; index < whole->childCount(); ++index)
    if (whole->child(index)->role() == QAccessible::MenuBar) bar = whole->child(index);
  ASSERT_NE(bar, nullptr);
  for (int index = 0; index < bar->childCount(); ++index) {
    EXPECT_EQ(bar->child(index)->role(), QAccessible::MenuItem);
    titles.push_back(bar->child(index)->text(QAccessible::Name).toStdString());
  }
  EXPECT_THAT(titles, ElementsAre("File", "Edit", "View", "Job", "Help"));
  bar->child(1)->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  expectSoon([this] { return menuEntries(); }, testing::Contains("Find"));
}

/// What assistive technology is told of an item's role, which is not always the one that a view says.
TEST_F(AccessibleWindow, TitlesAreHeadingsAndChoicesAreOneAmongOthers) {
  bring("DoneMarkdown");
  const auto roleOf = [](QQuickItem& item) { return QAccessible::queryAccessibleInterface(&item)->role(); };
  EXPECT_EQ(roleOf(*item("sectionTitle").parentItem()), QAccessible::Heading);
  EXPECT_EQ(roleOf(*item("detailName").parentItem()), QAccessible::Heading);
  for (const char* choice : {"Queue", "Library", "Markdown", "JSON", "Source"})
    EXPECT_EQ(roleOf(labelled(choice)), QAccessible::RadioButton) << choice;
  const auto checked = [&](const char* choice) {
    return bool(QAccessible::queryAccessibleInterface(&labelled(choice))->state().checked);
  };
  EXPECT_TRUE(checked("Markdown"));
  click(labelled("JSON"));
  EXPECT_TRUE(checked("JSON"));
  EXPECT_FALSE(checked("Markdown"));
  click(labelled("JSON"));
  EXPECT_TRUE(checked("JSON")) << "it cannot be put out";
}

TEST_F(AccessibleWindow, ProgressIsToldInWords) {
  launch();
  clips.setProgress("a.mov", 0.5);
  clips.hold("a.mov", JobStatus::extracting);
  drop("a.mov", JobStatus::extracting);
  expectSoon(
      [&] {
        return QAccessible::queryAccessibleInterface(&item("rowProgress"))
            ->text(QAccessible::Description)
            .toStdString();
      },
      "20 percent");
}

TEST_F(AccessibleWindow, AssistiveTechnologyPressesWhatItIsTold) {
  bring("DoneMarkdown");
  const auto pressItem = [](QQuickItem& target) {
    QAccessible::queryAccessibleInterface(&target)->actionInterface()->doAction(
        QAccessibleActionInterface::pressAction());
  };
  pressItem(labelled("JSON"));
  expectSoon([&] { return text("resultText"); }, HasSubstr("\"schema_version\""));
  for (QQuickItem* row : items("queueRow"))
    if (row->property("fileName") == QStringLiteral("pier.mov")) pressItem(*row);
  expectSoon([&] { return text("detailName"); }, "pier.mov");
  pressItem(labelled("Library"));
  EXPECT_TRUE(shows("library"));
  pressItem(labelled("Queue"));
  pressItem(labelled("Clear Completed"));
  turnUntil([&] { return state().jobList().empty(); });
}

}  // namespace
}  // namespace tq

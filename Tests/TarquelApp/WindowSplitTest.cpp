// The line between the queue and the job beside it.

#include <QAccessible>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;

class WindowSplit : public testing::Test, protected test::WindowHarness {
 protected:
  double width() { return item("sidebar").width(); }

  void drag(int distance) {
    picture();
    QQuickItem& handle = item("splitHandle");
    const QPoint from = handle.mapToScene(QPointF(handle.width() / 2, 200)).toPoint();
    QTest::mousePress(&window(), Qt::LeftButton, Qt::NoModifier, from);
    QTest::mouseMove(&window(), from + QPoint(distance / 2, 0));
    QTest::mouseMove(&window(), from + QPoint(distance, 0));
    QTest::mouseRelease(&window(), Qt::LeftButton, Qt::NoModifier, from + QPoint(distance, 0));
  }
  void doubleClick() {
    picture();
    QQuickItem& handle = item("splitHandle");
    QTest::mouseDClick(&window(), Qt::LeftButton, Qt::NoModifier,
                       handle.mapToScene(QPointF(handle.width() / 2, 200)).toPoint());
  }
};

TEST_F(WindowSplit, TheMouseMovesItAndADoubleClickPutsItBack) {
  launch();
  const double before = width();
  drag(60);
  EXPECT_EQ(width(), before + 60);
  drag(-30);
  EXPECT_EQ(width(), before + 30);
  doubleClick();
  EXPECT_EQ(width(), before);
}

TEST_F(WindowSplit, TheArrowKeysMoveItWithinItsBounds) {
  launch();
  const double before = width();
  item("splitHandle").forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_Right);
  EXPECT_EQ(width(), before + 16);
  press(Qt::Key_Left);
  press(Qt::Key_Left);
  EXPECT_EQ(width(), before - 16);
  press(Qt::Key_Home);
  EXPECT_EQ(width(), 260);
  press(Qt::Key_Left);
  EXPECT_EQ(width(), 260);
  press(Qt::Key_End);
  EXPECT_EQ(width(), item("splitHandle").property("maximumValue").toDouble());
  press(Qt::Key_Right);
  EXPECT_GE(window().width() - width(), 480) << "there is room for the job";
}

TEST_F(WindowSplit, ItsPlaceIsRememberedAsLongAsTheWindowHasRoomForIt) {
  launch();
  drag(120);
  const double wide = width();
  launch();
  EXPECT_EQ(width(), wide);
  item("splitHandle").forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_End);
  const double widest = width();
  window().resize(980, 600);
  expectSoon([&] { return width(); }, testing::Lt(widest));
  EXPECT_GE(window().width() - width(), 480);
  window().resize(1180, 760);
  expectSoon([&] { return width(); }, widest);
  launch();
  EXPECT_EQ(width(), widest);
}

TEST_F(WindowSplit, ARememberedWidthThatMakesNoSenseIsKeptWithinBounds) {
  for (const char* content : {R"({"sidebarWidth": -5})", R"({"sidebarWidth": 9000000000000})", "no json"}) {
    engine.folder.write("home/tarquel/window-layout.json", content);
    launch();
    EXPECT_GE(width(), 260) << content;
    EXPECT_GE(window().width() - width(), 480) << content;
  }
}

TEST_F(WindowSplit, AssistiveTechnologyIsToldItsWidthAndMovesIt) {
  QAccessible::setActive(true);
  launch();
  QAccessibleInterface* handle = QAccessible::queryAccessibleInterface(&item("splitHandle"));
  ASSERT_TRUE(handle);
  EXPECT_EQ(handle->role(), QAccessible::Slider);
  EXPECT_EQ(handle->text(QAccessible::Name).toStdString(), "Width of the queue");
  ASSERT_TRUE(handle->valueInterface());
  EXPECT_EQ(handle->valueInterface()->currentValue().toDouble(), width());
  EXPECT_EQ(handle->valueInterface()->minimumValue().toDouble(), 260);
  handle->actionInterface()->doAction(QAccessibleActionInterface::increaseAction());
  EXPECT_EQ(handle->valueInterface()->currentValue().toDouble(), width());
  EXPECT_EQ(width(), 386);
  QAccessible::setActive(false);
}

TEST_F(WindowSplit, TheToolBarIsToldAsOne) {
  QAccessible::setActive(true);
  launch();
  QAccessibleInterface* bar = QAccessible::queryAccessibleInterface(&item("openButton"));
  while (bar && bar->role() != QAccessible::ToolBar)
    bar = bar->parent();
  ASSERT_TRUE(bar);
  EXPECT_EQ(bar->text(QAccessible::Name).toStdString(), "Tools");
  QAccessible::setActive(false);
}

}  // namespace
}  // namespace tq

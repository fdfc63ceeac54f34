// A text that is longer than what the view holds of it.

#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using test::turnUntil;
using enum JobStatus;

class SelectableTextTest : public testing::Test, protected test::WindowHarness {
 protected:
  /// Shows a raw response of that text, and gives the view's text item.
  QQuickItem& show(const std::string& response) {
    clips.answer("a.mov", response);
    launch();
    drop("a.mov", failed);
    state().setSelectedJobID(qtText(job("a.mov").id.text()));
    turnUntil([&] { return shows("rawResponseText"); });
    for (auto* area : item("rawResponseText").findChildren<QQuickItem*>())
      if (area->inherits("QQuickTextArea")) return *area;
    throw std::runtime_error("no text");
  }

  static std::string lines(int count) {
    std::string text;
    for (int line = 0; line < count; ++line)
      text += "line " + std::to_string(line) + "\n";
    return text;
  }
};

TEST_F(SelectableTextTest, AShortTextIsThereAtOnce) {
  QQuickItem& area = show("No JSON.\nNone.");
  EXPECT_EQ(area.property("text").toString().toStdString(), "No JSON.\nNone.");
}

TEST_F(SelectableTextTest, ALongTextGrowsAsItsReaderGoesOn) {
  const std::string response = lines(10'000);
  QQuickItem& area = show(response);
  const auto shown = [&] { return area.property("text").toString().toStdString(); };
  EXPECT_LT(shown().size(), 60'000U);
  auto* flickable = item("rawResponseText").property("contentItem").value<QQuickItem*>();
  turnUntil([&] {
    flickable->setProperty("contentY", flickable->property("contentHeight").toDouble() - flickable->height());
    return shown() == response;
  });
  EXPECT_EQ(shown(), response);
}

TEST_F(SelectableTextTest, ItsLinesGoOnToTheLowerEdge) {
  show(lines(200));
  const QImage seen = picture();
  const QQuickItem& view = item("rawResponseText");
  const QRect place = view.mapRectToScene(QRectF(0, 0, view.width(), view.height())).toRect();
  // Less than the margin that the first line keeps, and without the frame.
  const QRect lowest(place.left() + 12, place.bottom() - 10, 60, 8);
  const QRgb paper = seen.pixel(place.left() + 6, place.bottom() - 6);
  int inked = 0;
  for (int y = lowest.top(); y <= lowest.bottom(); ++y)
    for (int x = lowest.left(); x <= lowest.right(); ++x)
      if (seen.pixel(x, y) != paper) ++inked;
  EXPECT_GT(inked, 0);
}

TEST_F(SelectableTextTest, WhoSelectsAllAndCopiesGetsTheWholeText) {
  const std::string response = lines(10'000);
  show(response).forceActiveFocus(Qt::TabFocusReason);
  press(Qt::Key_A, Qt::ControlModifier);
  press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), response);
}

TEST_F(SelectableTextTest, AVeryLongTextArrivesAMomentLater) {
  const std::string response = lines(200'000);
  show(response);
  expectSoon([&] { return text("rawResponseText"); }, response);
}

TEST_F(SelectableTextTest, OneLongLineIsCopiedAsItIs) {
  std::string response;
  while (response.size() < 100'000)
    response += "word" + std::to_string(response.size()) + " ";
  QQuickItem& area = show(response);
  auto* flickable = item("rawResponseText").property("contentItem").value<QQuickItem*>();
  turnUntil([&] {
    flickable->setProperty("contentY", flickable->property("contentHeight").toDouble() - flickable->height());
    return area.property("length").toInt() > 40'000;
  });
  EXPECT_TRUE(area.property("text").toString().contains(u'\n'));
  area.forceActiveFocus(Qt::TabFocusReason);
  QMetaObject::invokeMethod(&area, "select", Q_ARG(int, 100), Q_ARG(int, 36'100));
  press(Qt::Key_C, Qt::ControlModifier);
  const std::string part = QGuiApplication::clipboard()->text().toStdString();
  EXPECT_GT(part.size(), 35'900U);
  EXPECT_EQ(part, response.substr(100, part.size()));
}

TEST_F(SelectableTextTest, NoCharacterIsCutInTwo) {
  std::string response;
  for (int count = 0; count < 20'001; ++count)
    response += "\xf0\x9f\x8e\xac";
  QQuickItem& area = show("x" + response);
  EXPECT_FALSE(area.property("text").toString().back().isHighSurrogate());
}

}  // namespace
}  // namespace tq

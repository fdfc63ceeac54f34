// The frames that a model was shown: their strip, and the sheet that shows one of them large.

#include <QQmlProperty>
#include <QtQml>
#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>

#include "TarquelApp/QtWarnings.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::ExpectedQtWarning;
using test::expectSoon;
using test::turnUntil;
using testing::Each;
using testing::ElementsAre;
using testing::SizeIs;
using enum JobStatus;

/// Of `Image` in QML.
constexpr int ready = 1;

const QString notDecoded = QStringLiteral("Failed to get image from provider: image://frames/");

class WindowFrames : public testing::Test, protected test::WindowHarness {
 protected:
  static ExtractedFrame frame(double seconds, Bytes jpeg) {
    return {.timecode = {seconds}, .jpegData = std::move(jpeg), .width = 64, .height = 36};
  }

  /// A finished clip of three frames: red, green and blue.
  void launchWithThree() {
    launch();
    clips.setFrames("a.mov", {frame(0, test::jpegOf(Qt::red)), frame(61.5, test::jpegOf(Qt::green)),
                              frame(3661.25, test::jpegOf(Qt::blue, {36, 64}))});
    drop("a.mov", done);
    turnUntil([&] { return items("frameThumbnail").size() == 3; });
  }

  /// The colour in the middle of an item as it is drawn.
  QColor colourOf(const QQuickItem& shown) {
    return picture().pixelColor(shown.mapToScene({shown.width() / 2, shown.height() / 2}).toPoint());
  }

  static bool isNear(const QColor& one, const QColor& other) {
    return std::abs(one.red() - other.red()) + std::abs(one.green() - other.green()) +
               std::abs(one.blue() - other.blue()) <
           60;
  }

  void openSheet(std::size_t index) {
    click(*items("frameThumbnail").at(index));
    turnUntil([&] { return shows("frameTitle"); });
  }

  void expectNoSheet() {
    expectSoon([&] { return shows("frameTitle"); }, false);
  }
};

TEST_F(WindowFrames, TheStripCountsThem) {
  launchWithThree();
  EXPECT_EQ(text("framesTitle"), "Frames sent to model (3)");
  EXPECT_EQ(text("framesIcon", "name"), "stack");
}

TEST_F(WindowFrames, AJobWithoutFramesHasNoStrip) {
  launch();
  clips.hold("a.mov", extracting);
  drop("a.mov", extracting);
  turnUntil([&] { return shows("waitingBlock"); });
  EXPECT_FALSE(shows("framesStrip"));
  clips.setFrames("a.mov", {});
  clips.hold("b.mov", calling);
  clips.setFrames("b.mov", {});
  drop("b.mov", calling);
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectSoon([&] { return text("detailName"); }, "b.mov");
  EXPECT_FALSE(shows("framesStrip"));
}

TEST_F(WindowFrames, TheyAreThereAsSoonAsTheModelIsAsked) {
  launch();
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  expectSoon([&] { return text("framesTitle"); }, "Frames sent to model (2)");
}

TEST_F(WindowFrames, AThumbnailHasItsSizeAndItsTimecodeBelow) {
  launchWithThree();
  EXPECT_THAT(texts("frameTimecode"), ElementsAre("00:00:00.000", "00:01:01.500", "01:01:01.250"));
  picture();
  for (const QQuickItem* shown : items("framePicture")) {
    EXPECT_EQ(shown->size(), QSizeF(140, 80));
    const QQuickItem& caption = inside(*shown->parentItem()->parentItem(), "frameTimecode");
    EXPECT_GE(caption.mapToScene({}).y(), shown->mapToScene({}).y() + 80);
  }
}

TEST_F(WindowFrames, TheHelpSaysWhatAClickDoes) {
  launchWithThree();
  QQuickItem& second = *items("frameThumbnail")[1];
  EXPECT_EQ(QQmlProperty(&second, QStringLiteral("ToolTip.text"), qmlContext(&second)).read().toString(),
            QStringLiteral("Click to view full size — 00:01:01.500"));
}

TEST_F(WindowFrames, TheStripFoldsAwayAndComesBack) {
  launchWithThree();
  EXPECT_TRUE(shows("framesList")) << "open at first";
  click("framesTitle");
  expectSoon([&] { return shows("frameThumbnail"); }, false);
  EXPECT_EQ(text("framesTitle"), "Frames sent to model (3)");
  click("framesTitle");
  expectSoon([&] { return items("frameThumbnail"); }, SizeIs(3));
}

TEST_F(WindowFrames, TheStripScrollsSideways) {
  launch();
  std::vector<ExtractedFrame> many(30, frame(1, test::jpegOf(Qt::red)));
  clips.setFrames("a.mov", many);
  drop("a.mov", done);
  expectSoon([&] { return text("framesTitle"); }, "Frames sent to model (30)");
  const QQuickItem& list = item("framesList");
  expectSoon([&] { return list.property("contentWidth").toDouble(); }, testing::Gt(30 * 140));
  EXPECT_LT(list.width(), 1000);
  EXPECT_LE(list.property("contentHeight").toDouble(), list.height());
}

TEST_F(WindowFrames, AClickOpensTheSheet) {
  launchWithThree();
  openSheet(1);
  EXPECT_EQ(text("frameTitle"), "Frame 2 of 3 — 00:01:01.500");
  EXPECT_EQ(text("doneButton"), "Done");
  expectSoon([&] { return item("previewPicture").property("status").toInt(); }, ready);
  EXPECT_TRUE(isNear(colourOf(item("previewPicture")), Qt::green));
  EXPECT_FALSE(shows("brokenPreview"));
}

TEST_F(WindowFrames, TheSheetIsLargeAlsoInTheSmallestWindow) {
  launchWithThree();
  window().resize(window().minimumSize());
  openSheet(0);
  const QQuickItem& sheet = *item("frameTitle").parentItem()->parentItem()->parentItem()->parentItem();
  EXPECT_GE(sheet.width(), 640);
  EXPECT_GE(sheet.height(), 480);
}

TEST_F(WindowFrames, ThePictureIsFittedWhole) {
  launchWithThree();
  openSheet(2);
  const QQuickItem& shown = item("previewPicture");
  expectSoon([&] { return shown.property("status").toInt(); }, ready);
  EXPECT_NEAR(shown.property("paintedWidth").toDouble() / shown.property("paintedHeight").toDouble(), 36.0 / 64, 0.02);
  EXPECT_NEAR(shown.property("paintedHeight").toDouble(), shown.height(), 1);
}

TEST_F(WindowFrames, DoneClosesTheSheet) {
  launchWithThree();
  openSheet(0);
  click("doneButton");
  expectNoSheet();
}

TEST_F(WindowFrames, EscapeClosesTheSheet) {
  launchWithThree();
  openSheet(0);
  press(Qt::Key_Escape);
  expectNoSheet();
}

TEST_F(WindowFrames, ReturnClosesTheSheet) {
  launchWithThree();
  openSheet(0);
  press(Qt::Key_Return);
  expectNoSheet();
}

TEST_F(WindowFrames, TheArrowKeysGoFromFrameToFrame) {
  launchWithThree();
  openSheet(0);
  press(Qt::Key_Left);
  EXPECT_EQ(text("frameTitle"), "Frame 1 of 3 — 00:00:00.000") << "there is none before";
  press(Qt::Key_Right);
  press(Qt::Key_Right);
  EXPECT_EQ(text("frameTitle"), "Frame 3 of 3 — 01:01:01.250");
  press(Qt::Key_Right);
  EXPECT_EQ(text("frameTitle"), "Frame 3 of 3 — 01:01:01.250") << "there is none behind";
  press(Qt::Key_Left);
  EXPECT_EQ(text("frameTitle"), "Frame 2 of 3 — 00:01:01.500");
}

/// A JPEG that says of itself that it has so many pixels.
Bytes claiming(int width, int height) {
  Bytes jpeg = test::jpegOf(Qt::red);
  const Bytes startOfFrame{0xff, 0xc0};
  const auto found = std::ranges::search(jpeg, startOfFrame).begin();
  const std::array<int, 4> sides{height >> 8, height & 0xff, width >> 8, width & 0xff};
  std::ranges::transform(sides, found + 5, [](int byte) { return static_cast<Bytes::value_type>(byte); });
  return jpeg;
}

Bytes beginningOf(Bytes jpeg, std::size_t length) {
  jpeg.resize(length);
  return jpeg;
}

struct BrokenFrame {
  const char* name;
  Bytes jpeg;
  const char* complaint;  ///< of the decoder; empty: it does not come to that
};

class WindowBrokenFrame : public WindowFrames, public testing::WithParamInterface<BrokenFrame> {
 protected:
  int statusOf(std::size_t index) {
    return inside(*items("frameThumbnail").at(index), "framePicture").property("status").toInt();
  }
};

TEST_P(WindowBrokenFrame, IsAWarningInTheStripAndInTheSheet) {
  const ExpectedQtWarning failed(notDecoded);
  std::optional<ExpectedQtWarning> complaint;
  if (*GetParam().complaint) complaint.emplace(QString::fromLatin1(GetParam().complaint));
  launch();
  clips.setFrames("a.mov", {frame(0, test::jpegOf(Qt::red)), frame(1, GetParam().jpeg)});
  drop("a.mov", done);
  expectSoon([&] { return items("brokenFrame"); }, SizeIs(1));
  EXPECT_EQ(text("brokenFrame", "name"), "warning");
  EXPECT_TRUE(items("frameThumbnail").at(1)->isAncestorOf(&item("brokenFrame")));
  expectSoon([&] { return statusOf(0); }, ready);
  EXPECT_THAT(texts("frameTimecode"), ElementsAre("00:00:00.000", "00:00:01.000"));

  openSheet(1);
  expectSoon([&] { return shows("brokenPreview"); }, true);
  EXPECT_EQ(text("brokenPreview", "name"), "warning");
  EXPECT_EQ(text("brokenPreviewText"), "Could not decode JPEG");
  EXPECT_EQ(text("frameTitle"), "Frame 2 of 2 — 00:00:01.000");
  press(Qt::Key_Left);
  expectSoon([&] { return item("previewPicture").property("status").toInt(); }, ready);
  EXPECT_FALSE(shows("brokenPreview"));
  EXPECT_FALSE(shows("brokenPreviewText"));
}

INSTANTIATE_TEST_SUITE_P(Window, WindowBrokenFrame,
                         testing::ValuesIn(std::vector<BrokenFrame>{
                             {"Empty", {}, "Not a JPEG file"},
                             {"Text", {'n', 'o', ' ', 'J', 'P', 'E', 'G'}, "Not a JPEG file"},
                             {"OneByte", {0xff}, "Not a JPEG file"},
                             {"CutInItsHeader", beginningOf(test::jpegOf(Qt::red), 60), "JPEG data"},
                             {"WithoutPixels", claiming(0, 0), "Empty JPEG image"},
                             {"LargerThanAnyPicture", claiming(65'500, 65'500), ""},
                             {"WiderThanAnyPicture", claiming(65'500, 1), ""},
                         }),
                         [](const auto& frame) { return std::string(frame.param.name); });

TEST_F(WindowFrames, OfOneThatIsCutInItsPixelsThereIsWhatThereIs) {
  const ExpectedQtWarning cut(QStringLiteral("premature end of data"));
  launch();
  const Bytes whole = test::jpegOf(Qt::red, {640, 360});
  clips.setFrames("a.mov", {frame(0, beginningOf(whole, whole.size() - 400))});
  drop("a.mov", done);
  turnUntil([&] { return shows("frameThumbnail"); });
  openSheet(0);
  expectSoon([&] { return item("previewPicture").property("status").toInt(); }, ready);
  EXPECT_FALSE(shows("brokenFrame"));
}

TEST_F(WindowFrames, TheSheetClosesWhenItsFramesGo) {
  launchWithThree();
  openSheet(1);
  drop("b.mov", done);
  EXPECT_TRUE(shows("frameTitle")) << "another job is none of its business";
  state().setSelectedJobID(qtText(job("b.mov").id.text()));
  expectNoSheet();
}

}  // namespace
}  // namespace tq

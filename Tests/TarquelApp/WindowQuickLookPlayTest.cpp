// The clip of a preview, playing where windows are drawn in software.

#include <QQuickItem>
#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ClipMaker.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::cornersByBrightness;
using test::expectSoon;
using test::h264;
using test::makeVideo;
using test::numberShown;
using test::turnUntil;

class WindowQuickLookPlay : public testing::Test, protected test::WindowHarness {
 protected:
  void lookAt(const std::filesystem::path& clip, const std::string& name = "clip.mp4") {
    launch();
    letGo({qtFileURL(engine.folder.write(name, test::contentOf(clip)))});
    turnUntilCount(1);
    turnUntil([&] { return items("queueRow").size() == 1; });
    click("queueRow");
    press(Qt::Key_Space);
    turnUntil([&] { return otherWindow("quickLook") != nullptr; });
  }

  QQuickItem* find(const char* name) { return otherWindow("quickLook")->findChild<QQuickItem*>(QLatin1String(name)); }

  QQuickItem& part(const char* name) {
    if (QQuickItem* found = find(name)) return *found;
    throw std::runtime_error(std::string("the preview has no ") + name);
  }

  bool plays() { return find("playedPicture") && part("playedPicture").isVisible(); }

  void turnUntilItPlays() {
    turnUntil([&] { return plays(); });
  }

  /// What is seen of the clip, which has that shape.
  Image seen(double width, double height) {
    const QQuickItem& stage = part("playedPicture");
    const QSizeF size = QSizeF(width, height).scaled(stage.size(), Qt::KeepAspectRatio);
    const QPointF corner = stage.mapToScene({(stage.width() - size.width()) / 2, (stage.height() - size.height()) / 2});
    const QImage picture = otherWindow("quickLook")
                               ->grabWindow()
                               .copy(QRectF(corner, size).toAlignedRect())
                               .convertToFormat(QImage::Format_RGB888);
    Bytes pixels;
    for (int row = 0; row < picture.height(); ++row)
      pixels.insert(pixels.end(), picture.constScanLine(row), picture.constScanLine(row) + 3 * picture.width());
    return Image::fromRGB(picture.width(), picture.height(), pixels);
  }
};

TEST_F(WindowQuickLookPlay, ThePicturesOfTheClipAreSeenOneAfterTheOther) {
  lookAt(makeVideo(test::numberedPicture(3, 25), h264(), "mp4"));
  turnUntilItPlays();
  EXPECT_FALSE(part("poster").isVisible());
  std::vector<int> numbers;
  turnUntil([&] {
    if (const int number = numberShown(seen(192, 32)); numbers.empty() || number != numbers.back())
      numbers.push_back(number);
    return numbers.size() >= 4;
  });
  EXPECT_TRUE(std::ranges::is_sorted(numbers));
  EXPECT_LT(numbers.back(), 75);
}

TEST_F(WindowQuickLookPlay, AfterTheLastPictureThePosterIsBack) {
  lookAt(makeVideo(test::movingPicture(1), h264(), "mp4"));
  turnUntilItPlays();
  turnUntil([&] { return !plays(); });
  EXPECT_TRUE(part("poster").isVisible());
}

TEST_F(WindowQuickLookPlay, APausedPictureFollowsTheSizeOfTheWindow) {
  lookAt(makeVideo(test::numberedPicture(60, 5), h264(), "mp4"));
  turnUntilItPlays();
  QQuickWindow& preview = *otherWindow("quickLook");
  QTest::keyClick(&preview, Qt::Key_Return);
  turnUntil([&] { return labelled("Play", *preview.contentItem()).isVisible(); });
  const int number = numberShown(seen(192, 32));
  for (const QSize& size : {QSize(1200, 500), QSize(400, 700)}) {
    preview.resize(size);
    expectSoon([&] { return numberShown(seen(192, 32)); }, number);
  }
}

TEST_F(WindowQuickLookPlay, AClipThatLiesOnItsSideIsUpright) {
  const Bytes stored = test::readClip(makeVideo(test::fourQuarters(20), h264(), "mp4"));
  lookAt(test::writeClip(engine.folder / "stored.mp4", test::withMatrix(stored, test::rotation(90))));
  turnUntilItPlays();
  EXPECT_EQ(cornersByBrightness(seen(120, 160)), "tr br tl bl");
}

TEST_F(WindowQuickLookPlay, ItIsClosedWhileItPlaysAndOpenedAgain) {
  lookAt(makeVideo(test::numberedPicture(3, 25), h264(), "mp4"), "blanks and ümlauts.mp4");
  for (int round = 0; round < 5; ++round) {
    turnUntilItPlays();
    QTest::keyClick(otherWindow("quickLook"), Qt::Key_Escape);
    turnUntil([&] { return otherWindow("quickLook") == nullptr; });
    window().requestActivate();
    turnUntil([&] { return window().isActive(); });
    press(Qt::Key_Space);
    turnUntil([&] { return otherWindow("quickLook") != nullptr; });
  }
}

TEST_F(WindowQuickLookPlay, QuittingWhileItPlaysIsSafe) {
  lookAt(makeVideo(test::numberedPicture(3, 25), h264(), "mp4"));
  turnUntilItPlays();
  quit();
}

}  // namespace
}  // namespace tq

#include <QImage>
#include <array>
#include <gtest/gtest.h>
#include <memory>
#include <semaphore>
#include <string>

#include "TarquelApp/Preview/PictureWorkshop.hpp"

namespace tq {
namespace {

/// Four quarters of 40 x 30, stored as red, green, blue and white in reading order.
PlayedPicture quarters(int clockwise = 0, bool isMirrored = false) {
  const auto image = std::make_shared<QImage>(80, 60, QImage::Format_RGB32);
  for (int row = 0; row < 60; ++row)
    for (int column = 0; column < 80; ++column)
      image->setPixel(column, row,
                      row < 30 ? (column < 40 ? 0xffff0000 : 0xff00ff00) : (column < 40 ? 0xff0000ff : 0xffffffff));
  return {.picture = {.format = "bgr0",
                      .width = 80,
                      .height = 60,
                      .planes = {image->constBits()},
                      .strides = {static_cast<int>(image->bytesPerLine())}},
          .clockwise = clockwise,
          .isMirrored = isMirrored,
          .owner = image};
}

std::string cornersOf(const QImage& image) {
  const auto nameOf = [](QRgb pixel) {
    const bool red = qRed(pixel) > 128, green = qGreen(pixel) > 128, blue = qBlue(pixel) > 128;
    return red && green && blue ? "white" : red ? "red" : green ? "green" : blue ? "blue" : "black";
  };
  const int right = image.width() - 2, bottom = image.height() - 2;
  return std::string(nameOf(image.pixel(1, 1))) + " " + nameOf(image.pixel(right, 1)) + " " +
         nameOf(image.pixel(1, bottom)) + " " + nameOf(image.pixel(right, bottom));
}

class PictureWorkshopTest : public testing::Test {
 protected:
  PictureWorkshop::Ready next() {
    arrivals.acquire();
    auto ready = workshop.take();
    EXPECT_TRUE(ready);
    return ready.value_or(PictureWorkshop::Ready{});
  }

  PictureWorkshop::Ready made(PlayedPicture picture) {
    workshop.show(std::move(picture));
    return next();
  }

  std::counting_semaphore<> arrivals{0};
  PictureWorkshop workshop{[this] { arrivals.release(); }};
};

TEST_F(PictureWorkshopTest, MakesPicturesAsLargeAsTheyFit) {
  struct Fit {
    QSizeF stage;
    QSize size;
  };
  for (const Fit& fit : {Fit{{200, 200}, {200, 150}},
                         {{400, 60}, {80, 60}},
                         {{80, 60}, {80, 60}},
                         {{41.5, 300}, {42, 31}},
                         {{1, 300}, {1, 1}}}) {
    std::binary_semaphore arrived{0};
    PictureWorkshop one([&] { arrived.release(); });
    one.setStage(fit.stage);
    one.show(quarters());
    arrived.acquire();
    const auto ready = one.take().value();
    EXPECT_EQ(ready.image.size(), fit.size);
    EXPECT_EQ(ready.natural, QSize(80, 60));
  }
}

TEST_F(PictureWorkshopTest, MakesThemUpright) {
  workshop.setStage({120, 120});
  struct Turn {
    int clockwise;
    bool isMirrored;
    QSize size;
    std::string corners;
  };
  for (const Turn& turn : {Turn{0, false, {120, 90}, "red green blue white"},
                           {90, false, {90, 120}, "blue red white green"},
                           {180, false, {120, 90}, "white blue green red"},
                           {270, false, {90, 120}, "green white red blue"},
                           {0, true, {120, 90}, "green red white blue"},
                           {90, true, {90, 120}, "red blue green white"}}) {
    const auto ready = made(quarters(turn.clockwise, turn.isMirrored));
    EXPECT_EQ(ready.image.size(), turn.size) << turn.clockwise;
    EXPECT_EQ(cornersOf(ready.image), turn.corners) << turn.clockwise << (turn.isMirrored ? " mirrored" : "");
  }
}

TEST_F(PictureWorkshopTest, TurnsWhatDoesNotSayHowItLies) {
  workshop.setStage({120, 120});
  EXPECT_EQ(cornersOf(made(quarters()).image), "red green blue white");
  workshop.setTurn(90);
  EXPECT_EQ(cornersOf(next().image), "blue red white green");
  EXPECT_EQ(cornersOf(made(quarters(180)).image), "white blue green red");
}

TEST_F(PictureWorkshopTest, WhatNobodyCameToTakeIsLeftOut) {
  workshop.setStage({80, 60});
  workshop.show(quarters());
  arrivals.acquire();
  std::array<std::weak_ptr<const void>, 5> owners;
  for (auto& owner : owners) {
    PlayedPicture picture = quarters(180);
    owner = picture.owner;
    workshop.show(std::move(picture));
  }
  for (std::size_t passedOver = 0; passedOver + 1 < owners.size(); ++passedOver)
    EXPECT_TRUE(owners.at(passedOver).expired());
  EXPECT_FALSE(arrivals.try_acquire());
  EXPECT_EQ(cornersOf(workshop.take()->image), "red green blue white");
  EXPECT_EQ(cornersOf(next().image), "white blue green red");
}

TEST_F(PictureWorkshopTest, ThePresentPictureIsMadeAnewForAnotherSize) {
  workshop.setStage({80, 60});
  made(quarters());
  workshop.setStage({160, 120});
  EXPECT_EQ(next().image.size(), QSize(160, 120));
  workshop.setStage({160, 120});
  EXPECT_FALSE(workshop.take());
}

TEST_F(PictureWorkshopTest, NothingIsMadeBeforeThereIsAStage) {
  workshop.show(quarters());
  EXPECT_FALSE(workshop.take());
  workshop.setStage({80, 60});
  EXPECT_EQ(next().image.size(), QSize(80, 60));
}

TEST_F(PictureWorkshopTest, NoPictureAndOneThatCannotBeDrawnAreNothingToBeShown) {
  workshop.setStage({80, 60});
  EXPECT_TRUE(made({}).image.isNull());
  PlayedPicture unknown = quarters();
  unknown.picture.format = "no such format";
  EXPECT_TRUE(made(unknown).image.isNull());
  EXPECT_FALSE(made(quarters()).image.isNull());
}

TEST_F(PictureWorkshopTest, OnceClosedItTakesPicturesAndMakesNone) {
  workshop.setStage({80, 60});
  workshop.close();
  workshop.show(quarters());
  workshop.setStage({10, 10});
  EXPECT_FALSE(workshop.take());
  EXPECT_FALSE(arrivals.try_acquire());
}

}  // namespace
}  // namespace tq

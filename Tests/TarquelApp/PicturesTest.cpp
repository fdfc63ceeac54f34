// What the views draw: frames and icons.

#include <QDir>
#include <QImage>
#include <QPixmap>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

#include "TarquelApp/FrameShelf.hpp"
#include "TarquelApp/Pictures/FramePictures.hpp"
#include "TarquelApp/Pictures/IconPictures.hpp"
#include "TarquelApp/ScriptedClips.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

FrameShelf::Frames framesOf(const std::vector<Bytes>& pictures) {
  std::vector<ExtractedFrame> frames;
  for (const Bytes& jpeg : pictures)
    frames.push_back({.timecode = {}, .jpegData = jpeg, .width = 64, .height = 36});
  return FrameShelf::Frames(std::move(frames));
}

TEST(FrameShelfTest, GivesWhatLiesThereUnderItsNumberOnly) {
  FrameShelf shelf;
  EXPECT_FALSE(shelf.find(0));
  const auto first = shelf.put(framesOf({{}, {}}));
  ASSERT_TRUE(shelf.find(first));
  EXPECT_EQ(shelf.find(first)->size(), 2U);
  const auto second = shelf.put(framesOf({{}}));
  EXPECT_NE(first, second);
  EXPECT_FALSE(shelf.find(first));
  EXPECT_EQ(shelf.find(second)->size(), 1U);
}

TEST(FrameShelfTest, WhatSomebodyLooksAtStaysWhole) {
  FrameShelf shelf;
  const auto frames = shelf.find(shelf.put(framesOf({{1, 2, 3}})));
  shelf.put({});
  EXPECT_EQ(frames->front().jpegData, (Bytes{1, 2, 3}));
}

class FramePicturesTest : public testing::Test {
 protected:
  QImage picture(const QString& id, QSize size = {}) { return pictures.requestImage(id, nullptr, size); }

  QString put(const Bytes& jpeg) { return QStringLiteral("%1/0").arg(shelf.put(framesOf({jpeg}))); }

  FrameShelf shelf;
  FramePictures pictures{shelf};
};

TEST_F(FramePicturesTest, WithoutASizeAPictureIsWhole) {
  const QString id = put(test::jpegOf(Qt::red, {64, 36}));
  QSize size;
  EXPECT_EQ(pictures.requestImage(id, &size, {}).size(), QSize(64, 36));
  EXPECT_EQ(size, QSize(64, 36));
}

TEST_F(FramePicturesTest, AThumbnailCoversItsPlaceAndHasRoundCorners) {
  const QImage thumbnail = picture(put(test::jpegOf(Qt::red, {360, 640})), {140, 80});
  EXPECT_EQ(thumbnail.size(), QSize(140, 80));
  EXPECT_EQ(thumbnail.pixelColor(0, 0).alpha(), 0);
  EXPECT_EQ(thumbnail.pixelColor(139, 79).alpha(), 0);
  EXPECT_GT(thumbnail.pixelColor(70, 40).red(), 200);
  EXPECT_EQ(thumbnail.pixelColor(70, 0).alpha(), 255) << "the whole place is covered";
  EXPECT_EQ(thumbnail.pixelColor(0, 40).alpha(), 255);
}

TEST_F(FramePicturesTest, WhatIsNotThereIsEmpty) {
  const QString id = put(test::jpegOf(Qt::red));
  const QString number = id.split(QLatin1Char('/')).front();
  for (const QString& other :
       {number + QStringLiteral("/1"), QStringLiteral("99/0"), QString(), QStringLiteral("/"), QStringLiteral("a/b/c")})
    EXPECT_TRUE(picture(other).isNull()) << textOf(other);
}

TEST(IconPicturesTest, AnUnknownNameIsEmpty) {
  IconPictures icons;
  for (const QString& id : {QStringLiteral("nonsense/ff0000"), QStringLiteral("clock"), QString(),
                            QStringLiteral("../Views/Main.qml/ff0000")})
    EXPECT_TRUE(icons.requestPixmap(id, nullptr, {16, 16}).isNull()) << textOf(id);
}

}  // namespace
}  // namespace tq

// What the views draw: frames and icons.

#include <QDir>
#include <QImage>
#include <QPixmap>
#include <QQuickTextureFactory>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <set>

#include "Support/ClipMaker.hpp"
#include "TarquelApp/FrameShelf.hpp"
#include "TarquelApp/Pictures/ClipPosters.hpp"
#include "TarquelApp/Pictures/FramePictures.hpp"
#include "TarquelApp/Pictures/IconPictures.hpp"
#include "TarquelApp/ScriptedClips.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;

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
  EXPECT_TRUE(picture(id.split(QLatin1Char('/')).front() + QStringLiteral("/1")).isNull());
}

TEST_F(FramePicturesTest, WhatHasGoneCannotBeSeenAndIsNoFailure) {
  const QString before = put(test::jpegOf(Qt::red));
  put(test::jpegOf(Qt::green));
  for (const QString& gone : {before, QStringLiteral("99/0"), QString(), QStringLiteral("a/b/c")}) {
    const QImage nothing = picture(gone, {140, 80});
    EXPECT_EQ(nothing.size(), QSize(1, 1)) << textOf(gone);
    EXPECT_EQ(nothing.pixelColor(0, 0).alpha(), 0) << textOf(gone);
  }
}

class ClipPostersTest : public testing::Test {
 protected:
  /// The response to a request for the picture at an encoded address, once it is finished.
  static std::unique_ptr<QQuickImageResponse> responseTo(const QByteArray& address, QSize size = {}) {
    ClipPosters posters;  // whose end waits for what it was asked
    return std::unique_ptr<QQuickImageResponse>(
        posters.requestImageResponse(QString::fromLatin1(address.toPercentEncoding()), size));
  }

  /// The picture of a clip; null when there is none, which the response then says in words.
  static QImage posterOf(const fs::path& clip, QSize size = {}) {
    const auto response = responseTo(qtFileURL(clip).toEncoded(), size);
    const std::unique_ptr<QQuickTextureFactory> texture(response->textureFactory());
    const QImage image = texture ? texture->image() : QImage();
    EXPECT_EQ(response->errorString().isEmpty(), !image.isNull());
    return image;
  }

  fs::path video(const std::string& name) const {
    return folder.write(name, test::contentOf(test::makeVideo(test::movingPicture(1), test::h264(), "mp4")));
  }

  test::TemporaryFolder folder;
};

TEST_F(ClipPostersTest, AClipOfAnyNameHasOne) {
  for (const char* name : {"a.mp4", "a b.mp4", "100% #1?.mp4", "%41.mp4", "ä.mp4", "\xff.mp4", "a&b+c;d=e.mp4"})
    EXPECT_FALSE(posterOf(video(name)).isNull()) << name;
}

TEST_F(ClipPostersTest, ItFitsIntoTheSizeThatIsAskedFor) {
  const QImage whole = posterOf(video("a.mp4"));
  const QImage small = posterOf(folder / "a.mp4", {64, 10});
  EXPECT_EQ(std::max(small.width(), small.height()), 64) << "in its longer direction";
  EXPECT_GT(whole.width(), small.width());
}

TEST_F(ClipPostersTest, WhatCannotBeReadHasNone) {
  const fs::path clip = video("a.mp4");
  const std::string content = test::contentOf(clip);
  fs::create_directories(folder / "folder.mp4");
  for (const fs::path& other :
       {folder / "missing.mp4", folder.write("empty.mp4", ""), folder.write("text.mp4", "no clip"),
        folder.write("beginning.mp4", content.substr(0, 100)), folder / "folder.mp4", fs::path("/dev/null")})
    EXPECT_TRUE(posterOf(other).isNull()) << other;
}

TEST_F(ClipPostersTest, WhatIsNoLocalFileHasNone) {
  for (const char* address : {"http://localhost/a.mp4", "", "a.mp4"}) {
    EXPECT_FALSE(responseTo(address)->errorString().isEmpty()) << address;
  }
}

TEST_F(ClipPostersTest, ThoseThatNobodyWaitsForAnyMoreAreNotMade) {
  const QString address = QString::fromLatin1(qtFileURL(video("a.mp4")).toEncoded().toPercentEncoding());
  std::vector<std::unique_ptr<QQuickImageResponse>> responses;
  {
    ClipPosters posters;
    for (int time = 0; time < 3; ++time)
      responses.emplace_back(posters.requestImageResponse(address, {}))->cancel();
  }
  EXPECT_FALSE(responses.back()->errorString().isEmpty());
}

TEST(IconPicturesTest, AnUnknownNameIsEmpty) {
  IconPictures icons;
  for (const QString& id : {QStringLiteral("nonsense/ff0000"), QStringLiteral("clock"), QString(),
                            QStringLiteral("../Views/Main.qml/ff0000")})
    EXPECT_TRUE(icons.requestPixmap(id, nullptr, {16, 16}).isNull()) << textOf(id);
}

}  // namespace
}  // namespace tq

#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TarquelApp/Preview/PlayableFile.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {
namespace {

class PlayableFileTest : public testing::Test {
 protected:
  /// What stands under the address, which has nothing in it that is percent-encoded.
  static QByteArray behind(const PlayableFile& clip) {
    EXPECT_FALSE(clip.address().toEncoded().contains('%')) << clip.address().toEncoded().toStdString();
    QFile file(clip.address().toLocalFile());
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }

  test::TemporaryFolder folder;
  PlayableFile clip;
};

TEST_F(PlayableFileTest, APlainNameIsItsOwnAddress) {
  const QUrl file = qtFileURL(folder.write("a.mp4", "plain"));
  clip.setFile(file);
  EXPECT_EQ(clip.address(), file);
}

TEST_F(PlayableFileTest, AnyOtherNameHasAnAddressWithoutIt) {
  for (const char* name : {"Harbour at dusk.mp4", "מקטע.mp4", "100% #1?.mp4"}) {
    clip.setFile(qtFileURL(folder.write(name, name)));
    EXPECT_EQ(behind(clip), QByteArray(name));
  }
}

TEST_F(PlayableFileTest, WhatCannotBeOpenedHasNoAddress) {
  clip.setFile(qtFileURL(folder / "not there now.mp4"));
  EXPECT_TRUE(clip.address().isEmpty());
  std::filesystem::create_directories(folder / "a folder.mp4");
  clip.setFile(qtFileURL(folder / "a folder.mp4"));
  EXPECT_TRUE(clip.address().isEmpty());
}

}  // namespace
}  // namespace tq

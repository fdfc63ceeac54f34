#include <gtest/gtest.h>

#include "Support/ClipMaker.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TarquelApp/Preview/ClipOrientation.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::turnUntil;

class ClipOrientationTest : public testing::Test {
 protected:
  QUrl turned(const std::string& name, int degrees) const {
    const Bytes stored = test::readClip(test::makeVideo(test::fourQuarters(), test::h264(), "mp4"));
    return qtFileURL(test::writeClip(folder / name, test::withMatrix(stored, test::rotation(degrees))));
  }

  int known() {
    turnUntil([&] { return orientation.isKnown(); });
    return orientation.clockwise();
  }

  test::TemporaryFolder folder;
  ClipOrientation orientation;
};

TEST_F(ClipOrientationTest, IsThatOfTheClip) {
  EXPECT_FALSE(orientation.isKnown());
  for (const int degrees : {90, 270, 180, 0}) {
    orientation.setFile(turned("a " + std::to_string(degrees) + ".mp4", degrees));
    EXPECT_FALSE(orientation.isKnown());
    EXPECT_EQ(known(), degrees);
  }
}

TEST_F(ClipOrientationTest, WhatCannotBeReadIsUpright) {
  for (const QUrl& file :
       {qtFileURL(folder.write("no clip.mp4", "text")), qtFileURL(folder / "gone.mp4"), qtFileURL(folder.path())}) {
    orientation.setFile(file);
    EXPECT_EQ(known(), 0);
  }
}

TEST_F(ClipOrientationTest, TheLatestClipCounts) {
  const QUrl first = turned("first.mp4", 90), second = turned("second.mp4", 180);
  for (int round = 0; round < 20; ++round) {
    orientation.setFile(first);
    orientation.setFile(second);
    EXPECT_EQ(known(), 180);
  }
}

}  // namespace
}  // namespace tq

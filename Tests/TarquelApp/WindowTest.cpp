#include <QTest>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/ClipMaker.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::turnUntil;
using test::WindowHarness;
using enum JobStatus;

TEST(WindowTest, AnEmptyQueueAsksForClips) {
  WindowHarness harness;
  harness.launch();
  EXPECT_EQ(harness.text("chooseButton"), "Choose Files…");
  EXPECT_EQ(harness.window().title().toStdString(), "tarquel");
}

TEST(WindowTest, ADropIsDescribedAndShown) {
  WindowHarness harness;
  harness.launch();
  harness.letGo({harness.clip("clips/a.mov")});
  harness.turnUntilStatus(0, done);
  turnUntil([&] { return harness.text("resultText").starts_with("# a\n"); });
  EXPECT_TRUE(std::filesystem::exists(harness.engine.folder / "clips/a.description.md"));
}

/// Nothing is scripted but the clip.
TEST(WindowTest, ARealClipGoesFromItsDropToItsSidecars) {
  WindowHarness harness;
  harness.engine.stages.extractFrames = standardJobStages(nullptr).extractFrames;
  harness.engine.settings.providerId = "mock";
  harness.save(harness.engine.settings);
  harness.launch();
  const std::filesystem::path clip = harness.engine.folder.path() / "real.mp4";
  std::filesystem::copy_file(test::makeVideo(test::movingPicture(3), test::h264({}), "mp4"), clip);
  harness.letGo({qtFileURL(clip)});
  harness.turnUntilStatus(0, done);
  turnUntil([&] { return harness.text("resultText").starts_with("# real\n"); });
  EXPECT_TRUE(harness.shows("frameThumbnail"));
  for (const char* output : {"real.description.md", "real.description.json", "real.description.jpg"})
    EXPECT_TRUE(std::filesystem::exists(harness.engine.folder / output)) << output;
}

TEST(WindowTest, TheSpaceBarOpensAndClosesTheLookAtAClip) {
  WindowHarness harness;
  harness.launch();
  const std::filesystem::path clip = harness.engine.folder.path() / "real.mp4";
  std::filesystem::copy_file(test::makeVideo(test::movingPicture(3), test::h264({}), "mp4"), clip);
  harness.letGo({qtFileURL(clip)});
  harness.turnUntilStatus(0, done);
  harness.picture();
  harness.item("queueList").forceActiveFocus();
  harness.press(Qt::Key_Space);
  turnUntil([&] { return harness.otherWindow("quickLook") != nullptr; });
  QQuickWindow& preview = *harness.otherWindow("quickLook");
  EXPECT_EQ(preview.title().toStdString(), "real.mp4");
  constexpr int ready = 1;  // Image.Ready
  turnUntil(
      [&] { return preview.findChild<QQuickItem*>(QStringLiteral("poster"))->property("status").toInt() == ready; });
  QTest::keyClick(&preview, Qt::Key_Space);
  turnUntil([&] { return harness.otherWindow("quickLook") == nullptr; });
}

}  // namespace
}  // namespace tq

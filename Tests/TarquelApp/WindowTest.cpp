#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

}  // namespace
}  // namespace tq

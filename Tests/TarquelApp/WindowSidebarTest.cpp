// The sidebar: the queue in its sections.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/Turning.hpp"
#include "TarquelApp/WindowHarness.hpp"

namespace tq {
namespace {

using test::expectSoon;
using testing::ElementsAre;
using testing::IsEmpty;
using enum JobStatus;

class WindowSidebar : public testing::Test, protected test::WindowHarness {
 protected:
  /// Titles and names of clips as they stand below each other.
  std::vector<std::string> lines() {
    std::vector<QQuickItem*> found = items("rowName");
    const auto titles = items("sectionTitle");
    found.insert(found.end(), titles.begin(), titles.end());
    std::ranges::sort(found, {}, [](const QQuickItem* item) { return item->mapToScene({}).y(); });
    std::vector<std::string> texts;
    for (const QQuickItem* item : found)
      texts.push_back((item->objectName() == QLatin1String("sectionTitle") ? "# " : "") +
                      item->property("text").toString().toStdString());
    return texts;
  }
};

TEST_F(WindowSidebar, AnEmptyQueueHasNoSections) {
  launch();
  EXPECT_THAT(lines(), IsEmpty());
}

TEST_F(WindowSidebar, JobsStandInTheirSectionsInOrderOfEntry) {
  engine.settings.maxConcurrentJobs = 3;
  save(engine.settings);
  launch();
  clips.fail("failed.mov", "no");
  drop("failed.mov", failed);
  drop("done.mov", done);
  clips.hold("extracting.mov", extracting);
  clips.hold("calling.mov", calling);
  clips.hold("last.mov", calling);
  drop("calling.mov", calling);
  drop("extracting.mov", extracting);
  drop("last.mov", calling);
  drop("waiting.mov");
  expectSoon([&] { return lines(); }, ElementsAre("# Running", "calling.mov", "extracting.mov", "last.mov", "# Queued",
                                                  "waiting.mov", "# Done", "done.mov", "# Failed", "failed.mov"));
}

}  // namespace
}  // namespace tq

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/TemporaryFolder.hpp"
#include "TQPersistence/QueueWriter.hpp"
#include "TQPlatform/Concurrency/EventLoop.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class QueueWriterTest : public testing::Test {
 protected:
  QueueWriterTest() { makeWriter(); }

  void makeWriter() {
    writer.reset();
    writer = std::make_unique<QueueWriter>(
        store, loop.executor(),
        [this] {
          ++snapshots;
          return jobs;
        },
        [this](const std::string& problem) { problems.push_back(problem); });
  }

  void addJob(const std::string& clip) {
    Job job;
    job.id = UUID::random();
    job.sourceURL = clip;
    jobs.push_back(std::make_shared<const Job>(job));
  }

  std::vector<std::string> stored() const {
    std::vector<std::string> clips;
    for (const Job& job : store.load())
      clips.push_back(job.sourceURL.string());
    return clips;
  }

  /// Takes the news of one write in, once it has ended.
  void takeNews() { ASSERT_TRUE(loop.runNext(std::chrono::seconds(60))); }

  test::TemporaryFolder folder;
  QueueStore store{folder / "queue.json"};
  EventLoop loop;
  QueueWriter::Jobs jobs;
  int snapshots = 0;
  std::vector<std::string> problems;
  std::unique_ptr<QueueWriter> writer;
};

TEST_F(QueueWriterTest, AChangeIsWritten) {
  addJob("/a.mov");
  writer->noteChange();
  takeNews();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

TEST_F(QueueWriterTest, ThereIsNeverMoreThanOneWriteUnderWay) {
  writer->noteChange();
  for (const char* clip : {"/a.mov", "/b.mov", "/c.mov"}) {
    addJob(clip);
    writer->noteChange();
  }
  EXPECT_EQ(snapshots, 1) << "the others wait for its end";
  takeNews();
  EXPECT_EQ(snapshots, 2) << "and are one write then";
  takeNews();
  EXPECT_EQ(snapshots, 2);
  EXPECT_THAT(stored(), ElementsAre("/a.mov", "/b.mov", "/c.mov"));
}

TEST_F(QueueWriterTest, FinishingWritesTheNewestState) {
  writer->noteChange();
  addJob("/a.mov");
  writer->noteChange();
  writer->finish();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

TEST_F(QueueWriterTest, FinishingWithoutAChangeWritesNothing) {
  writer->finish();
  EXPECT_FALSE(fs::exists(store.url));
}

TEST_F(QueueWriterTest, NewsOfAWriteThatFinishWaitedForIsOld) {
  writer->noteChange();
  writer->finish();
  writer->noteChange();
  ASSERT_EQ(snapshots, 2);
  takeNews();  // of the first write: the second one is still under way for all that this thread knows
  addJob("/a.mov");
  writer->noteChange();
  EXPECT_EQ(snapshots, 2);
  writer->finish();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

TEST_F(QueueWriterTest, TheEndOfTheWriterIsAFinish) {
  addJob("/a.mov");
  writer->noteChange();
  writer.reset();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
  takeNews();  // of a writer that is gone
}

TEST_F(QueueWriterTest, AFailureIsToldInWordsAndTheNextWriteIsTried) {
  fs::create_directory(store.url);
  writer->noteChange();
  takeNews();
  ASSERT_THAT(problems, SizeIs(1));
  EXPECT_THAT(problems.front(), HasSubstr("Is a directory"));
  fs::remove(store.url);
  addJob("/a.mov");
  writer->noteChange();
  takeNews();
  EXPECT_THAT(problems, SizeIs(1));
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

TEST_F(QueueWriterTest, AFailureOfTheLastWriteIsToldByFinish) {
  fs::create_directory(store.url);
  writer->noteChange();
  writer->finish();
  EXPECT_THAT(problems, SizeIs(1));
}

TEST_F(QueueWriterTest, NothingIsWrittenWhileWritesAreHeldBack) {
  writer->hold();
  addJob("/a.mov");
  writer->noteChange();
  writer->finish();
  EXPECT_FALSE(fs::exists(store.url));
  writer->release();
  takeNews();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

TEST_F(QueueWriterTest, WhatChangesAfterASnapshotDoesNotReachThatWrite) {
  addJob("/a.mov");
  writer->noteChange();
  jobs.clear();
  takeNews();
  EXPECT_THAT(stored(), ElementsAre("/a.mov"));
}

}  // namespace
}  // namespace tq

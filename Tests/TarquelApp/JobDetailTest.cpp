#include <QSignalSpy>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TarquelApp/JobDetail.hpp"
#include "TarquelApp/ScriptedClips.hpp"
#include "TarquelApp/Text.hpp"
#include "TarquelApp/Turning.hpp"

namespace tq {
namespace {

using test::turnUntil;
using testing::IsEmpty;
using testing::SizeIs;
using enum JobStatus;

class JobDetailTest : public testing::Test {
 protected:
  JobDetailTest() {
    SettingsStore(paths).save(engine.settings);
    state = std::make_unique<AppState>(paths, engine.stages);
    detail = std::make_unique<JobDetail>(*state, shelf, engine.clock);
    state->bootstrap();
  }

  ~JobDetailTest() override {
    detail.reset();
    clips.letAllGo();
    state.reset();
  }

  /// Takes a clip in, and waits until its job has that status.
  void drop(const std::string& name, JobStatus status) {
    const std::size_t before = state->jobList().size();
    state->enqueue({qtFileURL(engine.folder.write(name, "clip"))});
    turnUntil([&] { return state->jobList().size() > before && state->jobList()[before].status == status; });
  }

  /// The number under which the frames that are shown lie on the shelf.
  std::uint64_t number() const { return detail->frameSource().split(QLatin1Char('/')).at(3).toULongLong(); }

  QString idOf(std::size_t row) const { return qtText(state->jobList()[row].id.text()); }

  test::PipelineHarness engine;
  test::ScriptedClips clips{engine};
  AppSupportPaths paths{engine.folder / "home"};
  FrameShelf shelf;
  std::unique_ptr<AppState> state;
  std::unique_ptr<JobDetail> detail;
};

TEST_F(JobDetailTest, WithoutASelectionEverythingIsEmpty) {
  EXPECT_FALSE(detail->exists());
  for (const QString& text : {detail->jobID(), detail->fileName(), detail->status(), detail->statusLabel(),
                              detail->waitingLabel(), detail->error(), detail->elapsed(), detail->engineSubtitle(),
                              detail->markdown(), detail->json(), detail->rawResponse()})
    EXPECT_EQ(text, QString());
  EXPECT_TRUE(detail->sourceURL().isEmpty());
  EXPECT_EQ(detail->progress(), 0);
  EXPECT_FALSE(detail->hasResult());
  EXPECT_FALSE(detail->hasRawResponse());
  EXPECT_THAT(detail->timecodes(), IsEmpty());
  EXPECT_THAT(detail->sourceRows(), IsEmpty());
}

TEST_F(JobDetailTest, FollowsTheSelection) {
  drop("a.mov", done);
  drop("b.mov", done);
  EXPECT_EQ(detail->jobID(), idOf(0));
  QSignalSpy identity(detail.get(), &JobDetail::identityChanged);
  state->setSelectedJobID(idOf(1));
  EXPECT_EQ(identity.size(), 1);
  EXPECT_EQ(detail->fileName(), QStringLiteral("b.mov"));
  EXPECT_EQ(detail->sourceURL(), qtFileURL(engine.folder / "b.mov"));
  state->setSelectedJobID({});
  EXPECT_FALSE(detail->exists());
}

TEST_F(JobDetailTest, AJobThatLeavesTheQueueIsShownNoMore) {
  drop("a.mov", done);
  QSignalSpy identity(detail.get(), &JobDetail::identityChanged);
  const std::uint64_t frames = number();
  ASSERT_TRUE(shelf.find(frames));
  state->removeCompleted();
  turnUntil([&] { return !detail->exists(); });
  EXPECT_EQ(identity.size(), 1);
  EXPECT_FALSE(shelf.find(frames)) << "nobody looks at them any more";
}

TEST_F(JobDetailTest, TellsOnlyOfWhatHasBecomeDifferent) {
  clips.hold("b.mov", extracting);
  drop("a.mov", done);
  clips.setProgress("b.mov", 0.5);
  QSignalSpy identity(detail.get(), &JobDetail::identityChanged);
  drop("b.mov", extracting);
  EXPECT_EQ(identity.size(), 0) << "another job's news";
  state->setSelectedJobID(idOf(1));
  turnUntil([&] { return detail->progress() > 0; });
  EXPECT_EQ(identity.size(), 1);

  QSignalSpy states(detail.get(), &JobDetail::stateChanged);
  QSignalSpy result(detail.get(), &JobDetail::resultChanged);
  QSignalSpy frames(detail.get(), &JobDetail::framesChanged);
  state->cancel(idOf(1));
  turnUntil([&] { return detail->status() == QStringLiteral("cancelled"); });
  EXPECT_EQ(states.size(), 1);
  EXPECT_EQ(result.size(), 0);
  EXPECT_EQ(frames.size(), 0);
  EXPECT_EQ(identity.size(), 1);
}

TEST_F(JobDetailTest, TheFramesOfTheSelectedJobLieOnTheShelf) {
  drop("a.mov", done);
  ASSERT_THAT(detail->timecodes(), SizeIs(2));
  const std::uint64_t first = number();
  ASSERT_TRUE(shelf.find(first));
  EXPECT_THAT(*shelf.find(first), SizeIs(2));
  drop("b.mov", done);
  state->setSelectedJobID(idOf(1));
  EXPECT_NE(number(), first) << "no picture of the one is taken for the other's";
  EXPECT_FALSE(shelf.find(first));
}

TEST_F(JobDetailTest, TheFramesStayWhereTheyAreWhileTheirJobGoesOn) {
  clips.hold("a.mov", calling);
  drop("a.mov", calling);
  const QString source = detail->frameSource();
  clips.letGo("a.mov");
  turnUntil([&] { return detail->hasResult(); });
  EXPECT_EQ(detail->frameSource(), source);
}

TEST_F(JobDetailTest, TextsOfAResultAreMadeAnewForAnother) {
  drop("a.mov", done);
  drop("b.mov", done);
  const QString markdown = detail->markdown();
  EXPECT_EQ(detail->markdown(), markdown);
  EXPECT_TRUE(markdown.startsWith(QStringLiteral("# a\n")));
  state->setSelectedJobID(idOf(1));
  EXPECT_TRUE(detail->markdown().startsWith(QStringLiteral("# b\n")));
  EXPECT_TRUE(detail->json().contains(QStringLiteral("\"b.mov\"")));
}

TEST_F(JobDetailTest, AVeryLongAnswerArrivesAMomentLater) {
  const std::string answer = "No JSON. " + std::string(1'000'000, 'x');
  clips.answer("a.mov", answer);
  drop("a.mov", failed);
  EXPECT_EQ(detail->rawResponse(), QString());
  QSignalSpy arrivals(detail.get(), &JobDetail::rawResponseChanged);
  turnUntil([&] { return arrivals.size() == 1; });
  EXPECT_EQ(detail->rawResponse(), qtText(answer));
}

TEST_F(JobDetailTest, ALongAnswerThatIsNoLongerShownNeverArrives) {
  clips.answer("a.mov", "No JSON. " + std::string(1'000'000, 'x'));
  clips.answer("b.mov", "No JSON. " + std::string(1'000'000, 'y'));
  drop("a.mov", failed);
  drop("b.mov", failed);
  EXPECT_EQ(detail->rawResponse(), QString());
  state->setSelectedJobID(idOf(1));
  EXPECT_EQ(detail->rawResponse(), QString());
  turnUntil([&] { return !detail->rawResponse().isEmpty(); });
  EXPECT_TRUE(detail->rawResponse().endsWith(u'y'));
}

TEST_F(JobDetailTest, AnEmptyAnswerIsAnAnswer) {
  clips.answer("a.mov", "");
  drop("a.mov", failed);
  EXPECT_TRUE(detail->hasRawResponse());
  EXPECT_EQ(detail->rawResponse(), QString());
}

}  // namespace
}  // namespace tq

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QUrl>
#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

#include "Support/JobRows.hpp"
#include "TarquelApp/JobListModel.hpp"
#include "TarquelApp/Text.hpp"

namespace tq {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using enum JobStatus;

class JobListModelTest : public testing::Test {
 protected:
  JobListModelTest() { model.show(list); }

  void append(const std::vector<Job>& jobs) { list.append(test::rowsOf(jobs)); }

  std::string text(JobListModel::Role role, int row = 0) const {
    return model.data(model.index(row), role).toString().toStdString();
  }

  std::vector<std::string> names() const {
    std::vector<std::string> texts;
    for (int row = 0; row < model.rowCount(); ++row)
      texts.push_back(text(JobListModel::fileName, row));
    return texts;
  }

  void setStatus(std::size_t entry, JobStatus status) {
    Job job = list[entry];
    job.status = status;
    list.replace(entry, std::move(job));
  }

  /// Replaces row 0 and gives the roles that the view was told of.
  std::vector<int> rolesToldFor(const Job& after) {
    QSignalSpy spy(&model, &QAbstractItemModel::dataChanged);
    list.replace(0, after);
    std::vector<int> roles;
    for (const auto& signal : spy) {
      EXPECT_EQ(signal[0].toModelIndex().row(), 0);
      EXPECT_EQ(signal[1].toModelIndex().row(), 0);
      for (const int role : signal[2].value<QList<int>>())
        roles.push_back(role);
    }
    return roles;
  }

  JobListModel model;
  JobList list{model};
  QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(JobListModelTest, AnEmptyListHasNoRows) {
  EXPECT_EQ(model.rowCount(), 0);
  EXPECT_FALSE(model.data(model.index(0), JobListModel::fileName).isValid());
  EXPECT_EQ(JobListModel().rowCount(), 0) << "one that shows no list yet";
}

TEST_F(JobListModelTest, ShowsWhatIsAppendedAndRemoved) {
  append({test::jobOf(done, "/clips/a.mov"), test::jobOf(queued, "/clips/b.mov"), test::jobOf(done, "/clips/c.mov")});
  EXPECT_THAT(names(), ElementsAre("b.mov", "a.mov", "c.mov"));
  QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
  QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
  list.removeAll(done);
  EXPECT_EQ(model.rowCount(), 1);
  EXPECT_EQ(text(JobListModel::fileName), "b.mov");
  EXPECT_EQ(removals.size(), 1) << "those that are done stand together";
  EXPECT_EQ(resets.size(), 0);
}

TEST_F(JobListModelTest, SectionsStandInTheirOrderAndJobsInTheirs) {
  append({test::jobOf(cancelled, "/c/1"), test::jobOf(done, "/c/2"), test::jobOf(queued, "/c/3"),
          test::jobOf(writing, "/c/4"), test::jobOf(failed, "/c/5"), test::jobOf(extracting, "/c/6"),
          test::jobOf(queued, "/c/7"), test::jobOf(calling, "/c/8")});
  EXPECT_THAT(names(), ElementsAre("4", "6", "8", "3", "7", "2", "1", "5"));
}

TEST_F(JobListModelTest, AJobThatGoesToAnotherSectionIsOneRowThatMoves) {
  append({test::jobOf(queued, "/c/1"), test::jobOf(queued, "/c/2"), test::jobOf(queued, "/c/3")});
  QSignalSpy moves(&model, &QAbstractItemModel::rowsMoved);
  QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
  QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
  setStatus(1, extracting);
  EXPECT_THAT(names(), ElementsAre("2", "1", "3"));
  EXPECT_EQ(moves.size(), 1);
  setStatus(1, calling);
  EXPECT_EQ(moves.size(), 1) << "the same section";
  setStatus(1, done);
  EXPECT_THAT(names(), ElementsAre("1", "3", "2"));
  setStatus(2, failed);
  EXPECT_THAT(names(), ElementsAre("1", "2", "3"));
  EXPECT_EQ(moves.size(), 3);
  EXPECT_EQ(resets.size() + removals.size(), 0);
}

TEST_F(JobListModelTest, AJobWhoseNewSectionBeginsWhereItStandsDoesNotMove) {
  append({test::jobOf(queued, "/c/1"), test::jobOf(queued, "/c/2")});
  QSignalSpy moves(&model, &QAbstractItemModel::rowsMoved);
  setStatus(0, extracting);
  EXPECT_EQ(moves.size(), 0);
  EXPECT_EQ(text(JobListModel::section, 0), "Running");
  EXPECT_EQ(text(JobListModel::section, 1), "Queued");
}

TEST_F(JobListModelTest, ARetriedJobComesBackToItsPlaceInTheOrderOfEntry) {
  append({test::jobOf(queued, "/c/1"), test::jobOf(failed, "/c/2"), test::jobOf(queued, "/c/3")});
  setStatus(1, queued);
  EXPECT_THAT(names(), ElementsAre("1", "2", "3"));
}

TEST_F(JobListModelTest, FindsTheRowOfAJob) {
  append({test::jobOf(done, "/c/1"), test::jobOf(queued, "/c/2")});
  EXPECT_EQ(model.rowOf(qtText(list[0].id.text())), 1);
  EXPECT_EQ(model.rowOf(qtText(list[1].id.text())), 0);
  EXPECT_EQ(model.rowOf(qtText(UUID::random().text())), -1);
  EXPECT_EQ(model.rowOf(QString()), -1);
  EXPECT_EQ(model.value(1, QStringLiteral("fileName")).toString().toStdString(), "1");
  EXPECT_FALSE(model.value(7, QStringLiteral("fileName")).isValid());
  EXPECT_FALSE(model.value(0, QStringLiteral("nonsense")).isValid());
}

TEST_F(JobListModelTest, SaysWhetherThereIsSomethingToClear) {
  QSignalSpy spy(&model, &JobListModel::hasDoneChanged);
  EXPECT_FALSE(model.hasDone());
  append({test::jobOf(writing)});
  EXPECT_FALSE(model.hasDone());
  setStatus(0, done);
  EXPECT_TRUE(model.hasDone());
  list.removeAll(done);
  EXPECT_FALSE(model.hasDone());
  EXPECT_EQ(spy.size(), 2);
}

/// Whatever happens to the list, the rows are those of a plain sort by section.
TEST_F(JobListModelTest, KeepsUpWithAnyCourseOfTheQueue) {
  std::mt19937 random(20261121);
  const auto anyStatus = [&] { return static_cast<JobStatus>(random() % rawValues<JobStatus>.size()); };
  for (int step = 0; step < 400; ++step) {
    switch (random() % 8) {
      case 0: {
        std::vector<Job> jobs;
        for (std::size_t count = random() % 4; count > 0; --count)
          jobs.push_back(test::jobOf(anyStatus(), "/c/" + std::to_string(step) + "-" + std::to_string(count)));
        if (!jobs.empty()) append(jobs);
        break;
      }
      case 1: list.removeAll(anyStatus()); break;
      default:
        if (!list.empty()) setStatus(random() % list.size(), anyStatus());
    }
    std::vector<std::string> expected;
    for (const QueueSection section : allCases<QueueSection>())
      for (const JobList::Row& job : list.rows())
        if (wordsOf(job->status).section == section) expected.push_back(job->sourceURL.filename());
    ASSERT_EQ(names(), expected) << "step " << step;
    ASSERT_EQ(model.hasDone(), std::ranges::any_of(list.rows(), [](const auto& job) { return job->status == done; }));
  }
}

TEST_F(JobListModelTest, ATickOfProgressIsOneRoleOfOneRow) {
  Job running = test::jobOf(extracting);
  append({running});
  running.progress = 0.3;
  EXPECT_THAT(rolesToldFor(running), ElementsAre(JobListModel::progress));
}

TEST_F(JobListModelTest, AChangeThatNoRowShowsIsNotTold) {
  Job running = test::jobOf(calling);
  append({running});
  running.rawResponse = std::string("an answer");
  EXPECT_THAT(rolesToldFor(running), ElementsAre());
}

TEST_F(JobListModelTest, AChangeOfStatusTellsAllThatFollowsFromIt) {
  Job running = test::jobOf(writing);
  append({running});
  running.status = failed;
  running.error = "It went wrong.";
  EXPECT_THAT(rolesToldFor(running),
              UnorderedElementsAre(JobListModel::status, JobListModel::statusLabel, JobListModel::section,
                                   JobListModel::isWorking, JobListModel::error, JobListModel::canRetry,
                                   JobListModel::canCancel));
}

struct StatusCase {
  JobStatus status;
  const char* label;
  const char* section;
  bool canRetry;
  bool canCancel;
};

TEST_F(JobListModelTest, EveryStatusHasItsWordsAndActions) {
  for (const StatusCase& expected : {
           StatusCase{queued, "Queued", "Queued", false, true},
           StatusCase{extracting, "Extracting frames", "Running", false, true},
           StatusCase{calling, "Calling vision model", "Running", false, true},
           StatusCase{writing, "Writing sidecar", "Running", false, true},
           StatusCase{done, "Done", "Done", false, false},
           StatusCase{failed, "Failed", "Failed", true, false},
           StatusCase{cancelled, "Cancelled", "Failed", true, false},
       }) {
    append({test::jobOf(expected.status)});
    const int row = model.rowOf(qtText(list.rows().back()->id.text()));
    EXPECT_EQ(text(JobListModel::statusLabel, row), expected.label);
    EXPECT_EQ(text(JobListModel::section, row), expected.section);
    EXPECT_EQ(model.data(model.index(row), JobListModel::canRetry).toBool(), expected.canRetry) << expected.label;
    EXPECT_EQ(model.data(model.index(row), JobListModel::canCancel).toBool(), expected.canCancel) << expected.label;
    EXPECT_EQ(model.data(model.index(row), JobListModel::isWorking).toBool(),
              std::string_view(expected.section) == "Running");
  }
}

TEST_F(JobListModelTest, ARefusalWinsOverAReview) {
  Job refused = test::jobOf(done);
  DescriptionResult result;
  result.flagged = true;
  result.reviewFlag = true;
  result.reviewReason = "lens cap";
  refused.result = result;
  Job review = refused;
  result.flagged = false;
  review.result = result;
  Job reviewWithoutReason = review;
  result.reviewReason = "";
  reviewWithoutReason.result = result;
  append({refused, review, reviewWithoutReason, test::jobOf(done)});
  EXPECT_EQ(text(JobListModel::badge, 0), "refused");
  EXPECT_EQ(text(JobListModel::badgeHelp, 0), "Model refused");
  EXPECT_EQ(text(JobListModel::badge, 1), "needsReview");
  EXPECT_EQ(text(JobListModel::badgeHelp, 1), "Needs review — lens cap");
  EXPECT_EQ(text(JobListModel::badgeHelp, 2), "Needs review");
  EXPECT_EQ(text(JobListModel::badge, 3), "none");
  EXPECT_EQ(text(JobListModel::badgeHelp, 3), "");
}

TEST_F(JobListModelTest, AFinishedClipIsToldInOneLine) {
  Job finished = test::jobOf(done);
  DescriptionResult result;
  result.global.overallSummaryOneLine = "A quiet harbour.";
  finished.result = result;
  Job failedJob = finished;
  failedJob.status = failed;
  append({finished, failedJob});
  EXPECT_EQ(text(JobListModel::oneLine, 0), "A quiet harbour.");
  EXPECT_EQ(text(JobListModel::oneLine, 1), "");
}

TEST_F(JobListModelTest, ALineOfMegabytesIsShownByItsBeginning) {
  std::string umlauts = "a";
  while (umlauts.size() < 1'000'000)
    umlauts += "\u00e4";
  Job finished = test::jobOf(done);
  DescriptionResult result;
  result.global.overallSummaryOneLine = umlauts;
  finished.result = result;
  Job failedJob = test::jobOf(failed);
  failedJob.error = umlauts;
  append({finished, failedJob});
  const std::string beginning = umlauts.substr(0, 999) + "\u2026";
  EXPECT_EQ(text(JobListModel::oneLine, 0), beginning);
  EXPECT_EQ(text(JobListModel::error, 1), beginning);
}

TEST_F(JobListModelTest, TheModelOfTheEngineIsShownWhereItIsKnown) {
  Job known = test::jobOf(queued);
  known.engineSnapshot = EngineSnapshot{.providerId = "mock", .modelId = "tiny"};
  append({known, test::jobOf(queued)});
  EXPECT_EQ(text(JobListModel::modelId, 0), "tiny");
  EXPECT_EQ(text(JobListModel::modelId, 1), "");
}

TEST_F(JobListModelTest, ANameThatIsNotUTF8IsShownAndItsFileFoundAgain) {
  const std::string clip = "/clips/100% #1?\xff .mov";
  append({test::jobOf(queued, clip)});
  EXPECT_EQ(text(JobListModel::fileName), "100% #1?\xEF\xBF\xBD .mov");
  EXPECT_EQ(pathOf(model.data(model.index(0), JobListModel::sourceURL).toUrl()), clip);
}

TEST_F(JobListModelTest, GivesOtherProgramsAFileByItsEncodedAddress) {
  append({test::jobOf(queued, "/clips/a b#1 ä%\xff.mov")});
  EXPECT_EQ(text(JobListModel::uriList), "file:///clips/a%20b%231%20%C3%A4%25%FF.mov\r\n");
}

TEST_F(JobListModelTest, RolesHaveTheNamesThatViewsUse) {
  EXPECT_EQ(model.roleNames().value(JobListModel::jobID), "jobID");
  EXPECT_EQ(model.roleNames().value(JobListModel::canCancel), "canCancel");
}

TEST(FileURLs, OfOtherSchemesAreNoPaths) {
  EXPECT_EQ(pathOf(QUrl(QStringLiteral("http://localhost/a.mov"))), "");
  EXPECT_EQ(pathOf(QUrl(QStringLiteral("file:///a%20b/%C3%A4.mov"))), "/a b/ä.mov");
}

}  // namespace
}  // namespace tq

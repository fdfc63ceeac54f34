#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QUrl>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

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
  EXPECT_EQ(model.rowCount(), 3);
  EXPECT_EQ(text(JobListModel::fileName, 1), "b.mov");
  QSignalSpy removals(&model, &QAbstractItemModel::rowsRemoved);
  QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
  list.removeAll(done);
  EXPECT_EQ(model.rowCount(), 1);
  EXPECT_EQ(text(JobListModel::fileName), "b.mov");
  EXPECT_EQ(removals.size(), 2);
  EXPECT_EQ(resets.size(), 0);
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
    const int row = model.rowCount() - 1;
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

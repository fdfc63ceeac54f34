#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <set>

#include "Support/JobRows.hpp"
#include "TarquelApp/JobWords.hpp"

namespace tq {
namespace {

using namespace std::chrono_literals;
using enum JobStatus;

DescriptionResult resultOf(const std::string& provider) {
  DescriptionResult result;
  result.engine = {.provider = provider, .model = "m", .framesAnalyzed = 2, .samplingStrategy = "adaptive"};
  return result;
}

TEST(JobWords, EveryStatusHasALabelOfItsOwn) {
  std::set<std::string_view> labels;
  for (const JobStatus status : allCases<JobStatus>())
    labels.insert(wordsOf(status).label);
  EXPECT_EQ(labels.size(), rawValues<JobStatus>.size());
}

TEST(JobWords, WhatWaitsSaysForWhat) {
  EXPECT_EQ(wordsOf(queued).waiting, "Waiting in queue…");
  EXPECT_EQ(wordsOf(extracting).waiting, "Extracting frames…");
  EXPECT_EQ(wordsOf(calling).waiting, "Asking the vision model…");
  EXPECT_EQ(wordsOf(writing).waiting, "Writing sidecar files…");
  for (const JobStatus ended : {done, failed, cancelled})
    EXPECT_EQ(wordsOf(ended).waiting, "");
}

TEST(EngineSubtitle, ComesFromTheSnapshotFirst) {
  Job job = test::jobOf(done);
  job.engineSnapshot = EngineSnapshot{.providerId = "p",
                                      .providerDisplay = "Provider",
                                      .modelId = "model",
                                      .promptProfile = "standard",
                                      .samplingStrategy = "adaptive"};
  job.result = Shared<DescriptionResult>(resultOf("other"));
  EXPECT_EQ(engineSubtitleOf(job), "Provider · model · standard · adaptive");
}

TEST(EngineSubtitle, ComesFromTheResultWithoutASnapshot) {
  Job job = test::jobOf(done);
  job.result = Shared<DescriptionResult>(resultOf("p"));
  EXPECT_EQ(engineSubtitleOf(job), "p · m · adaptive");
}

TEST(EngineSubtitle, IsEmptyWhenNeitherIsKnown) {
  EXPECT_EQ(engineSubtitleOf(test::jobOf(queued)), "");
}

TEST(EngineSubtitle, AnEmptyPartIsAPart) {
  Job job = test::jobOf(queued);
  job.engineSnapshot = EngineSnapshot{.providerDisplay = "Provider", .promptProfile = "standard"};
  EXPECT_EQ(engineSubtitleOf(job), "Provider ·  · standard · ");
}

TEST(ElapsedText, CountsWholeMinutesAndSeconds) {
  EXPECT_EQ(elapsedText(0s), "(0:00 elapsed)");
  EXPECT_EQ(elapsedText(9s + 999ms), "(0:09 elapsed)");
  EXPECT_EQ(elapsedText(60s), "(1:00 elapsed)");
  EXPECT_EQ(elapsedText(1h + 5s), "(60:05 elapsed)");
}

TEST(ElapsedText, IsNeverBelowZero) {
  EXPECT_EQ(elapsedText(-1ns), "(0:00 elapsed)");
  EXPECT_EQ(elapsedText(-24h), "(0:00 elapsed)");
}

}  // namespace
}  // namespace tq

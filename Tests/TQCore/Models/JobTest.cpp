#include <gtest/gtest.h>
#include <unordered_set>

#include "TQCore/Models/Job.hpp"
#include "TQCore/Models/PromptProfile.hpp"
#include "TQCore/Models/RerateCandidate.hpp"
#include "TQCore/Models/SamplingConfig.hpp"

namespace tq {
namespace {

Job jobWith(std::optional<bool> flagged, std::optional<bool> reviewFlag, std::optional<std::string> reason) {
  DescriptionResult result;
  result.flagged = flagged;
  result.reviewFlag = reviewFlag;
  result.reviewReason = std::move(reason);
  Job job;
  job.status = JobStatus::done;
  job.result = std::move(result);
  return job;
}

JobBadge needsReview(std::optional<std::string> reason) {
  return {JobBadge::Kind::needsReview, std::move(reason)};
}

TEST(JobStatus, IsTerminalForDoneFailedAndCancelledOnly) {
  std::vector<std::string_view> terminal;
  for (const JobStatus status : allCases<JobStatus>())
    if (isTerminal(status)) terminal.push_back(rawValue(status));
  EXPECT_EQ(terminal, (std::vector<std::string_view>{"done", "failed", "cancelled"}));
}

TEST(JobStatus, HasItsRawValues) {
  EXPECT_EQ(rawValue(JobStatus::queued), "queued");
  EXPECT_EQ(rawValue(JobStatus::extracting), "extracting");
  EXPECT_EQ(rawValue(JobStatus::calling), "calling");
  EXPECT_EQ(rawValue(JobStatus::writing), "writing");
  EXPECT_EQ(rawValue(JobStatus::done), "done");
  EXPECT_EQ(rawValue(JobStatus::failed), "failed");
  EXPECT_EQ(rawValue(JobStatus::cancelled), "cancelled");
  EXPECT_EQ(fromRawValue<JobStatus>("cancelled"), JobStatus::cancelled);
  EXPECT_FALSE(fromRawValue<JobStatus>("Queued"));
}

TEST(JobBadge, IsNoneWithoutAResult) {
  Job job;
  job.status = JobStatus::failed;
  job.error = "flagged";
  EXPECT_EQ(job.badge(), JobBadge());
}

TEST(JobBadge, IsNoneWithoutFlags) {
  EXPECT_EQ(jobWith({}, {}, {}).badge(), JobBadge());
  EXPECT_EQ(jobWith(false, false, "reason").badge(), JobBadge());
}

TEST(JobBadge, IsRefusedForAFlaggedResult) {
  EXPECT_EQ(jobWith(true, {}, {}).badge().kind, JobBadge::Kind::refused);
}

TEST(JobBadge, RefusalWinsOverReviewAndHidesItsReason) {
  const JobBadge refused{JobBadge::Kind::refused, std::nullopt};
  EXPECT_EQ(jobWith(true, true, "lens cap").badge(), refused);
}

TEST(JobBadge, NeedsReviewWithTheReasonOrWithout) {
  EXPECT_EQ(jobWith(false, true, "lens cap").badge(), needsReview("lens cap"));
  EXPECT_EQ(jobWith({}, true, {}).badge(), needsReview(std::nullopt));
}

TEST(JobBadge, ComparesReasons) {
  EXPECT_EQ(needsReview(std::nullopt), needsReview(std::nullopt));
  EXPECT_NE(needsReview("a"), needsReview("b"));
  EXPECT_NE(needsReview("a"), needsReview(std::nullopt));
}

TEST(Job, StartsQueuedWithoutProgressOrResults) {
  const Job job;
  EXPECT_EQ(job.status, JobStatus::queued);
  EXPECT_EQ(job.progress, 0.0);
  EXPECT_FALSE(job.error || job.result || job.rawResponse || job.frames || job.engineSnapshot || job.outputOverride);
}

TEST(Job, ComparesSharedPartsByContent) {
  EXPECT_EQ(jobWith(true, {}, "a"), jobWith(true, {}, "a"));
  EXPECT_NE(jobWith(true, {}, "a"), jobWith(true, {}, "b"));
  Job without = jobWith(true, {}, "a");
  without.result = {};
  EXPECT_NE(without, jobWith(true, {}, "a"));
}

TEST(Job, CopiesShareTheirLargeParts) {
  const Job job = jobWith(true, {}, "a");
  const Job copy = job;
  EXPECT_EQ(&*copy.result, &*job.result);
}

TEST(EngineSnapshot, HasCamelCaseKeysAllRequired) {
  const std::string text = R"({"modelId":"m","promptProfile":"standard","providerDisplay":"P","providerId":"p",)"
                           R"("samplingStrategy":"adaptive"})";
  const EngineSnapshot snapshot{"p", "P", "m", "standard", "adaptive"};
  EXPECT_EQ(writeJSON(encode(snapshot), JSONLayout::compact), text);
  EXPECT_EQ(decode<EngineSnapshot>(parseJSON(text)), snapshot);
  for (const char* key : {"providerId", "providerDisplay", "modelId", "promptProfile", "samplingStrategy"}) {
    JSONValue::Object object = *parseJSON(text).asObject();
    object.erase(key);
    EXPECT_THROW(decode<EngineSnapshot>(JSONValue(object)), DecodingError) << key;
  }
}

TEST(SamplingConfig, HasItsDefaults) {
  EXPECT_EQ(writeJSON(encode(SamplingConfig()), JSONLayout::compact),
            R"({"evenFrameCount":8,"intervalSeconds":5.0,"jpegQuality":0.85,"maxEdgePixels":1568,"maxFrames":12,)"
            R"("strategy":"adaptive"})");
}

TEST(SamplingConfig, HasNoDefaultsForSingleKeys) {
  const JSONValue::Object full = *encode(SamplingConfig()).asObject();
  for (const auto& [key, value] : full) {
    JSONValue::Object part = full;
    part.erase(key);
    EXPECT_THROW(decode<SamplingConfig>(JSONValue(part)), DecodingError) << key;
  }
  EXPECT_EQ(decode<SamplingConfig>(JSONValue(full)), SamplingConfig());
}

TEST(SamplingConfig, RefusesAnUnknownStrategy) {
  JSONValue::Object object = *encode(SamplingConfig()).asObject();
  for (const char* strategy : {"fixed-interval", "even-distribution", "adaptive"}) {
    object["strategy"] = strategy;
    EXPECT_EQ(rawValue(decode<SamplingConfig>(JSONValue(object)).strategy), strategy);
  }
  object["strategy"] = "fixedInterval";
  EXPECT_THROW(decode<SamplingConfig>(JSONValue(object)), DecodingError);
}

TEST(OutputConfig, WritesBesideTheClipWithoutAFolder) {
  const auto config = decode<OutputConfig>(parseJSON(R"({"format": "json", "conflictPolicy": "suffix"})"));
  EXPECT_EQ(config, (OutputConfig{OutputFormat::json, ConflictPolicy::suffix, std::nullopt}));
  EXPECT_EQ(writeJSON(encode(config), JSONLayout::compact), R"({"conflictPolicy":"suffix","format":"json"})");
}

TEST(OutputConfig, KeepsItsFolderAsAFileURL) {
  const OutputConfig config{OutputFormat::both, ConflictPolicy::skipExisting, "/My Clips/out"};
  EXPECT_EQ(encode(config).find("sidecarDirectory")->asString()->c_str(), std::string("file:///My%20Clips/out"));
  EXPECT_EQ(decode<OutputConfig>(encode(config)), config);
}

TEST(OutputConfig, ReadsAPlainAbsolutePathToo) {
  const auto config = decode<OutputConfig>(
      parseJSON(R"({"format": "both", "conflictPolicy": "overwrite", "sidecarDirectory": "/My Clips/out"})"));
  EXPECT_EQ(config.sidecarDirectory, "/My Clips/out");
}

TEST(OutputConfig, RefusesUnknownWordsAndMissingKeys) {
  EXPECT_THROW(decode<OutputConfig>(parseJSON(R"({"format": "pdf", "conflictPolicy": "suffix"})")), DecodingError);
  EXPECT_THROW(decode<OutputConfig>(parseJSON(R"({"format": "json", "conflictPolicy": "skip"})")), DecodingError);
  EXPECT_THROW(decode<OutputConfig>(parseJSON(R"({"format": "json"})")), DecodingError);
  EXPECT_THROW(decode<OutputConfig>(parseJSON(R"({"conflictPolicy": "suffix"})")), DecodingError);
}

TEST(ConfigurationEnumerations, ListTheirCasesInOrder) {
  EXPECT_EQ(rawValues<SamplingStrategy>,
            (std::array<std::string_view, 3>{"fixed-interval", "even-distribution", "adaptive"}));
  EXPECT_EQ(rawValues<OutputFormat>, (std::array<std::string_view, 3>{"markdown", "json", "both"}));
  EXPECT_EQ(rawValues<ConflictPolicy>, (std::array<std::string_view, 3>{"skip-existing", "overwrite", "suffix"}));
  EXPECT_EQ(allCases<SamplingStrategy>(), (std::array{SamplingStrategy::fixedInterval,
                                                      SamplingStrategy::evenDistribution, SamplingStrategy::adaptive}));
  EXPECT_EQ(allCases<OutputFormat>(), (std::array{OutputFormat::markdown, OutputFormat::json, OutputFormat::both}));
  EXPECT_EQ(allCases<ConflictPolicy>(),
            (std::array{ConflictPolicy::skipExisting, ConflictPolicy::overwrite, ConflictPolicy::suffix}));
}

TEST(PromptProfile, HasDisplayNames) {
  EXPECT_EQ(displayName(PromptProfile::standard), "Standard");
  EXPECT_EQ(displayName(PromptProfile::unrestricted), "Unrestricted (cataloging)");
  EXPECT_EQ(rawValues<PromptProfile>, (std::array<std::string_view, 2>{"standard", "unrestricted"}));
}

TEST(RerateCandidate, HashesAllItsFields) {
  const RerateCandidate candidate{"/a.description.json", "/a.mov", "blurred"};
  const std::unordered_set<RerateCandidate, RecordHash> candidates{
      candidate,
      {"/a.description.json", "/a.mov", "blurred"},
      {"/b.description.json", "/a.mov", "blurred"},
      {"/a.description.json", "/b.mov", "blurred"},
      {"/a.description.json", "/a.mov", std::nullopt},
  };
  EXPECT_EQ(candidates.size(), 4u);
}

}  // namespace
}  // namespace tq

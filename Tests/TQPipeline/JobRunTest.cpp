#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/PipelineHarness.hpp"
#include "Support/WatchedThread.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQCore/TQError.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"

namespace tq {
namespace {

using test::Gate;
using test::PipelineHarness;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using enum JobStatus;
namespace fs = std::filesystem;

class JobRun : public testing::Test {
 protected:
  DescriptionResult sidecarOf(const std::string& stem) {
    return decode<DescriptionResult>(parseJSON(test::contentOf(harness.folder / (stem + ".description.json"))));
  }

  void answerWith(std::string rawText, std::string modelId = "answering-model") {
    harness.answer = [rawText = std::move(rawText), modelId = std::move(modelId)](const VisionRequest&,
                                                                                  const std::stop_token&) {
      return VisionResponse{.rawText = rawText, .modelId = modelId, .inputTokens = {}, .outputTokens = {}};
    };
  }

  PipelineHarness harness;
};

TEST_F(JobRun, GoesThroughItsStatusesWithTheirProgress) {
  harness.stages.extractFrames = [](const fs::path&, const SamplingConfig&, const ExtractionProgress& progress,
                                    const std::stop_token&) {
    progress(0.5);
    progress(1.0);
    return Extraction{.frames = PipelineHarness::frames(2), .meta = {}};
  };
  const Job job = harness.makeJob("clip.mov");
  harness.runToEnd(job, done);
  std::vector<std::pair<JobStatus, double>> steps;
  for (const Job& update : harness.log.of(job.id))
    steps.emplace_back(update.status, update.progress);
  EXPECT_THAT(steps, ElementsAre(std::pair(extracting, 0.0), std::pair(extracting, 0.2), std::pair(extracting, 0.4),
                                 std::pair(calling, 0.45), std::pair(writing, 0.85), std::pair(done, 1.0)));
}

TEST_F(JobRun, StartsFromZeroWhateverTheJobShowedBefore) {
  Job job = harness.makeJob("clip.mov");
  job.progress = 0.7;
  harness.runToEnd(job, done);
  EXPECT_EQ(harness.log.of(job.id).front().progress, 0.0);
}

TEST_F(JobRun, EachStepAddsItsPartToTheJob) {
  const Job job = harness.makeJob("clip.mov");
  harness.runToEnd(job, done);
  const auto updates = harness.log.of(job.id);
  ASSERT_EQ(updates.size(), 4u);
  EXPECT_TRUE(updates[0].engineSnapshot && !updates[0].frames);
  EXPECT_TRUE(updates[1].frames && !updates[1].rawResponse);
  EXPECT_TRUE(updates[2].rawResponse && !updates[2].result);
  EXPECT_EQ(*updates[2].rawResponse, test::goodAnswer());
  ASSERT_TRUE(updates[3].result);
  EXPECT_EQ(updates[3].result->summary, "A quiet harbour at dawn.");
  EXPECT_EQ(updates[3].error, std::nullopt);
}

TEST_F(JobRun, WritesTheFactsOfTheClip) {
  harness.gps = GPS{.latitude = 48.8577, .longitude = 2.295, .altitudeMeters = 35.0, .placeName = {}};
  const Job job = harness.makeJob("clip.mov");
  harness.runToEnd(job, done);
  const DescriptionResult result = sidecarOf("clip");
  EXPECT_EQ(result.source.filename, "clip.mov");
  EXPECT_EQ(result.source.durationSeconds, 12.5);
  EXPECT_EQ(result.source.resolution, "640x360");
  EXPECT_EQ(result.source.frameRate, 25);
  EXPECT_EQ(result.source.codec, "avc1");
  EXPECT_EQ(result.source.fileSizeBytes, 4);
  // SHA-256 of the four bytes "clip".
  EXPECT_EQ(result.source.sha256, "67905ad3cc2dd52b1f5f6a6d2814de0396618b29b4238b9af5207aeb69936e6d");
  EXPECT_EQ(result.source.describedAt, harness.clock->now());
  EXPECT_EQ(result.source.gps, harness.gps);
  EXPECT_EQ(result.engine.provider, "scripted");
  EXPECT_EQ(result.engine.model, "answering-model");
  EXPECT_EQ(result.engine.framesAnalyzed, 2);
  EXPECT_EQ(result.engine.samplingStrategy, "adaptive");
  EXPECT_EQ(result.transcript, std::nullopt);
}

TEST_F(JobRun, AsksTheModelWithTheSettingsInForce) {
  harness.settings.maxOutputTokens = 777;
  harness.settings.promptProfile = PromptProfile::unrestricted;
  harness.settings.sampling.strategy = SamplingStrategy::evenDistribution;
  VisionRequest seen;
  harness.answer = [&](const VisionRequest& request, const std::stop_token&) {
    seen = request;
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_THAT(seen.systemPrompt, HasSubstr("senior media archivist"));
  EXPECT_THAT(seen.userPrompt,
              testing::StartsWith("Source: clip.mov\nDuration: 12.50s  Resolution: 640x360  FPS: 25.0"));
  EXPECT_THAT(seen.userPrompt, HasSubstr("Frames provided: 2 (chronological)"));
  EXPECT_EQ(seen.frames, end.frames);
  EXPECT_EQ(seen.sourceContext, end.result->source);
  EXPECT_EQ(seen.samplingStrategy, SamplingStrategy::evenDistribution);
  EXPECT_EQ(seen.maxTokens, 777);
  EXPECT_EQ(seen.temperature, 0.2);
}

TEST_F(JobRun, TheSnapshotIsThatOfTheStartNotOfTheQueueing) {
  Job job = harness.makeJob("clip.mov");
  job.engineSnapshot = EngineSnapshot{"anthropic", "Anthropic-compatible", "old-model", "unrestricted", "adaptive"};
  const Job end = harness.runToEnd(job, done);
  EXPECT_EQ(end.engineSnapshot,
            (EngineSnapshot{"openai", "OpenAI-compatible", "configured-model", "standard", "adaptive"}));
  EXPECT_EQ(end.result->engine.model, "answering-model");
}

TEST_F(JobRun, AnUnknownProviderIsShownAsAnthropicCompatibleAndFailsAfterTheFrames) {
  harness.settings.providerId = "gemini";
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_EQ(end.error, "API key for gemini is not configured. Set it in Preferences.");
  EXPECT_EQ(end.engineSnapshot->providerDisplay, "Anthropic-compatible");
  EXPECT_EQ(end.frames->size(), 2u);
  EXPECT_EQ(end.progress, 0.45);
}

TEST_F(JobRun, TheMockModelNeedsNoKey) {
  harness.settings.providerId = "mock";
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(end.engineSnapshot->providerDisplay, "Mock (no API call)");
  EXPECT_EQ(end.result->engine.provider, "mock");
  EXPECT_EQ(end.result->engine.model, "mock-v1");
  EXPECT_EQ(end.result->summary, "Mock description of clip.mov with 2 frames.");
}

TEST_F(JobRun, AHostedProviderWithoutAKeyFailsWithItsName) {
  harness.settings.providerId = "anthropic";
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), failed).error,
            "API key for anthropic is not configured. Set it in Preferences.");
}

TEST_F(JobRun, AKeyThatCannotBeReadCountsAsNone) {
  harness.folder.write("private/secrets.json", "no json");
  harness.settings.openaiBaseURL = "https://api.example.com";
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), failed).error,
            "API key for openai is not configured. Set it in Preferences.");
}

TEST_F(JobRun, TheProviderGetsItsOwnKeyAddressModelAndTimeLimit) {
  harness.secrets->set("sk-openai", SecretAccounts::openaiAPIKey);
  harness.secrets->set("sk-ant", SecretAccounts::anthropicAPIKey);
  harness.settings.requestTimeoutSeconds = 90.5;
  std::vector<HTTPProviderConfig> made;
  const auto maker = [&](const HTTPProviderConfig& config) -> std::unique_ptr<VisionProvider> {
    made.push_back(config);
    return std::make_unique<test::ScriptedProvider>(config.modelId, harness.answer);
  };
  harness.stages.providers = ProviderFactory({.anthropic = maker, .openAI = maker});
  harness.settings.openaiBaseURL = "https://models.example.com/api";
  harness.settings.anthropicBaseURL = "";
  harness.runToEnd(harness.makeJob("a.mov"), done);
  harness.settings.providerId = "anthropic";
  harness.orchestrator().updateSettings(harness.settings);
  harness.runToEnd(harness.makeJob("b.mov"), done);

  ASSERT_EQ(made.size(), 2u);
  EXPECT_EQ(made[0].apiKey, "sk-openai");
  EXPECT_EQ(made[0].baseURL.absoluteString(), "https://models.example.com/api");
  EXPECT_EQ(made[0].modelId, "configured-model");
  EXPECT_EQ(made[0].timeoutSeconds, 90.5);
  EXPECT_EQ(made[1].apiKey, "sk-ant");
  // No address can be made of the empty text, so the vendor's own stands in.
  EXPECT_EQ(made[1].baseURL.absoluteString(), "https://api.anthropic.com/v1");
}

TEST_F(JobRun, AFailedExtractionKeepsTheProgressThatWasReportedLast) {
  harness.stages.extractFrames = [](const fs::path&, const SamplingConfig&, const ExtractionProgress& progress,
                                    const std::stop_token&) -> Extraction {
    progress(0.25);
    throw TQError::frameExtractionFailed("frame 3 is broken");
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_EQ(end.error, "Frame extraction failed: frame 3 is broken");
  EXPECT_EQ(end.progress, 0.1);
  EXPECT_FALSE(end.frames);
  EXPECT_FALSE(end.result);
}

TEST_F(JobRun, AClipThatVanishedSinceItsFramesWereTakenFails) {
  const Job job = harness.makeJob("clip.mov");
  harness.stages.extractFrames = [&](const auto&...) {
    fs::remove(job.sourceURL);
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  EXPECT_EQ(harness.runToEnd(job, failed).error, "clip.mov: No such file or directory");
}

TEST_F(JobRun, AClipThatCannotBeHashedIsDescribedWithoutAHash) {
  const Job job = harness.makeJob("clip.mov");
  harness.gps = GPS{.latitude = 1, .longitude = 2, .altitudeMeters = {}, .placeName = {}};
  harness.settings.geocodingEnabled = true;
  harness.stages.geocode = [&](const GeocodingRequest&, const std::stop_token&) {
    fs::remove(job.sourceURL);
    return GeocodingResponse{"Somewhere"};
  };
  const Job end = harness.runToEnd(job, done);
  EXPECT_EQ(end.result->source.sha256, std::nullopt);
  EXPECT_EQ(end.result->source.fileSizeBytes, 4);
}

TEST_F(JobRun, WithGeocodingOffAPlaceHasNoName) {
  harness.gps = GPS{.latitude = 1, .longitude = 2, .altitudeMeters = {}, .placeName = {}};
  harness.stages.geocode = [](const auto&...) -> GeocodingResponse {
    ADD_FAILURE() << "nobody asked for a place name";
    return {};
  };
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), done).result->source.gps, harness.gps);
}

TEST_F(JobRun, WithGeocodingOnThePlaceIsNamedByItsCoordinates) {
  harness.gps = GPS{.latitude = 48.8577, .longitude = 2.295, .altitudeMeters = {}, .placeName = {}};
  harness.settings.geocodingEnabled = true;
  harness.stages.geocode = [](const GeocodingRequest& request, const std::stop_token&) {
    EXPECT_EQ(request, (GeocodingRequest{.latitude = 48.8577, .longitude = 2.295}));
    return GeocodingResponse{"Paris, France"};
  };
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), done).result->source.gps->placeName, "Paris, France");
}

TEST_F(JobRun, AFailedGeocodingOnlyLosesTheName) {
  harness.gps = GPS{.latitude = 1, .longitude = 2, .altitudeMeters = {}, .placeName = {}};
  harness.settings.geocodingEnabled = true;
  harness.stages.geocode = [](const auto&...) -> GeocodingResponse { throw TQError::providerTransport("down"); };
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), done).result->source.gps, harness.gps);
}

TEST_F(JobRun, WithoutGPSNoPlaceIsAskedFor) {
  harness.settings.geocodingEnabled = true;
  harness.stages.geocode = [](const auto&...) -> GeocodingResponse {
    ADD_FAILURE() << "there is no place";
    return {};
  };
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), done).result->source.gps, std::nullopt);
}

TEST_F(JobRun, ATransportErrorAfterACancelLeavesTheJobCancelled) {
  Gate gate;
  harness.answer = [&](const VisionRequest&, const std::stop_token& stop) -> VisionResponse {
    try {
      gate.pass(stop);
    } catch (const Cancelled&) {
    }
    throw TQError::providerTransport("request cancelled");
  };
  const Job job = harness.makeJob("clip.mov"), next = harness.makeJob("next.mov");
  harness.settings.maxConcurrentJobs = 1;
  harness.start().add({job});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  harness.answer = [](const auto&...) -> VisionResponse { throw TQError::providerTransport("another"); };
  harness.runToEnd(next, failed);
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, calling, cancelled));
  EXPECT_EQ(harness.log.of(job.id).back().error, "Cancelled");
}

TEST_F(JobRun, CancellingDuringTheProviderCallWritesNothingAndFreesTheSlotWhenTheCallHasEnded) {
  Gate gate;
  bool first = true;
  harness.answer = [&](const VisionRequest&, const std::stop_token& stop) {
    if (std::exchange(first, false)) gate.pass(stop);
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
  };
  harness.settings.maxConcurrentJobs = 1;
  const Job job = harness.makeJob("clip.mov"), next = harness.makeJob("next.mov");
  harness.start().add({job, next});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  EXPECT_EQ(harness.log.of(job.id).back().status, cancelled);
  harness.log.waitFor(next.id, done);
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, calling, cancelled));
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.md"));
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.json"));
}

TEST_F(JobRun, AnAnswerThatComesDespiteTheCancelIsDropped) {
  Gate gate;
  bool first = true;
  harness.answer = [&](const VisionRequest&, const std::stop_token&) {
    if (std::exchange(first, false)) gate.pass();
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
  };
  harness.settings.maxConcurrentJobs = 1;
  const Job job = harness.makeJob("clip.mov"), next = harness.makeJob("next.mov");
  harness.start().add({job, next});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  gate.open();
  harness.log.waitFor(next.id, done);
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, calling, cancelled));
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.json"));
}

TEST_F(JobRun, CancellingDuringTheExtractionEndsTheRunBeforeTheModelIsAsked) {
  Gate gate;
  harness.stages.extractFrames = [&](const fs::path& clip, const SamplingConfig&, const ExtractionProgress&,
                                     const std::stop_token&) {
    if (clip.filename() == "clip.mov") gate.pass();
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {}};
  };
  harness.settings.maxConcurrentJobs = 1;
  const Job job = harness.makeJob("clip.mov"), next = harness.makeJob("next.mov");
  harness.start().add({job, next});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  gate.open();
  harness.log.waitFor(next.id, done);
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, cancelled));
}

TEST_F(JobRun, ACancelThatArrivesWhileTheFilesAreWrittenFindsTheJobDone) {
  Gate gate;
  harness.stages.writeDescription = [&](const auto&...) {
    gate.pass();
    return std::vector<fs::path>{};
  };
  const Job job = harness.makeJob("clip.mov");
  harness.start().add({job});
  gate.waitForArrivals(1);
  test::WatchedThread canceller([&] { harness.orchestrator().cancel(job.id); });
  canceller.waitUntilItWaits();
  EXPECT_FALSE(canceller.hasEnded());
  gate.open();
  canceller.join();
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, calling, writing, done));
}

TEST_F(JobRun, AnAnswerThatCannotBeReadFailsAndIsKept) {
  answerWith("I am sorry, no JSON today");
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_THAT(*end.error, testing::StartsWith("Could not parse model response: could not decode JSON: "));
  EXPECT_EQ(*end.rawResponse, "I am sorry, no JSON today");
  EXPECT_TRUE(end.frames);
  EXPECT_FALSE(end.result);
  EXPECT_EQ(end.progress, 0.85);
  EXPECT_THAT(test::namesIn(harness.folder.path()), ElementsAre("clip.mov"));
}

TEST_F(JobRun, AnAnswerWithoutASummaryFailsAndIsKept) {
  answerWith(R"({"shots": [{}], "global": {}})");
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_EQ(end.error, "Generated description failed schema validation: missing 'summary'");
  EXPECT_TRUE(end.rawResponse);
}

TEST_F(JobRun, ABlindAnswerLeavesNothingOnDisk) {
  answerWith(R"({"summary": "No frames provided.", "shots": [{}], "global": {}})", "text-only");
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_THAT(*end.error, testing::StartsWith("text-only returned no visual analysis"));
  EXPECT_TRUE(end.rawResponse);
  EXPECT_THAT(test::namesIn(harness.folder.path()), ElementsAre("clip.mov"));
}

TEST_F(JobRun, AFailedWriteFailsTheJobWithItsAnswerKept) {
  harness.stages.writeDescription = [&](const auto&...) -> std::vector<fs::path> {
    throw TQError::outputWriteFailed("/clips/clip.description.md", "No space left on device");
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), failed);
  EXPECT_EQ(end.error, "Could not write output file clip.description.md: No space left on device");
  EXPECT_TRUE(end.rawResponse);
  EXPECT_FALSE(end.result);
}

TEST_F(JobRun, AFailedPosterIsDropped) {
  harness.stages.writePoster = [](const auto&...) -> std::optional<fs::path> {
    throw SystemError(28, std::string("poster"));
  };
  EXPECT_EQ(harness.runToEnd(harness.makeJob("clip.mov"), done).error, std::nullopt);
}

TEST_F(JobRun, ThePosterIsTheMiddleFrame) {
  for (const auto& [count, middle] : {std::pair(1, "jpeg-0"), std::pair(2, "jpeg-1"), std::pair(5, "jpeg-2")}) {
    harness.frameCount = static_cast<std::size_t>(count);
    const std::string stem = "clip" + std::to_string(count);
    harness.runToEnd(harness.makeJob(stem + ".mov"), done);
    EXPECT_EQ(test::contentOf(harness.folder / (stem + ".description.jpg")), middle);
  }
}

TEST_F(JobRun, WithoutFramesThereIsNoPoster) {
  harness.frameCount = 0;
  harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.jpg"));
  EXPECT_TRUE(fs::exists(harness.folder / "clip.description.json"));
}

TEST_F(JobRun, UnderASkippingPolicyThePaidWorkRunsAllTheSame) {
  harness.folder.write("clip.description.md", "old");
  harness.folder.write("clip.description.json", "old");
  int asked = 0;
  const auto answer = harness.answer;
  harness.answer = [&](const VisionRequest& request, std::stop_token stop) {
    ++asked;
    return answer(request, std::move(stop));
  };
  harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(asked, 1);
  EXPECT_EQ(test::contentOf(harness.folder / "clip.description.md"), "old");
  EXPECT_EQ(test::contentOf(harness.folder / "clip.description.json"), "old");
}

TEST_F(JobRun, AnOverrideReplacesTheConfiguredOutput) {
  harness.folder.write("clip.description.md", "old");
  Job job = harness.makeJob("clip.mov");
  job.outputOverride = OutputConfig{
      .format = OutputFormat::markdown, .conflictPolicy = ConflictPolicy::overwrite, .sidecarDirectory = {}};
  harness.runToEnd(job, done);
  EXPECT_THAT(test::contentOf(harness.folder / "clip.description.md"), testing::StartsWith("# clip\n"));
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.json"));
}

TEST_F(JobRun, ALaterStageSeesSettingsThatChangedMeanwhile) {
  Gate gate;
  harness.answer = [&](const VisionRequest&, const std::stop_token& stop) {
    gate.pass(stop);
    return VisionResponse{.rawText = test::goodAnswer(), .modelId = "m", .inputTokens = {}, .outputTokens = {}};
  };
  const Job job = harness.makeJob("clip.mov");
  harness.start().add({job});
  gate.waitForArrivals(1);
  harness.settings.output.format = OutputFormat::json;
  harness.orchestrator().updateSettings(harness.settings);
  gate.open();
  harness.log.waitFor(job.id, done);
  EXPECT_FALSE(fs::exists(harness.folder / "clip.description.md"));
  EXPECT_TRUE(fs::exists(harness.folder / "clip.description.json"));
}

TEST_F(JobRun, ANameThatIsNotUTF8IsDescribedWithAReplacementCharacter) {
  const Job end = harness.runToEnd(harness.makeJob("caf\xE9.mov"), done);
  EXPECT_EQ(end.result->source.filename, "caf\uFFFD.mov");
}

TEST_F(JobRun, ManyJobsInterleaveWithoutMixingTheirResults) {
  harness.settings.maxConcurrentJobs = 8;
  harness.settings.providerId = "mock";
  std::vector<Job> jobs;
  for (int number = 0; number < 40; ++number)
    jobs.push_back(harness.makeJob("clip" + std::to_string(number) + ".mov"));
  harness.start().add(jobs);
  for (const Job& job : jobs) {
    const Job end = harness.log.waitFor(job.id, done);
    EXPECT_EQ(end.result->source.filename, job.sourceURL.filename().string());
    EXPECT_THAT(end.result->summary, HasSubstr(job.sourceURL.filename().string()));
  }
}

}  // namespace
}  // namespace tq

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/PipelineHarness.hpp"
#include "TQCore/TQError.hpp"
#include "TQPersistence/SecretAccounts.hpp"

namespace tq {
namespace {

using test::Gate;
using test::PipelineHarness;
using testing::ElementsAre;
using testing::HasSubstr;
using enum JobStatus;
namespace fs = std::filesystem;

/// The frame number that the harness wrote into a frame.
std::string nameOf(ByteView jpeg) {
  return std::string(textOf(jpeg));
}

class DetectionStages : public testing::Test {
 protected:
  PipelineHarness harness;
};

TEST_F(DetectionStages, StayOutWhileTheirSettingsAreOff) {
  harness.stages.detectFaces = [](const auto&...) {
    ADD_FAILURE() << "nobody asked for faces";
    return std::vector<FaceBox>{};
  };
  harness.stages.recognizeText = [](const auto&...) {
    ADD_FAILURE() << "nobody asked for text";
    return std::vector<std::string>{};
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(end.result->shots[0].faces, std::nullopt);
  EXPECT_EQ(end.result->shots[0].onScreenText, std::nullopt);
}

TEST_F(DetectionStages, YieldNothingWhereThisProgramHasNone) {
  harness.settings.faceDetectionEnabled = true;
  harness.settings.ocrEnabled = true;
  harness.settings.geocodingEnabled = true;
  harness.settings.transcriptionEnabled = true;
  harness.gps = GPS{.latitude = 1, .longitude = 2, .altitudeMeters = {}, .placeName = {}};
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(end.result->shots[0].faces, std::nullopt);
  EXPECT_EQ(end.result->shots[0].onScreenText, std::nullopt);
  EXPECT_EQ(end.result->source.gps->placeName, std::nullopt);
  EXPECT_EQ(end.result->transcript, std::nullopt);
}

TEST_F(DetectionStages, FacesReachTheShotOfTheirFrameAndAFailedFrameHasNoEntry) {
  harness.settings.faceDetectionEnabled = true;
  harness.stages.detectFaces = [](ByteView jpeg, const std::stop_token&) -> std::vector<FaceBox> {
    if (nameOf(jpeg) == "jpeg-1") throw TQError::frameExtractionFailed("face detection failed");
    return {{.x = 0.1, .y = 0.2, .width = 0.3, .height = 0.4, .confidence = 0.9}};
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  ASSERT_TRUE(end.result->shots[0].faces);
  EXPECT_EQ(end.result->shots[0].faces->at(0).x, 0.1);
  EXPECT_EQ(end.result->shots[1].faces, std::nullopt);
}

TEST_F(DetectionStages, AFrameWithoutFacesGetsAnEmptyListAndOneWithoutTextGetsNone) {
  harness.settings.faceDetectionEnabled = true;
  harness.settings.ocrEnabled = true;
  harness.stages.detectFaces = [](const auto&...) { return std::vector<FaceBox>{}; };
  harness.stages.recognizeText = [](ByteView jpeg, const std::stop_token&) {
    return nameOf(jpeg) == "jpeg-0" ? std::vector<std::string>{"EXIT"} : std::vector<std::string>{};
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(end.result->shots[0].faces, std::vector<FaceBox>{});
  EXPECT_EQ(end.result->shots[0].onScreenText, std::vector<std::string>{"EXIT"});
  EXPECT_EQ(end.result->shots[1].onScreenText, std::nullopt);
}

TEST_F(DetectionStages, AFrameWhoseTextCannotBeReadHasNoEntry) {
  harness.settings.ocrEnabled = true;
  harness.stages.recognizeText = [](ByteView jpeg, const std::stop_token&) -> std::vector<std::string> {
    if (nameOf(jpeg) == "jpeg-0") throw TQError::frameExtractionFailed("text recognition failed");
    return {"EXIT"};
  };
  const Job end = harness.runToEnd(harness.makeJob("clip.mov"), done);
  EXPECT_EQ(end.result->shots[0].onScreenText, std::nullopt);
  EXPECT_EQ(end.result->shots[1].onScreenText, std::vector<std::string>{"EXIT"});
}

TEST_F(DetectionStages, AllFacesAreLookedForBeforeAnyText) {
  harness.settings.faceDetectionEnabled = true;
  harness.settings.ocrEnabled = true;
  std::atomic<int> faces = 0;
  harness.frameCount = 6;
  harness.stages.detectFaces = [&](const auto&...) {
    ++faces;
    return std::vector<FaceBox>{};
  };
  harness.stages.recognizeText = [&](const auto&...) {
    EXPECT_EQ(faces, 6);
    return std::vector<std::string>{};
  };
  harness.runToEnd(harness.makeJob("clip.mov"), done);
}

TEST_F(DetectionStages, ACancelEndsThem) {
  harness.settings.faceDetectionEnabled = true;
  Gate gate;
  harness.stages.detectFaces = [&](ByteView, const std::stop_token& stop) {
    gate.pass(stop);
    return std::vector<FaceBox>{};
  };
  const Job job = harness.makeJob("clip.mov");
  harness.start().add({job});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  harness.discard();
  EXPECT_THAT(harness.log.statusesOf(job.id), ElementsAre(extracting, calling, cancelled));
}

class ScriptedTranscription final : public TranscriptionProvider {
 public:
  using Answer = std::function<TranscriptionResponse(const TranscriptionRequest&, std::stop_token)>;
  explicit ScriptedTranscription(Answer answer) : answer_(std::move(answer)) {}
  const std::string& providerId() const override { return providerId_; }
  const std::string& modelId() const override { return modelId_; }
  TranscriptionResponse transcribe(const TranscriptionRequest& request, std::stop_token stop) const override {
    return answer_(request, std::move(stop));
  }

 private:
  std::string providerId_ = "scripted-ears";
  std::string modelId_ = "configured-ears";
  Answer answer_;
};

class TranscriptionStages : public testing::Test {
 protected:
  TranscriptionStages() {
    harness.settings.transcriptionEnabled = true;
    harness.stages.transcription = TranscriptionStage{
        .makeProvider =
            [this](const AppSettings&, const std::string& key) {
              keys.push_back(key);
              if (providerFails) throw TQError::apiKeyMissing("openai-whisper");
              return std::make_unique<ScriptedTranscription>(
                  [this](const TranscriptionRequest& request, std::stop_token stop) {
                    requests.push_back(request);
                    return heard(request, std::move(stop));
                  });
            },
        .hasAudioTrack =
            [this](const auto&...) {
              if (trackFails) throw TQError::frameExtractionFailed("unreadable");
              return audible;
            },
        .extractAudio =
            [this](const auto&...) {
              if (extractionFails) throw TQError::frameExtractionFailed("no audio track");
              return fs::path("/tmp/audio.m4a");
            },
        .cleanup = [this](const fs::path& audio) { cleaned.push_back(audio); },
    };
  }

  Job run() { return harness.runToEnd(harness.makeJob("clip.mov"), done); }

  bool providerFails = false, trackFails = false, audible = true, extractionFails = false;
  std::vector<std::string> keys;
  std::vector<TranscriptionRequest> requests;
  std::vector<fs::path> cleaned;
  ScriptedTranscription::Answer heard = [](const auto&...) {
    return TranscriptionResponse{.text = "Good morning.", .modelId = "answering-ears", .language = {}, .speakers = {}};
  };
  PipelineHarness harness;
};

TEST_F(TranscriptionStages, StayOutWhileTheSettingIsOff) {
  harness.settings.transcriptionEnabled = false;
  EXPECT_EQ(run().result->transcript, std::nullopt);
  EXPECT_TRUE(keys.empty());
}

TEST_F(TranscriptionStages, PutTheTranscriptIntoRecordAndPrompt) {
  harness.secrets->set("dg-key", SecretAccounts::transcriptionAPIKey);
  heard = [](const auto&...) {
    return TranscriptionResponse{.text = "Good morning.",
                                 .modelId = "answering-ears",
                                 .language = "en",
                                 .speakers = std::vector<TranscriptSpeakerTurn>{
                                     {.speaker = 0, .startSeconds = 0, .endSeconds = 1, .text = "Good morning."}}};
  };
  std::string prompt;
  const auto answer = harness.answer;
  harness.answer = [&](const VisionRequest& request, std::stop_token stop) {
    prompt = request.userPrompt;
    return answer(request, std::move(stop));
  };
  const auto transcript = run().result->transcript;
  ASSERT_TRUE(transcript);
  EXPECT_EQ(transcript->text, "Good morning.");
  EXPECT_EQ(transcript->provider, "scripted-ears");
  EXPECT_EQ(transcript->model, "answering-ears");
  EXPECT_EQ(transcript->language, "en");
  EXPECT_EQ(transcript->speakers->size(), 1u);
  EXPECT_THAT(prompt, HasSubstr("<<<TRANSCRIPT\nGood morning.\nTRANSCRIPT>>>"));
  EXPECT_THAT(keys, ElementsAre("dg-key"));
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0].audioURL, "/tmp/audio.m4a");
  EXPECT_EQ(requests[0].mimeType, "audio/m4a");
  EXPECT_EQ(requests[0].language, std::nullopt);
  EXPECT_EQ(requests[0].prompt, std::nullopt);
  EXPECT_THAT(cleaned, ElementsAre("/tmp/audio.m4a"));
}

TEST_F(TranscriptionStages, KeepTheLanguageAskedForWhereTheAnswerNamesNone) {
  harness.settings.transcriptionLanguage = "de";
  EXPECT_EQ(run().result->transcript->language, "de");
  EXPECT_EQ(requests.at(0).language, "de");
}

TEST_F(TranscriptionStages, PreferTheLanguageThatTheAnswerNames) {
  harness.settings.transcriptionLanguage = "de";
  heard = [](const auto&...) {
    return TranscriptionResponse{.text = "Hi.", .modelId = "answering-ears", .language = "en", .speakers = {}};
  };
  EXPECT_EQ(run().result->transcript->language, "en");
}

TEST_F(TranscriptionStages, MakeNoRequestForASilentClip) {
  audible = false;
  EXPECT_EQ(run().result->transcript, std::nullopt);
  EXPECT_TRUE(requests.empty());
  EXPECT_TRUE(cleaned.empty());
}

TEST_F(TranscriptionStages, LoseOnlyTheTranscriptWhenThereIsNoProvider) {
  providerFails = true;
  EXPECT_EQ(run().result->transcript, std::nullopt);
}

TEST_F(TranscriptionStages, LoseOnlyTheTranscriptWhenTheTracksCannotBeRead) {
  trackFails = true;
  EXPECT_EQ(run().result->transcript, std::nullopt);
  EXPECT_TRUE(requests.empty());
}

TEST_F(TranscriptionStages, LoseOnlyTheTranscriptWhenTheAudioCannotBeExtracted) {
  extractionFails = true;
  EXPECT_EQ(run().result->transcript, std::nullopt);
  EXPECT_TRUE(cleaned.empty());
}

TEST_F(TranscriptionStages, CleanUpWhenTheCallFails) {
  heard = [](const auto&...) -> TranscriptionResponse { throw TQError::providerTransport("down"); };
  EXPECT_EQ(run().result->transcript, std::nullopt);
  EXPECT_THAT(cleaned, ElementsAre("/tmp/audio.m4a"));
}

TEST_F(TranscriptionStages, KeepTheTranscriptWhenTheCleanUpFails) {
  harness.stages.transcription->cleanup = [](const fs::path&) { throw TQError::frameExtractionFailed("busy"); };
  EXPECT_TRUE(run().result->transcript);
}

TEST_F(TranscriptionStages, AreMadeFromTheSettingsInForce) {
  harness.settings.transcriptionModel = "nova-2";
  const auto make = harness.stages.transcription->makeProvider;
  harness.stages.transcription->makeProvider = [&](const AppSettings& settings, const std::string& key) {
    EXPECT_EQ(settings, harness.settings);
    return make(settings, key);
  };
  run();
  EXPECT_THAT(keys, ElementsAre(""));
}

/// Everything that a run waits for lets other operations step in meanwhile: each stage here makes one by itself.
TEST_F(TranscriptionStages, AndAllOtherWaitsHoldUpNobody) {
  harness.gps = GPS{.latitude = 1, .longitude = 2, .altitudeMeters = {}, .placeName = {}};
  harness.settings.geocodingEnabled = harness.settings.faceDetectionEnabled = harness.settings.ocrEnabled = true;
  std::atomic<int> waits = 0;
  const auto stepIn = [&] {
    harness.orchestrator().report(0.5, UUID::random());
    ++waits;
  };
  auto& stages = harness.stages;
  stages.extractFrames = [&](const auto&...) {
    stepIn();
    return Extraction{.frames = PipelineHarness::frames(1), .meta = {.gps = harness.gps}};
  };
  stages.detectFaces = [&](const auto&...) {
    stepIn();
    return std::vector<FaceBox>{};
  };
  stages.recognizeText = [&](const auto&...) {
    stepIn();
    return std::vector<std::string>{};
  };
  stages.geocode = [&](const auto&...) {
    stepIn();
    return GeocodingResponse{"Somewhere"};
  };
  stages.transcription->hasAudioTrack = [&](const auto&...) {
    stepIn();
    return true;
  };
  stages.transcription->extractAudio = [&](const auto&...) {
    stepIn();
    return fs::path("/tmp/audio.m4a");
  };
  heard = [&](const auto&...) {
    stepIn();
    return TranscriptionResponse{.text = "Hi.", .modelId = "answering-ears", .language = {}, .speakers = {}};
  };
  harness.answer = [&, answer = harness.answer](const VisionRequest& request, std::stop_token stop) {
    stepIn();
    return answer(request, std::move(stop));
  };
  run();
  EXPECT_EQ(waits, 8);
}

TEST_F(TranscriptionStages, CleanUpWhenTheCallIsCancelled) {
  Gate gate;
  heard = [&](const TranscriptionRequest&, const std::stop_token& stop) -> TranscriptionResponse {
    gate.pass(stop);
    return {};
  };
  const Job job = harness.makeJob("clip.mov");
  harness.start().add({job});
  gate.waitForArrivals(1);
  harness.orchestrator().cancel(job.id);
  harness.discard();
  EXPECT_THAT(cleaned, ElementsAre("/tmp/audio.m4a"));
  EXPECT_EQ(harness.log.of(job.id).back().status, cancelled);
}

}  // namespace
}  // namespace tq

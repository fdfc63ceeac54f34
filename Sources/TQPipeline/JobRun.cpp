// The run of one job, from clip to sidecars: the part of `JobOrchestrator` that reads from top to bottom.

#include <algorithm>
#include <mutex>
#include <utility>

#include "TQCore/BlindResponseDetector.hpp"
#include "TQCore/FileHash.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/DescriptionBuilder.hpp"
#include "TQDescription/FaceAttachment.hpp"
#include "TQPersistence/SecretAccounts.hpp"
#include "TQPipeline/ConfiguredEngine.hpp"
#include "TQPipeline/JobOrchestrator.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "TQVision/MockProvider.hpp"
#include "TQVision/PromptBuilder.hpp"
#include "TQVision/ProviderProfile.hpp"
#include "TQVision/VisionDefaults.hpp"

namespace tq {

namespace {

constexpr double extractionShare = 0.4;  // of a job's progress
constexpr double framesInHand = 0.45;
constexpr double providerAnswered = 0.85;
constexpr double temperature = 0.2;
constexpr std::size_t hashChunkBytes = 1'048'576;

/// The result of optional work: a failure gives nothing, a cancellation passes through.
template <class Work>
auto attempt(Work&& work) -> std::optional<decltype(work())> {
  try {
    return work();
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

/// The address that a setting holds, or the standard one where no URL can be made of it.
WebURL urlOr(const std::string& setting, const WebURL& standard) {
  return WebURL::parse(setting).value_or(standard);
}

/// Looks at every frame, several at once, and gathers what was found by frame index. A frame on which `look` failed has
/// no entry.
template <class Finding, class Look>
std::map<std::int64_t, Finding> lookAtFrames(const std::vector<ExtractedFrame>& frames, std::size_t width,
                                             const std::stop_token& stop, const Look& look) {
  std::mutex mutex;
  std::map<std::int64_t, Finding> found;
  forEachWindowed(frames.size(), width, stop, [&](std::size_t index, const std::stop_token& frameStop) {
    if (auto finding = attempt([&] { return look(ByteView(frames[index].jpegData), frameStop); })) {
      std::lock_guard lock(mutex);
      found.emplace(static_cast<std::int64_t>(index), std::move(*finding));
    }
  });
  return found;
}

}  // namespace

void JobOrchestrator::run(Job job, RunNumber number, const std::stop_token& stop) {
  auto held = monitor_.enter();
  const UUID id = job.id;
  try {
    perform(job, held, stop);
  } catch (const Cancelled&) {
    // Whoever cancelled has set and reported the status.
  } catch (const std::exception& error) {
    recordFailure(std::move(job), error, stop);
  }
  endRun(id, number);
}

void JobOrchestrator::recordFailure(Job job, const std::exception& error, const std::stop_token& stop) {
  // A transport may report an interrupted request as an error of its own. The run's own token is asked as well: a retry
  // that ended first has taken the id out of the set.
  if (stop.stop_requested() || cancelled_.contains(job.id)) return;
  job.progress = current_.at(job.id).progress;
  job.status = JobStatus::failed;
  job.error = userFacingDescription(error);
  publish(job);
}

void JobOrchestrator::perform(Job& job, Monitor::Held& held, const std::stop_token& stop) {
  throwIfStopped(stop);
  job.engineSnapshot = currentEngineSnapshot(settings_);
  job.status = JobStatus::extracting;
  job.progress = 0;
  publish(job);

  Extraction extraction = sampleFrames(job, held, stop);
  throwIfStopped(stop);
  job.frames = Frames(std::move(extraction.frames));
  job.status = JobStatus::calling;
  job.progress = framesInHand;
  publish(job);

  const FaceMap faces = runFaceDetection(job.frames, held, stop);
  const TextMap texts = runOCR(job.frames, held, stop);
  SourceMetadata source = describeSource(job.sourceURL, extraction.meta, held, stop);
  std::optional<TranscriptInfo> transcript = runTranscription(job.sourceURL, held, stop);

  const std::unique_ptr<VisionProvider> provider = buildProvider();
  const VisionRequest request{
      .systemPrompt = PromptBuilder::systemPrompt(settings_.promptProfile),
      .userPrompt = PromptBuilder::userPrompt(job.frames->size(), source,
                                              transcript ? std::optional(transcript->text) : std::nullopt),
      .frames = job.frames,
      .sourceContext = source,
      .samplingStrategy = settings_.sampling.strategy,
      .maxTokens = settings_.maxOutputTokens,
      .temperature = temperature,
  };
  const VisionResponse response = held.whileSuspended([&] { return provider->describe(request, stop); });

  throwIfStopped(stop);
  finish(job, response, provider->providerId(), std::move(source), std::move(transcript), faces, texts);
}

/// From the model's answer to the files, without a suspension: a cancel that arrives meanwhile finds the job done.
void JobOrchestrator::finish(Job& job, const VisionResponse& response, const std::string& providerId,
                             SourceMetadata source, std::optional<TranscriptInfo> transcript, const FaceMap& faces,
                             const TextMap& texts) {
  // Kept before it is parsed, so that an answer that cannot be read can still be shown.
  job.rawResponse = Shared<std::string>(response.rawText);
  job.status = JobStatus::writing;
  job.progress = providerAnswered;
  publish(job);

  const EngineMetadata engine{.provider = providerId,
                              .model = response.modelId,
                              .framesAnalyzed = static_cast<std::int64_t>(job.frames->size()),
                              .samplingStrategy = std::string(rawValue(settings_.sampling.strategy))};
  DescriptionResult result =
      DescriptionBuilder::build(response.rawText, std::move(source), engine, std::move(transcript));
  result = attachOnScreenText(attachFaces(std::move(result), faces), texts);
  if (BlindResponseDetector::looksBlind(result)) throw TQError::modelAppearsBlind(response.modelId);

  const OutputConfig output = job.outputOverride.value_or(settings_.output);
  stages_.writeDescription(result, job.sourceURL, output);
  if (!job.frames->empty() && stages_.writePoster) {
    const Bytes& middle = (*job.frames)[job.frames->size() / 2].jpegData;
    attempt([&] { return stages_.writePoster(middle, job.sourceURL, output); });
  }

  job.result = Shared<DescriptionResult>(std::move(result));
  job.status = JobStatus::done;
  job.progress = 1;
  publish(job);
}

Extraction JobOrchestrator::sampleFrames(const Job& job, Monitor::Held& held, const std::stop_token& stop) {
  const SamplingConfig sampling = settings_.sampling;
  const ExtractionProgress progress = [this, id = job.id](double fraction) {
    // Posted, so that decoding never waits for another job that holds the orchestrator.
    progressQueue_.post([this, id, fraction] { report(fraction * extractionShare, id); });
  };
  return held.whileSuspended([&] {
    // Whatever the outcome, what was reported has arrived before the status moves on.
    struct Flush {
      SerialQueue& queue;
      ~Flush() { queue.flush(); }
    } const flush{progressQueue_};
    return stages_.extractFrames(job.sourceURL, sampling, progress, stop);
  });
}

JobOrchestrator::FaceMap JobOrchestrator::runFaceDetection(const Frames& frames, Monitor::Held& held,
                                                           const std::stop_token& stop) {
  if (!settings_.faceDetectionEnabled || !stages_.detectFaces) return {};
  return held.whileSuspended(
      [&] { return lookAtFrames<std::vector<FaceBox>>(*frames, stages_.processorCount, stop, stages_.detectFaces); });
}

JobOrchestrator::TextMap JobOrchestrator::runOCR(const Frames& frames, Monitor::Held& held,
                                                 const std::stop_token& stop) {
  if (!settings_.ocrEnabled || !stages_.recognizeText) return {};
  TextMap texts = held.whileSuspended([&] {
    return lookAtFrames<std::vector<std::string>>(*frames, stages_.processorCount, stop, stages_.recognizeText);
  });
  std::erase_if(texts, [](const auto& entry) { return entry.second.empty(); });
  return texts;
}

SourceMetadata JobOrchestrator::describeSource(const std::filesystem::path& sourceURL, const VideoMetadata& meta,
                                               Monitor::Held& held, const std::stop_token& stop) {
  SourceMetadata source;
  source.fileSizeBytes = fileSize(sourceURL);
  source.gps = meta.gps;
  if (source.gps) source.gps->placeName = findPlaceName(*source.gps, held, stop);
  source.sha256 = attempt([&] { return FileHash::sha256Hex(sourceURL, hashChunkBytes, stop); });
  source.filename = validUTF8(sourceURL.filename().string());
  source.durationSeconds = meta.duration;
  source.resolution = std::to_string(meta.width) + "x" + std::to_string(meta.height);
  source.frameRate = meta.frameRate;
  source.codec = meta.codec;
  source.describedAt = stages_.clock->now();
  return source;
}

std::optional<std::string> JobOrchestrator::findPlaceName(const GPS& gps, Monitor::Held& held,
                                                          const std::stop_token& stop) {
  if (!settings_.geocodingEnabled || !stages_.geocode) return std::nullopt;
  return held.whileSuspended([&] {
    return attempt(
        [&] { return stages_.geocode({.latitude = gps.latitude, .longitude = gps.longitude}, stop).displayName; });
  });
}

std::optional<TranscriptInfo> JobOrchestrator::runTranscription(const std::filesystem::path& sourceURL,
                                                                Monitor::Held& held, const std::stop_token& stop) {
  if (!settings_.transcriptionEnabled || !stages_.transcription) return std::nullopt;
  const TranscriptionStage& stage = *stages_.transcription;
  const auto provider =
      attempt([&] { return stage.makeProvider(settings_, keyFor(SecretAccounts::transcriptionAPIKey)); });
  if (!provider) return std::nullopt;

  const bool audible = held.whileSuspended(
      [&] { return attempt([&] { return stage.hasAudioTrack(sourceURL, stop); }).value_or(false); });
  if (!audible) return std::nullopt;
  const auto audio = held.whileSuspended([&] { return attempt([&] { return stage.extractAudio(sourceURL, stop); }); });
  if (!audio) return std::nullopt;

  const struct Cleanup {
    const TranscriptionStage& stage;
    const std::filesystem::path& audio;
    ~Cleanup() {
      try {
        stage.cleanup(audio);
      } catch (const std::exception&) {
        // A temporary file that stays is no reason to lose the transcript.
      }
    }
  } cleanup{stage, *audio};

  TranscriptionRequest request{.audioURL = *audio, .mimeType = "audio/m4a", .language = {}, .prompt = {}};
  if (!settings_.transcriptionLanguage.empty()) request.language = settings_.transcriptionLanguage;
  auto response = held.whileSuspended([&] { return attempt([&] { return (*provider)->transcribe(request, stop); }); });
  if (!response) return std::nullopt;
  return TranscriptInfo{.text = std::move(response->text),
                        .provider = (*provider)->providerId(),
                        .model = std::move(response->modelId),
                        .language = response->language ? std::move(response->language) : std::move(request.language),
                        .speakers = std::move(response->speakers)};
}

/// A key that is missing or cannot be read is the empty text here: the factory knows who needs one.
std::string JobOrchestrator::keyFor(const std::string& account) const {
  try {
    return secrets_->get(account).value_or("");
  } catch (const std::exception&) {
    return "";
  }
}

std::unique_ptr<VisionProvider> JobOrchestrator::buildProvider() const {
  const double timeout = settings_.requestTimeoutSeconds;
  if (settings_.providerId == rawValue(ProviderProfile::anthropic))
    return stages_.providers.makeAnthropic(keyFor(SecretAccounts::anthropicAPIKey), settings_.modelId,
                                           urlOr(settings_.anthropicBaseURL, AnthropicDefaults::defaultBaseURL()),
                                           timeout);
  if (settings_.providerId == rawValue(ProviderProfile::openai))
    return stages_.providers.makeOpenAI(keyFor(SecretAccounts::openaiAPIKey), settings_.modelId,
                                        urlOr(settings_.openaiBaseURL, OpenAIDefaults::openAIBaseURL()), timeout);
  if (settings_.providerId == rawValue(ProviderProfile::mock))
    return std::make_unique<MockProvider>(settings_.providerId, MockDefaults::defaultModel);
  throw TQError::apiKeyMissing(settings_.providerId);
}

}  // namespace tq

#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/Models/OutputConfig.hpp"
#include "TQFrames/FrameExtractor.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/Network/URLSession.hpp"
#include "TQVision/GeocodingProvider.hpp"
#include "TQVision/ProviderFactory.hpp"
#include "TQVision/TranscriptionProvider.hpp"

namespace tq {

/// The way from a clip's sound to a transcript. The audio file is temporary; whoever extracted it cleans it up.
struct TranscriptionStage {
  std::function<std::unique_ptr<TranscriptionProvider>(const AppSettings& settings, const std::string& apiKey)>
      makeProvider;
  std::function<bool(const std::filesystem::path& clip, std::stop_token stop)> hasAudioTrack;
  std::function<std::filesystem::path(const std::filesystem::path& clip, std::stop_token stop)> extractAudio;
  std::function<void(const std::filesystem::path& audio)> cleanup;
};

/// What the run of a job calls out to. `standardJobStages()` gives the real ones; whoever composes the program may
/// replace or wrap any of them. They are called from the threads of several jobs at once. All may throw; `Cancelled`
/// passes through every stage, optional ones included.
struct JobStages {
  std::shared_ptr<const Clock> clock;
  std::size_t processorCount = 1;  ///< how many frames are looked at side by side

  // Required: a failure ends the job.
  std::function<Extraction(const std::filesystem::path& clip, const SamplingConfig& config,
                           const ExtractionProgress& progress, std::stop_token stop)>
      extractFrames;
  ProviderFactory providers;
  std::function<std::vector<std::filesystem::path>(const DescriptionResult& result, const std::filesystem::path& clip,
                                                   const OutputConfig& config)>
      writeDescription;

  // Optional: a failure is dropped and the job goes on without. An empty function is a stage that this build does not
  // have, and its result is absent, whatever the settings ask for.
  std::function<std::vector<FaceBox>(ByteView jpegData, std::stop_token stop)> detectFaces;
  std::function<std::vector<std::string>(ByteView jpegData, std::stop_token stop)> recognizeText;
  std::function<GeocodingResponse(const GeocodingRequest& request, std::stop_token stop)> geocode;
  std::optional<TranscriptionStage> transcription;
  std::function<std::optional<std::filesystem::path>(ByteView jpegData, const std::filesystem::path& clip,
                                                     const OutputConfig& config)>
      writePoster;
};

/// The stages as the product runs them. Faces, on-screen text, place names and transcripts are not part of it yet.
/// All providers of the program share `session`.
JobStages standardJobStages(std::shared_ptr<URLSession> session);

}  // namespace tq

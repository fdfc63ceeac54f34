#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "TQCore/DefaultEndpoints.hpp"
#include "TQCore/DefaultModels.hpp"
#include "TQCore/Models/OutputConfig.hpp"
#include "TQCore/Models/PromptProfile.hpp"
#include "TQCore/Models/SamplingConfig.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQPersistence/AppSupportPaths.hpp"

namespace tq {

/// All that a user may configure. A new value holds the defaults. Ids are plain texts: an unknown one is kept unharmed.
/// In JSON every key may be missing and then keeps its default; a key that is there must have the right type and is
/// taken unclamped.
struct AppSettings {
  std::string providerId = "anthropic";
  std::string modelId = DefaultModels::anthropicVision;
  std::string anthropicBaseURL = DefaultEndpoints::anthropic;
  std::string openaiBaseURL = DefaultEndpoints::openAI;
  SamplingConfig sampling;
  OutputConfig output;
  std::int64_t maxConcurrentJobs = 2;  ///< below 1 counts as 1
  PromptProfile promptProfile = PromptProfile::standard;
  double requestTimeoutSeconds = 600.0;
  std::int64_t maxOutputTokens = 16384;
  bool transcriptionEnabled = false;
  std::string transcriptionProviderId = "openai-whisper";
  std::string transcriptionModel = DefaultModels::whisperOpenAI;
  std::string transcriptionCustomBaseURL;
  std::string transcriptionLanguage;
  bool geocodingEnabled = false;
  bool faceDetectionEnabled = false;
  bool ocrEnabled = false;
  bool embeddingsEnabled = false;
  std::string embeddingProviderId = "ollama";
  std::string embeddingModel = "nomic-embed-text";
  std::string embeddingBaseURL = DefaultEndpoints::ollama;
  bool watchFoldersEnabled = false;
  std::vector<std::string> watchedFolderPaths;
  std::vector<std::string> watchExclusionGlobs;

  bool operator==(const AppSettings&) const = default;
};
TQ_RECORD(AppSettings);

/// Reads and writes the settings file. Takes no lock: a save replaces the whole file in one step.
class SettingsStore {
 public:
  /// The user's settings file.
  explicit SettingsStore(AppSupportPaths paths) : url_([paths] { return paths.settingsURL(); }) {}

  /// Any other settings file.
  explicit SettingsStore(std::filesystem::path file) : url_([file] { return file; }) {}

  /// The defaults when the file is missing or cannot be used for any reason. Never fails.
  AppSettings load() const;

  /// Gives the file mode 0600 where the file system can. Throws `SystemError` when it cannot be written and `JSONError`
  /// when a value has no JSON form; the old file is whole then.
  void save(const AppSettings& settings) const;

 private:
  std::function<std::filesystem::path()> url_;
};

}  // namespace tq

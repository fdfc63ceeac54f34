#include "TQPersistence/Settings.hpp"

#include "TQCore/RecordCodec.hpp"
#include "TQPersistence/StoreFile.hpp"

namespace tq {

template <>
constexpr auto recordTable<AppSettings> = RecordTable{
    fieldWithDefault("providerId", &AppSettings::providerId),
    fieldWithDefault("modelId", &AppSettings::modelId),
    fieldWithDefault("anthropicBaseURL", &AppSettings::anthropicBaseURL),
    fieldWithDefault("openaiBaseURL", &AppSettings::openaiBaseURL),
    fieldWithDefault("sampling", &AppSettings::sampling),
    fieldWithDefault("output", &AppSettings::output),
    fieldWithDefault("maxConcurrentJobs", &AppSettings::maxConcurrentJobs),
    fieldWithDefault("promptProfile", &AppSettings::promptProfile),
    fieldWithDefault("requestTimeoutSeconds", &AppSettings::requestTimeoutSeconds),
    fieldWithDefault("maxOutputTokens", &AppSettings::maxOutputTokens),
    fieldWithDefault("transcriptionEnabled", &AppSettings::transcriptionEnabled),
    fieldWithDefault("transcriptionProviderId", &AppSettings::transcriptionProviderId),
    fieldWithDefault("transcriptionModel", &AppSettings::transcriptionModel),
    fieldWithDefault("transcriptionCustomBaseURL", &AppSettings::transcriptionCustomBaseURL),
    fieldWithDefault("transcriptionLanguage", &AppSettings::transcriptionLanguage),
    fieldWithDefault("geocodingEnabled", &AppSettings::geocodingEnabled),
    fieldWithDefault("faceDetectionEnabled", &AppSettings::faceDetectionEnabled),
    fieldWithDefault("ocrEnabled", &AppSettings::ocrEnabled),
    fieldWithDefault("embeddingsEnabled", &AppSettings::embeddingsEnabled),
    fieldWithDefault("embeddingProviderId", &AppSettings::embeddingProviderId),
    fieldWithDefault("embeddingModel", &AppSettings::embeddingModel),
    fieldWithDefault("embeddingBaseURL", &AppSettings::embeddingBaseURL),
    fieldWithDefault("watchFoldersEnabled", &AppSettings::watchFoldersEnabled),
    fieldWithDefault("watchedFolderPaths", &AppSettings::watchedFolderPaths),
    fieldWithDefault("watchExclusionGlobs", &AppSettings::watchExclusionGlobs),
};
TQ_RECORD_CODEC(AppSettings);

AppSettings SettingsStore::load() const {
  return readStoreFile<AppSettings>(url_());
}

void SettingsStore::save(const AppSettings& settings) const {
  writeStoreFile(url_(), storeText(encode(settings)), StoreFileMode::ownerOnlyIfPossible);
}

}  // namespace tq

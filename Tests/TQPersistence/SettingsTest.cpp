#include <gtest/gtest.h>
#include <limits>

#include "Support/FileSizeLimit.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQCore/SafeFile.hpp"
#include "TQPersistence/Settings.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

class SettingsStoreTest : public testing::Test {
 protected:
  AppSettings loaded(std::string_view content) const {
    folder.write("settings.json", content);
    return store.load();
  }

  TemporaryFolder folder;
  fs::path file = folder / "settings.json";
  SettingsStore store{file};
  AppSettings defaults;
};

/// A value that differs from the defaults in every field.
AppSettings unusualSettings() {
  return {.providerId = "openai",
          .modelId = "m",
          .anthropicBaseURL = "https://a.test/v1",
          .openaiBaseURL = "https://o.test",
          .sampling = {.strategy = SamplingStrategy::fixedInterval,
                       .intervalSeconds = 0.1,
                       .evenFrameCount = 1,
                       .maxFrames = 2,
                       .maxEdgePixels = 3,
                       .jpegQuality = 0.3},
          .output = {.format = OutputFormat::json,
                     .conflictPolicy = ConflictPolicy::suffix,
                     .sidecarDirectory = "/side cars/\xC3\xA9"},
          .maxConcurrentJobs = 0,
          .promptProfile = PromptProfile::unrestricted,
          .requestTimeoutSeconds = 12.5,
          .maxOutputTokens = -1,
          .transcriptionEnabled = true,
          .transcriptionProviderId = "deepgram",
          .transcriptionModel = "nova",
          .transcriptionCustomBaseURL = "http://t.test",
          .transcriptionLanguage = "de",
          .geocodingEnabled = true,
          .faceDetectionEnabled = true,
          .ocrEnabled = true,
          .embeddingsEnabled = true,
          .embeddingProviderId = "something else",
          .embeddingModel = "e",
          .embeddingBaseURL = "http://e.test",
          .watchFoldersEnabled = true,
          .watchedFolderPaths = {"/a", "/b"},
          .watchExclusionGlobs = {"*.tmp"}};
}

TEST(AppSettings, TheDefaultsAreTheseInTheirJSONForm) {
  EXPECT_EQ(encode(AppSettings{}), parseJSON(R"({
    "providerId": "anthropic", "modelId": "claude-sonnet-4-5",
    "anthropicBaseURL": "https://api.anthropic.com/v1", "openaiBaseURL": "https://api.openai.com",
    "sampling": {"strategy": "adaptive", "intervalSeconds": 5.0, "evenFrameCount": 8, "maxFrames": 12,
                 "maxEdgePixels": 1568, "jpegQuality": 0.85},
    "output": {"format": "both", "conflictPolicy": "skip-existing"},
    "maxConcurrentJobs": 2, "promptProfile": "standard", "requestTimeoutSeconds": 600.0, "maxOutputTokens": 16384,
    "transcriptionEnabled": false, "transcriptionProviderId": "openai-whisper", "transcriptionModel": "whisper-1",
    "transcriptionCustomBaseURL": "", "transcriptionLanguage": "",
    "geocodingEnabled": false, "faceDetectionEnabled": false, "ocrEnabled": false, "embeddingsEnabled": false,
    "embeddingProviderId": "ollama", "embeddingModel": "nomic-embed-text", "embeddingBaseURL": "http://localhost:11434",
    "watchFoldersEnabled": false, "watchedFolderPaths": [], "watchExclusionGlobs": []})"));
}

TEST(AppSettings, EqualValuesHaveEqualHashes) {
  EXPECT_EQ(hashOf(AppSettings{}), hashOf(AppSettings{}));
  EXPECT_NE(hashOf(AppSettings{}), hashOf(unusualSettings()));
}

TEST_F(SettingsStoreTest, AMissingFileGivesTheDefaultsAndStaysMissing) {
  EXPECT_EQ(store.load(), defaults);
  EXPECT_TRUE(namesIn(folder.path()).empty());
}

TEST_F(SettingsStoreTest, AnEmptyObjectGivesTheDefaults) {
  EXPECT_EQ(loaded("{}"), defaults);
}

TEST_F(SettingsStoreTest, AFileThatIsNoObjectGivesTheDefaults) {
  for (const char* content : {"", " ", "no json", "[]", "null", "{\"modelId\": \"m\"", "{\"modelId\": \"\xFF\"}"})
    EXPECT_EQ(loaded(content), defaults) << content;
}

TEST_F(SettingsStoreTest, AnOlderFileKeepsWhatItHasAndGetsDefaultsForTheRest) {
  AppSettings expected;
  expected.providerId = "openai";
  expected.modelId = "gpt-4o";
  expected.sampling.maxFrames = 3;
  expected.output.format = OutputFormat::markdown;
  EXPECT_EQ(loaded(R"({"providerId": "openai", "modelId": "gpt-4o",
      "sampling": {"strategy": "adaptive", "intervalSeconds": 5, "evenFrameCount": 8, "maxFrames": 3,
                   "maxEdgePixels": 1568, "jpegQuality": 0.85},
      "output": {"format": "markdown", "conflictPolicy": "skip-existing"}})"),
            expected);
}

TEST_F(SettingsStoreTest, EveryKeyIsReadByItsName) {
  const AppSettings unusual = unusualSettings();
  const JSONValue whole = encode(unusual);
  for (const auto& [key, value] : *whole.asObject()) {
    const AppSettings one = loaded(writeJSON(JSONValue::Object{{key, value}}, JSONLayout::compact));
    EXPECT_NE(one, defaults) << key;
    EXPECT_EQ(*encode(one).find(key), value) << key;
  }
}

TEST_F(SettingsStoreTest, OneKeyOfAWrongTypeLosesTheWholeFile) {
  for (const char* pair :
       {R"("requestTimeoutSeconds": "600")", R"("maxConcurrentJobs": 2.5)", R"("modelId": 5)", R"("ocrEnabled": 1)",
        R"("ocrEnabled": "true")", R"("watchedFolderPaths": "/a")", R"("watchedFolderPaths": ["/a", 5])",
        R"("sampling": [])", R"("output": {"format": "both"})", R"("promptProfile": "unknown")",
        R"("output": {"format": "pdf", "conflictPolicy": "suffix"})"})
    EXPECT_EQ(loaded(R"({"providerId": "openai", )" + std::string(pair) + "}"), defaults) << pair;
}

TEST_F(SettingsStoreTest, AnUnknownStrategyLosesTheWholeFile) {
  EXPECT_EQ(loaded(R"({"providerId": "openai", "sampling": {"strategy": "random", "intervalSeconds": 5,
      "evenFrameCount": 8, "maxFrames": 3, "maxEdgePixels": 1568, "jpegQuality": 0.85}})"),
            defaults);
}

TEST_F(SettingsStoreTest, ASamplingThatLacksAKeyLosesTheWholeFile) {
  EXPECT_EQ(loaded(R"({"providerId": "openai", "sampling": {"strategy": "adaptive"}})"), defaults);
}

TEST_F(SettingsStoreTest, NullCountsAsAbsent) {
  AppSettings expected;
  expected.providerId = "openai";
  EXPECT_EQ(loaded(R"({"providerId": "openai", "modelId": null, "sampling": null})"), expected);
}

TEST_F(SettingsStoreTest, NumbersAreTakenUnclamped) {
  const AppSettings settings =
      loaded(R"({"maxConcurrentJobs": 0, "requestTimeoutSeconds": -1, "maxOutputTokens": -9223372036854775808})");
  EXPECT_EQ(settings.maxConcurrentJobs, 0);
  EXPECT_EQ(settings.requestTimeoutSeconds, -1);
  EXPECT_EQ(settings.maxOutputTokens, std::numeric_limits<std::int64_t>::min());
}

TEST_F(SettingsStoreTest, UnknownIdsLoadAndSaveUnharmed) {
  store.save(loaded(R"({"providerId": "someone new"})"));
  EXPECT_EQ(store.load().providerId, "someone new");
}

TEST_F(SettingsStoreTest, UnknownKeysAreIgnoredAndGoneAfterTheNextSave) {
  const AppSettings settings = loaded(R"({"futureKey": {"deep": [1]}, "providerId": "openai"})");
  EXPECT_EQ(settings.providerId, "openai");
  store.save(settings);
  EXPECT_EQ(contentOf(file).find("futureKey"), std::string::npos);
}

TEST_F(SettingsStoreTest, WhatIsSavedIsLoadedAgain) {
  store.save(unusualSettings());
  EXPECT_EQ(store.load(), unusualSettings());
}

TEST_F(SettingsStoreTest, TheFileIsPrettySortedAndForItsOwnerAlone) {
  store.save(defaults);
  const std::string text = contentOf(file);
  EXPECT_LT(text.find("\"anthropicBaseURL\""), text.find("\"embeddingModel\""));
  EXPECT_LT(text.find("\"watchFoldersEnabled\""), text.find("\"watchedFolderPaths\""));
  EXPECT_NE(text.find("\n"), std::string::npos);
  EXPECT_EQ(text.find("sidecarDirectory"), std::string::npos) << "an absent value is left out";
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(SettingsStoreTest, ASaveNarrowsAWiderMode) {
  fs::permissions(folder.write("settings.json", "{}"), fs::perms(0644));
  store.save(defaults);
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600));
}

TEST_F(SettingsStoreTest, AFolderInPlaceOfTheFileGivesTheDefaultsAndFailsTheSave) {
  fs::create_directory(file);
  EXPECT_EQ(store.load(), defaults);
  EXPECT_THROW(store.save(defaults), SystemError);
}

TEST_F(SettingsStoreTest, AFileOfAbsurdSizeGivesTheDefaults) {
  const auto limit = static_cast<std::size_t>(SafeFile::maxMetadataBytes);
  const std::string body = R"({"providerId": "openai"})";
  EXPECT_EQ(loaded(body + std::string(limit - body.size(), ' ')).providerId, "openai") << "just within the limit";
  EXPECT_EQ(loaded(body + std::string(limit - body.size() + 1, ' ')), defaults);
}

TEST_F(SettingsStoreTest, EndlessNestingGivesTheDefaults) {
  EXPECT_EQ(loaded(R"({"futureKey": )" + std::string(1'000'000, '[')), defaults);
  EXPECT_EQ(loaded(R"({"futureKey": )" + std::string(100'000, '[') + std::string(100'000, ']') + "}"), defaults);
}

TEST_F(SettingsStoreTest, AFailedSaveLeavesTheOldFileWhole) {
  store.save(unusualSettings());
  AppSettings impossible;
  impossible.requestTimeoutSeconds = std::numeric_limits<double>::infinity();
  EXPECT_THROW(store.save(impossible), JSONError);
  EXPECT_EQ(store.load(), unusualSettings());
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"settings.json"});
}

TEST_F(SettingsStoreTest, ADiskThatIsFullIsReportedAndTheOldFileStaysWhole) {
  store.save(unusualSettings());
  {
    const FileSizeLimit limit(100);
    EXPECT_THROW(store.save(defaults), SystemError);
  }
  EXPECT_EQ(store.load(), unusualSettings());
  EXPECT_EQ(namesIn(folder.path()), std::vector<std::string>{"settings.json"});
}

TEST_F(SettingsStoreTest, ASaveMakesAMissingFolderAndReportsOneThatCannotBe) {
  SettingsStore(folder / "missing/settings.json").save(defaults);
  EXPECT_EQ(fs::status(folder / "missing").permissions(), fs::perms::owner_all);
  EXPECT_THROW(SettingsStore(folder.write("file", "") / "settings.json").save(defaults), SystemError);
}

TEST(SettingsStore, TheUsersStoreLivesInThePrivateFolder) {
  const TemporaryFolder base;
  const SettingsStore store{AppSupportPaths(base.path())};
  EXPECT_EQ(store.load(), AppSettings{});
  store.save(unusualSettings());
  EXPECT_EQ(store.load(), unusualSettings());
  EXPECT_TRUE(fs::exists(base / "tarquel/settings.json"));
}

}  // namespace
}  // namespace tq::test

#include <gtest/gtest.h>
#include <new>

#include "TQCore/TQError.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

TEST(TQError, FileNotFoundShowsThePathAsItIs) {
  EXPECT_EQ(TQError::fileNotFound("/My Clips/é.mov").description(), "File not found: /My Clips/é.mov");
}

TEST(TQError, UnsupportedFormatShowsTheExtension) {
  EXPECT_EQ(TQError::unsupportedFormat("mpg").description(), "Unsupported file format: .mpg");
}

TEST(TQError, FileTooLargeShowsSizeAndName) {
  EXPECT_EQ(TQError::fileTooLarge("/clips/a.json", 16'777'217).description(),
            "File too large (16777217 bytes): a.json");
}

TEST(TQError, FrameExtractionFailedShowsItsText) {
  EXPECT_EQ(TQError::frameExtractionFailed("no video track").description(), "Frame extraction failed: no video track");
}

TEST(TQError, NoFramesExtracted) {
  EXPECT_EQ(TQError::noFramesExtracted().description(), "No frames could be extracted from the video");
}

TEST(TQError, APIKeyMissingNamesTheProvider) {
  EXPECT_EQ(TQError::apiKeyMissing("Anthropic").description(),
            "API key for Anthropic is not configured. Set it in Preferences.");
}

TEST(TQError, ProviderHTTPErrorShows200CharactersAndKeepsTheBody) {
  const std::string body(500, 'x');
  const TQError error = TQError::providerHTTPError(529, body);
  EXPECT_EQ(error.description(), "Vision provider returned HTTP 529: " + std::string(200, 'x'));
  EXPECT_EQ(std::get<TQError::ProviderHTTPError>(error.value()).body, body);
}

TEST(TQError, ProviderHTTPErrorCountsCharactersNotBytes) {
  std::string body;
  for (int index = 0; index < 250; ++index)
    body += "👨‍👩‍👧";
  const std::string description = TQError::providerHTTPError(400, body).description();
  EXPECT_EQ(characterCount(description), std::string_view("Vision provider returned HTTP 400: ").size() + 200);
  EXPECT_TRUE(description.ends_with("👨‍👩‍👧"));
}

TEST(TQError, ProviderHTTPErrorShowsAShortBodyWhole) {
  EXPECT_EQ(TQError::providerHTTPError(404, "").description(), "Vision provider returned HTTP 404: ");
  EXPECT_EQ(TQError::providerHTTPError(404, "gone").description(), "Vision provider returned HTTP 404: gone");
}

TEST(TQError, ProviderTransportShowsItsText) {
  EXPECT_EQ(TQError::providerTransport("timed out").description(),
            "Network error talking to vision provider: timed out");
}

TEST(TQError, ProviderDecodeFailureShowsItsText) {
  EXPECT_EQ(TQError::providerDecodeFailure("empty").description(), "Could not parse model response: empty");
}

TEST(TQError, SchemaValidationFailedShowsItsText) {
  EXPECT_EQ(TQError::schemaValidationFailed("missing 'summary'").description(),
            "Generated description failed schema validation: missing 'summary'");
}

TEST(TQError, OutputWriteFailedShowsNameAndText) {
  EXPECT_EQ(TQError::outputWriteFailed("/clips/a.description.md", "No space left on device").description(),
            "Could not write output file a.description.md: No space left on device");
  EXPECT_EQ(TQError::outputWriteFailed("/clips/folder/", "full").description(),
            "Could not write output file folder: full");
}

TEST(TQError, FFmpegMissingNamesTheFormat) {
  EXPECT_EQ(TQError::ffmpegMissing("MKV").description(),
            "MKV files require ffmpeg, which was not found. Install it with `brew install ffmpeg` and try again.");
}

TEST(TQError, ModelAppearsBlindNamesTheModel) {
  EXPECT_EQ(
      TQError::modelAppearsBlind("some-model").description(),
      "some-model returned no visual analysis — every field came back \"unclear\". This usually means the model is "
      "text-only and never saw the frames. Switch to a vision-capable model in Preferences (e.g. MiniMax-M3, not "
      "M2; Qwen2.5-VL, not Qwen2.5).");
}

TEST(TQError, ComparesCasesAndPayloads) {
  EXPECT_EQ(TQError::providerTransport("a"), TQError::providerTransport("a"));
  EXPECT_NE(TQError::providerTransport("a"), TQError::providerTransport("b"));
  EXPECT_NE(TQError::providerTransport("a"), TQError::providerDecodeFailure("a"));
  EXPECT_EQ(TQError::noFramesExtracted(), TQError::noFramesExtracted());
  EXPECT_NE(TQError::fileTooLarge("/a", 1), TQError::fileTooLarge("/a", 2));
  // Beyond the shown part the bodies still count.
  EXPECT_NE(TQError::providerHTTPError(500, std::string(300, 'x') + "a"),
            TQError::providerHTTPError(500, std::string(300, 'x') + "b"));
}

TEST(UserFacingDescription, IsTheErrorsOwnText) {
  EXPECT_EQ(userFacingDescription(TQError::noFramesExtracted()), "No frames could be extracted from the video");
  EXPECT_EQ(userFacingDescription(SystemError(ENOSPC, std::filesystem::path("/clips/a.json"))),
            "a.json: No space left on device");
  EXPECT_EQ(userFacingDescription(JSONError("no valid JSON at line 1, column 1")), "no valid JSON at line 1, column 1");
}

TEST(UserFacingDescription, PutsLibraryErrorsIntoPlainWords) {
  const std::filesystem::filesystem_error error("cannot iterate", "/clips/folder",
                                                std::make_error_code(std::errc::permission_denied));
  EXPECT_EQ(userFacingDescription(error), "folder: Permission denied");
  EXPECT_EQ(userFacingDescription(
                std::filesystem::filesystem_error("x", std::make_error_code(std::errc::no_such_file_or_directory))),
            "No such file or directory");
  EXPECT_EQ(userFacingDescription(std::bad_alloc()), "There is not enough memory.");
}

TEST(UserFacingDescription, IsValidUTF8WhateverTheFileIsCalled) {
  EXPECT_EQ(userFacingDescription(TQError::fileNotFound("/clips/\xff.mov")), "File not found: /clips/\uFFFD.mov");
}

}  // namespace
}  // namespace tq

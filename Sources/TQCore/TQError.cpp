#include "TQCore/TQError.hpp"

#include <new>

#include "TQPlatform/Text/Unicode.hpp"

namespace tq {

namespace {

std::string lastPathComponent(const std::filesystem::path& path) {
  const std::filesystem::path& named = path.has_filename() ? path : path.parent_path();
  return named.filename().string();
}

/// The text of each case.
struct Describe {
  std::string operator()(const TQError::FileNotFound& error) const { return "File not found: " + error.url.string(); }

  std::string operator()(const TQError::UnsupportedFormat& error) const {
    return "Unsupported file format: ." + error.extension;
  }

  std::string operator()(const TQError::FileTooLarge& error) const {
    return "File too large (" + std::to_string(error.size) + " bytes): " + lastPathComponent(error.url);
  }

  std::string operator()(const TQError::FrameExtractionFailed& error) const {
    return "Frame extraction failed: " + error.text;
  }

  std::string operator()(const TQError::NoFramesExtracted&) const {
    return "No frames could be extracted from the video";
  }

  std::string operator()(const TQError::APIKeyMissing& error) const {
    return "API key for " + error.provider + " is not configured. Set it in Preferences.";
  }

  std::string operator()(const TQError::ProviderHTTPError& error) const {
    constexpr std::size_t shownCharacters = 200;
    return "Vision provider returned HTTP " + std::to_string(error.status) + ": " +
           std::string(characterPrefix(error.body, shownCharacters));
  }

  std::string operator()(const TQError::ProviderTransport& error) const {
    return "Network error talking to vision provider: " + error.text;
  }

  std::string operator()(const TQError::ProviderDecodeFailure& error) const {
    return "Could not parse model response: " + error.text;
  }

  std::string operator()(const TQError::SchemaValidationFailed& error) const {
    return "Generated description failed schema validation: " + error.text;
  }

  std::string operator()(const TQError::OutputWriteFailed& error) const {
    return "Could not write output file " + lastPathComponent(error.url) + ": " + error.text;
  }

  std::string operator()(const TQError::FFmpegMissing& error) const {
    return error.format +
           " files require ffmpeg, which was not found. Install it with `brew install ffmpeg` and try again.";
  }

  std::string operator()(const TQError::ModelAppearsBlind& error) const {
    return error.model +
           " returned no visual analysis — every field came back \"unclear\". This usually means the "
           "model is text-only and never saw the frames. Switch to a vision-capable model in Preferences (e.g. "
           "MiniMax-M3, not M2; Qwen2.5-VL, not Qwen2.5).";
  }
};

}  // namespace

TQError::TQError(Case value) : case_(std::move(value)), description_(std::visit(Describe(), case_)) {}

TQError TQError::fileNotFound(std::filesystem::path url) {
  return TQError(FileNotFound{std::move(url)});
}

TQError TQError::unsupportedFormat(std::string extension) {
  return TQError(UnsupportedFormat{std::move(extension)});
}

TQError TQError::fileTooLarge(std::filesystem::path url, std::int64_t size) {
  return TQError(FileTooLarge{std::move(url), size});
}

TQError TQError::frameExtractionFailed(std::string text) {
  return TQError(FrameExtractionFailed{std::move(text)});
}

TQError TQError::noFramesExtracted() {
  return TQError(NoFramesExtracted{});
}

TQError TQError::apiKeyMissing(std::string provider) {
  return TQError(APIKeyMissing{std::move(provider)});
}

TQError TQError::providerHTTPError(int status, std::string body) {
  return TQError(ProviderHTTPError{status, std::move(body)});
}

TQError TQError::providerTransport(std::string text) {
  return TQError(ProviderTransport{std::move(text)});
}

TQError TQError::providerDecodeFailure(std::string text) {
  return TQError(ProviderDecodeFailure{std::move(text)});
}

TQError TQError::schemaValidationFailed(std::string text) {
  return TQError(SchemaValidationFailed{std::move(text)});
}

TQError TQError::outputWriteFailed(std::filesystem::path url, std::string text) {
  return TQError(OutputWriteFailed{std::move(url), std::move(text)});
}

TQError TQError::ffmpegMissing(std::string format) {
  return TQError(FFmpegMissing{std::move(format)});
}

TQError TQError::modelAppearsBlind(std::string model) {
  return TQError(ModelAppearsBlind{std::move(model)});
}

std::string userFacingDescription(const std::exception& error) {
  if (const auto* fileSystem = dynamic_cast<const std::filesystem::filesystem_error*>(&error)) {
    const std::string name = lastPathComponent(fileSystem->path1());
    const std::string reason = fileSystem->code().message();
    return validUTF8(name.empty() ? reason : name + ": " + reason);
  }
  if (dynamic_cast<const std::bad_alloc*>(&error)) return "There is not enough memory.";
  return validUTF8(error.what());
}

}  // namespace tq

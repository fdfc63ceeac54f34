#pragma once

#include <cstdint>
#include <exception>
#include <filesystem>
#include <string>
#include <variant>

namespace tq {

/// Every failure that this system itself reports, as a value. `description()` is what a user reads.
class TQError final : public std::exception {
 public:
  static TQError fileNotFound(std::filesystem::path url);
  static TQError unsupportedFormat(std::string extension);
  static TQError fileTooLarge(std::filesystem::path url, std::int64_t size);
  static TQError frameExtractionFailed(std::string text);
  static TQError noFramesExtracted();
  static TQError apiKeyMissing(std::string provider);
  /// `body` is kept whole; only the description cuts it.
  static TQError providerHTTPError(int status, std::string body);
  static TQError providerTransport(std::string text);
  static TQError providerDecodeFailure(std::string text);
  static TQError schemaValidationFailed(std::string text);
  static TQError outputWriteFailed(std::filesystem::path url, std::string text);
  static TQError ffmpegMissing(std::string format);
  static TQError modelAppearsBlind(std::string model);

  struct FileNotFound {
    std::filesystem::path url;
    bool operator==(const FileNotFound&) const = default;
  };
  struct UnsupportedFormat {
    std::string extension;
    bool operator==(const UnsupportedFormat&) const = default;
  };
  struct FileTooLarge {
    std::filesystem::path url;
    std::int64_t size;
    bool operator==(const FileTooLarge&) const = default;
  };
  struct FrameExtractionFailed {
    std::string text;
    bool operator==(const FrameExtractionFailed&) const = default;
  };
  struct NoFramesExtracted {
    bool operator==(const NoFramesExtracted&) const = default;
  };
  struct APIKeyMissing {
    std::string provider;
    bool operator==(const APIKeyMissing&) const = default;
  };
  struct ProviderHTTPError {
    int status;
    std::string body;
    bool operator==(const ProviderHTTPError&) const = default;
  };
  struct ProviderTransport {
    std::string text;
    bool operator==(const ProviderTransport&) const = default;
  };
  struct ProviderDecodeFailure {
    std::string text;
    bool operator==(const ProviderDecodeFailure&) const = default;
  };
  struct SchemaValidationFailed {
    std::string text;
    bool operator==(const SchemaValidationFailed&) const = default;
  };
  struct OutputWriteFailed {
    std::filesystem::path url;
    std::string text;
    bool operator==(const OutputWriteFailed&) const = default;
  };
  struct FFmpegMissing {
    std::string format;
    bool operator==(const FFmpegMissing&) const = default;
  };
  struct ModelAppearsBlind {
    std::string model;
    bool operator==(const ModelAppearsBlind&) const = default;
  };

  using Case = std::variant<FileNotFound, UnsupportedFormat, FileTooLarge, FrameExtractionFailed, NoFramesExtracted,
                            APIKeyMissing, ProviderHTTPError, ProviderTransport, ProviderDecodeFailure,
                            SchemaValidationFailed, OutputWriteFailed, FFmpegMissing, ModelAppearsBlind>;

  const Case& value() const { return case_; }
  const std::string& description() const { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

  bool operator==(const TQError& other) const { return case_ == other.case_; }

 private:
  explicit TQError(Case value);

  Case case_;
  std::string description_;
};

/// The text of any error for a user: `TQError`'s description, or the words of the system or library error. Always valid
/// UTF-8, whatever bytes a file's name brought in, so that it can be shown and stored.
std::string userFacingDescription(const std::exception& error);

}  // namespace tq

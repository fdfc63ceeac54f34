#include "TQDescription/DescriptionWriter.hpp"

#include <string_view>

#include "TQCore/RecordJSON.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/MarkdownRenderer.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;

constexpr int firstNumber = 2;
constexpr int lastNumber = 9999;

/// A look that fails tells nothing, and a file that may be there is not written over by mistake.
bool isTaken(const fs::path& target) {
  try {
    fileSize(target);
    return true;
  } catch (const SystemError& error) {
    if (error.meansMissing()) return false;
    throw TQError::outputWriteFailed(target, error.reason());
  }
}

fs::path firstFreeSibling(const fs::path& folder, const std::string& stem, SidecarKind kind) {
  for (int number = firstNumber; number <= lastNumber; ++number) {
    fs::path candidate = folder / numberedSidecarName(stem, number, kind);
    if (!isTaken(candidate)) return candidate;
  }
  throw TQError::outputWriteFailed(folder / sidecarName(stem, kind), "too many existing siblings");
}

/// Where that file goes, its folder made; absent when it is to be skipped.
std::optional<fs::path> resolveTarget(const fs::path& sourceURL, SidecarKind kind, const OutputConfig& config) {
  const fs::path folder = sidecarFolder(sourceURL, config);
  if (!fileExists(folder)) createFolders(folder);

  const std::string stem = stemOf(sourceURL);
  fs::path plain = folder / sidecarName(stem, kind);
  if (!isTaken(plain)) return plain;
  switch (config.conflictPolicy) {
    case ConflictPolicy::skipExisting: return std::nullopt;
    case ConflictPolicy::overwrite: return plain;
    case ConflictPolicy::suffix: return firstFreeSibling(folder, stem, kind);
  }
  return std::nullopt;
}

void writeOutput(const fs::path& target, ByteView content) {
  try {
    writeFileAtomically(target, content);
  } catch (const SystemError& error) {
    throw TQError::outputWriteFailed(target, error.reason());
  }
}

std::string renderedMarkdown(const DescriptionResult& result, const fs::path& target) {
  std::string text = MarkdownRenderer::render(result);
  if (!isValidUTF8(text)) throw TQError::outputWriteFailed(target, "could not encode UTF-8");
  return text;
}

}  // namespace

std::vector<fs::path> DescriptionWriter::write(const DescriptionResult& result, const fs::path& sourceURL,
                                               const OutputConfig& config) const {
  std::vector<fs::path> written;
  if (config.format != OutputFormat::json) {
    if (const auto target = resolveTarget(sourceURL, SidecarKind::markdown, config)) {
      writeOutput(*target, viewOf(renderedMarkdown(result, *target)));
      written.push_back(*target);
    }
  }
  if (config.format != OutputFormat::markdown) {
    if (const auto target = resolveTarget(sourceURL, SidecarKind::json, config)) {
      writeOutput(*target, viewOf(writeJSON(encode(result), JSONLayout::pretty)));
      written.push_back(*target);
    }
  }
  return written;
}

std::optional<fs::path> DescriptionWriter::writePoster(ByteView jpegData, const fs::path& sourceURL,
                                                       const OutputConfig& config) const {
  if (jpegData.empty()) return std::nullopt;
  std::optional<fs::path> target = resolveTarget(sourceURL, SidecarKind::poster, config);
  if (target) writeOutput(*target, jpegData);
  return target;
}

}  // namespace tq

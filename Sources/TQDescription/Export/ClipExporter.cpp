#include "TQDescription/Export/ClipExporter.hpp"

#include <algorithm>

#include "TQCore/TQError.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/ScratchFolder.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// ffmpeg ends with status 0 as well when the disk fills up under the last part of a file. That the disk takes a little
/// more shows that it did not.
void requireRoom(const ScratchFolder& workshop) {
  const Bytes little(std::size_t{64} * 1024);
  writeFileAtomically(workshop / "room", little);
}

void trim(const ExportItem& item, std::size_t index, const fs::path& target, const FFmpegBridge& bridge, bool reencode,
          const std::stop_token& stop) {
  FFmpegBridge::requireOwnClip(item.mediaURL);
  const ExportRange& range = item.ranges[index];
  const ScratchFolder workshop(target.parent_path());
  const fs::path unfinished = workshop / target.filename();
  const int status =
      bridge
          .runFFmpeg(ClipExporter::trimArgs(item.mediaURL, unfinished, range.startSeconds, range.endSeconds, reencode))
          .status;
  if (status != 0) {
    throwIfStopped(stop);  // whoever asked for the stop may have ended the tool as well
    throw TQError::frameExtractionFailed("ffmpeg trim of " + item.mediaURL.filename().string() + " range " +
                                         std::to_string(index) + " exit " + std::to_string(status));
  }
  try {
    requireRoom(workshop);
    replaceFile(unfinished, target);
  } catch (const SystemError& error) {
    throw TQError::outputWriteFailed(target, error.reason());
  }
}

}  // namespace

std::vector<std::string> ClipExporter::trimArgs(const fs::path& input, const fs::path& output, double startSeconds,
                                                double endSeconds, bool reencode) {
  const double start = std::max(0.0, startSeconds);
  const double end = std::max(start, endSeconds);
  std::vector<std::string> arguments{
      "-v", "error", "-y", "-ss", fixedText(start, 3), "-to", fixedText(end, 3), "-i", toolArgument(input)};
  const std::vector<std::string> codecs =
      reencode ? std::vector<std::string>{"-c:v", "libx264", "-preset", "medium", "-crf", "18", "-c:a", "aac"}
               : std::vector<std::string>{"-c", "copy"};
  arguments.insert(arguments.end(), codecs.begin(), codecs.end());
  arguments.push_back(toolArgument(output));
  return arguments;
}

fs::path ClipExporter::outputURL(const ExportItem& item, std::size_t range, const fs::path& folder) {
  const std::string extension = item.mediaURL.extension().string();
  return folder / (stemOf(item.mediaURL) + "_" + paddedText(static_cast<std::int64_t>(range), 2) +
                   (extension.size() > 1 ? extension : ".mp4"));
}

void ClipExporter::run(const std::vector<ExportItem>& items, const fs::path& outputFolder, const FFmpegBridge& bridge,
                       bool reencode, const std::stop_token& stop) {
  createFolders(outputFolder);
  removeAbandonedScratchFolders(outputFolder);
  for (const ExportItem& item : items)
    for (std::size_t index = 0; index < item.ranges.size(); ++index) {
      throwIfStopped(stop);
      trim(item, index, outputURL(item, index, outputFolder), bridge, reencode, stop);
    }
}

}  // namespace tq

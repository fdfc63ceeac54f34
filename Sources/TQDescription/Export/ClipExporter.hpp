#pragma once

#include <cstddef>
#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

#include "TQDescription/Export/ExportItem.hpp"
#include "TQFrames/FFmpegBridge.hpp"

namespace tq {

/// Cuts ranges out of their clips, each into a file of its own.
struct ClipExporter {
  /// What ffmpeg is called with. Times are in seconds; a start below 0 counts as 0 and an end before the start as the
  /// start. Without `reencode` the streams are copied, and the cut falls where the key frames of the source allow.
  static std::vector<std::string> trimArgs(const std::filesystem::path& input, const std::filesystem::path& output,
                                           double startSeconds, double endSeconds, bool reencode);

  /// "<stem>_<range>.<extension>" in `folder`, the index of the range with two digits or more; "mp4" where the clip has
  /// no extension.
  static std::filesystem::path outputURL(const ExportItem& item, std::size_t range,
                                         const std::filesystem::path& folder);

  /// Creates `outputFolder` and writes every range into it, strictly one after the other. What stands under an output's
  /// name is replaced, without a question, once the new file is whole; a range that fails leaves it alone. The first
  /// failure ends the run, and the files of earlier ranges stay. What a killed run left half written is removed first.
  ///
  /// Throws `SystemError` when the folder cannot be used, `TQError::frameExtractionFailed` when ffmpeg fails
  /// and for a clip that is none of its own (see `FFmpegBridge::requireOwnClip`), `TQError::outputWriteFailed` when the
  /// disk is full or the output's name cannot be had. A stop request is noticed between two ranges and when ffmpeg
  /// fails, and ends the run with `Cancelled`.
  static void run(const std::vector<ExportItem>& items, const std::filesystem::path& outputFolder,
                  const FFmpegBridge& bridge, bool reencode, const std::stop_token& stop = {});
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TQFrames/VideoMetadata.hpp"
#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq {

/// Where command-line tools are looked for.
struct ToolSearch {
  std::vector<std::filesystem::path> folders;  ///< looked at first
  std::optional<std::string> path;             ///< then these, separated by colons; empty pieces are skipped

  /// The usual folders, then the environment's PATH. The folders come first, because a program started from the desktop
  /// has a meagre PATH.
  static ToolSearch standard();
};

/// A file as an argument of these tools: absolute, so that a name that begins with a dash is not taken for an option,
/// nor one with a colon for a protocol.
std::string toolArgument(const std::filesystem::path& file);

/// What a tool wrote to its standard output, and its exit status or the number of the signal that ended it.
struct ToolOutput {
  Bytes output;
  int status = 0;
};

/// The only way in which this program runs `ffmpeg` and `ffprobe`. A value that may be copied; every call may be made
/// by several threads at once and blocks the one that makes it. A stop request does not reach the tool: only the time
/// limit ends it.
///
/// Every tool's failure is a `TQError`: `ffmpegMissing` from the constructor, `frameExtractionFailed` from all else.
class FFmpegBridge {
 public:
  static constexpr double standardTimeout = 300.0;  ///< seconds
  static constexpr double standardGrace = 3.0;      ///< seconds between the request to end and the kill

  /// A path that is given is taken as it stands; an absent one is looked for. Throws when one stays unknown. `grace`
  /// differs from its standard in tests only.
  explicit FFmpegBridge(std::optional<std::filesystem::path> ffmpegPath = std::nullopt,
                        std::optional<std::filesystem::path> ffprobePath = std::nullopt,
                        double processTimeout = standardTimeout, const ToolSearch& search = ToolSearch::standard(),
                        double grace = standardGrace);

  /// The first executable file of that name, in the order of `search`.
  static std::optional<std::filesystem::path> locate(std::string_view binary,
                                                     const ToolSearch& search = ToolSearch::standard());

  /// Runs `program` to its end. A status other than 0 is no failure here; not to start and to run out of time are.
  ToolOutput runProcess(const std::filesystem::path& program, const std::vector<std::string>& args) const;

  ToolOutput runFFmpeg(const std::vector<std::string>& args) const { return runProcess(ffmpegURL, args); }

  /// Throws for what is no regular file, and for a list of other files or addresses whatever its name: a tool would
  /// follow it. All other faults of a file are left to the tools to report.
  static void requireOwnClip(const std::filesystem::path& url);

  /// What `ffprobe` tells about a clip. This and `extractFrame` begin with `requireOwnClip`. Throws `JSONError` as
  /// well, when its answer is no JSON.
  VideoMetadata probe(const std::filesystem::path& url) const;

  /// One picture at `seconds` from the start; negative counts as 0.
  Image extractFrame(double seconds, const std::filesystem::path& url) const;

  /// Reads the answer of `ffprobe -print_format json -show_streams -show_format` about `url`, whose own size stands in
  /// for one that the answer lacks. Throws `JSONError` when it is no JSON, `frameExtractionFailed` when it tells of no
  /// video.
  static VideoMetadata parseProbe(ByteView json, const std::filesystem::path& url);

  /// "30000/1001" or "25". Absent for anything that is no finite number, a division by zero among them.
  static std::optional<double> parseRatio(std::string_view text);

  std::filesystem::path ffmpegURL;
  std::filesystem::path ffprobeURL;
  double processTimeout;  ///< seconds, for one process

 private:
  double grace_;
};

}  // namespace tq

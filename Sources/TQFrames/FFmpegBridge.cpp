#include "TQFrames/FFmpegBridge.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "TQCore/TQError.hpp"
#include "TQFrames/ISO6709.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"
#include "TQPlatform/Media/MediaContainer.hpp"
#include "TQPlatform/Process/ChildProcess.hpp"
#include "TQPlatform/Text/NumberText.hpp"

namespace tq {

namespace fs = std::filesystem;

namespace {

/// The pieces of `text` between separators, empty ones dropped.
std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  while (!text.empty()) {
    const std::size_t length = std::min(text.find(separator), text.size());
    if (length > 0) pieces.push_back(text.substr(0, length));
    text.remove_prefix(std::min(length + 1, text.size()));
  }
  return pieces;
}

/// Every tool's failure but a missing one is this error.
TQError failure(const std::string& text) {
  return TQError::frameExtractionFailed(text);
}

/// What holds all its pictures or sounds itself, by libavformat's names: a clip may have the extension of another kind.
/// What these tools take for something else, a playlist above all, would lead them to other files.
constexpr std::array<std::string_view, 23> selfContained{"matroska,webm", "avi",  "mxf",  "mov,mp4,m4a,3gp,3g2,mj2",
                                                         "mpegts",        "mpeg", "asf",  "flv",
                                                         "ogg",           "dv",   "gif",  "nut",
                                                         "h264",          "hevc", "m4v",  "mpegvideo",
                                                         "ivf",           "mp3",  "flac", "wav",
                                                         "aac",           "aiff", "caf"};

/// A JSON object that misses or mistypes a key answers with null for it.
const JSONValue& member(const JSONValue& object, std::string_view key) {
  static const JSONValue null;
  const JSONValue* value = object.find(key);
  return value ? *value : null;
}

bool isObject(const JSONValue& value) {
  return value.asObject() != nullptr;
}

/// Null pointer when there is none.
const JSONValue* firstVideoStream(const JSONValue& answer) {
  const JSONValue::Array* streams = member(answer, "streams").asArray();
  if (!streams || !std::ranges::all_of(*streams, isObject)) return nullptr;
  const auto isVideo = [](const JSONValue& stream) {
    const std::string* type = member(stream, "codec_type").asString();
    return type && *type == "video";
  };
  const auto found = std::ranges::find_if(*streams, isVideo);
  return found == streams->end() ? nullptr : &*found;
}

/// A number of pixels; 0 for whatever is none.
int pixels(const JSONValue& value) {
  const std::int64_t count = value.asInteger().value_or(0);
  return std::in_range<int>(count) ? static_cast<int>(count) : 0;
}

double duration(const JSONValue& stream, const JSONValue& format) {
  const std::string* text = member(stream, "duration").asString();
  if (!text) text = member(format, "duration").asString();
  return text ? parseDouble(*text).value_or(0) : 0;
}

double frameRate(const JSONValue& stream) {
  for (const char* key : {"avg_frame_rate", "r_frame_rate"}) {
    const std::string* text = member(stream, key).asString();
    const std::optional<double> rate = text ? FFmpegBridge::parseRatio(*text) : std::nullopt;
    if (rate && *rate > 0) return *rate;
  }
  return 0;
}

std::int64_t sizeInBytes(const JSONValue& format, const fs::path& url) {
  if (const std::string* text = member(format, "size").asString())
    if (const auto size = parseInteger(*text)) return *size;
  try {
    return fileSize(url);
  } catch (const SystemError&) {
    return 0;
  }
}

std::optional<GPS> place(const JSONValue& tags) {
  for (const char* key : {"location", "com.apple.quicktime.location.ISO6709", "LOCATION"}) {
    const std::string* text = member(tags, key).asString();
    if (auto gps = text ? parseISO6709(*text) : std::nullopt) return gps;
  }
  return std::nullopt;
}

}  // namespace

std::string toolArgument(const fs::path& file) {
  return fs::absolute(file).string();
}

ToolSearch ToolSearch::standard() {
  const char* path = std::getenv("PATH");
  return {.folders = {"/opt/homebrew/bin", "/usr/local/bin", "/opt/local/bin", "/usr/bin"},
          .path = path ? std::optional<std::string>(path) : std::nullopt};
}

FFmpegBridge::FFmpegBridge(std::optional<fs::path> ffmpegPath, std::optional<fs::path> ffprobePath, double timeout,
                           const ToolSearch& search, double grace)
    : processTimeout(timeout), grace_(grace) {
  if (!ffmpegPath) ffmpegPath = locate("ffmpeg", search);
  if (!ffprobePath) ffprobePath = locate("ffprobe", search);
  if (!ffmpegPath || !ffprobePath) throw TQError::ffmpegMissing("this video");
  ffmpegURL = std::move(*ffmpegPath);
  ffprobeURL = std::move(*ffprobePath);
}

std::optional<fs::path> FFmpegBridge::locate(std::string_view binary, const ToolSearch& search) {
  std::vector<fs::path> folders = search.folders;
  if (search.path)
    for (const std::string_view piece : split(*search.path, ':'))
      folders.emplace_back(piece);
  for (const fs::path& folder : folders)
    if (isExecutableFile(folder / binary)) return folder / binary;
  return std::nullopt;
}

ToolOutput FFmpegBridge::runProcess(const fs::path& program, const std::vector<std::string>& args) const {
  const std::string name = program.filename().string();
  try {
    ChildResult result = runChild(program, args, {.time = Seconds(processTimeout), .grace = Seconds(grace_)});
    if (!result.timedOut) return {.output = std::move(result.output), .status = result.status};
  } catch (const SystemError& error) {
    throw failure("could not launch " + name + ": " + error.reason());
  }
  throw failure(name + " timed out after " + fixedText(std::trunc(processTimeout), 0) +
                "s (possibly malformed or unreadable input)");
}

void FFmpegBridge::requireOwnClip(const fs::path& url) {
  std::optional<std::string> container;
  try {
    container = containerOf(url);
  } catch (const SystemError&) {
    return;
  } catch (const MediaError& error) {
    throw failure(url.filename().string() + ": " + error.what());
  }
  if (container && std::ranges::find(selfContained, *container) == selfContained.end())
    throw failure(url.filename().string() + " is no clip but a file of another kind (" + *container + ")");
}

VideoMetadata FFmpegBridge::probe(const fs::path& url) const {
  requireOwnClip(url);
  const ToolOutput answer = runProcess(
      ffprobeURL, {"-v", "error", "-print_format", "json", "-show_streams", "-show_format", toolArgument(url)});
  if (answer.status != 0) throw failure("ffprobe exit status " + std::to_string(answer.status));
  return parseProbe(answer.output, url);
}

Image FFmpegBridge::extractFrame(double seconds, const fs::path& url) const {
  requireOwnClip(url);
  const std::string time = fixedText(std::max(0.0, seconds), 3);
  const ToolOutput answer = runFFmpeg({"-v", "error", "-ss", time, "-i", toolArgument(url), "-frames:v", "1", "-f",
                                       "image2pipe", "-vcodec", "mjpeg", "-q:v", "2", "-"});
  const std::string asked = shortestText(seconds) + "s";
  if (answer.status != 0 || answer.output.empty())
    throw failure("ffmpeg frame extract at " + asked + " exit " + std::to_string(answer.status) + ", " +
                  std::to_string(answer.output.size()) + " bytes");
  std::optional<Image> image = Image::decodeJPEG(answer.output);
  if (!image) throw failure("ffmpeg returned non-decodable JPEG at " + asked);
  return *std::move(image);
}

VideoMetadata FFmpegBridge::parseProbe(ByteView json, const fs::path& url) {
  const JSONValue answer = parseJSON(textOf(json));
  if (!isObject(answer)) throw failure("could not parse ffprobe JSON");
  const JSONValue* stream = firstVideoStream(answer);
  if (!stream) throw failure("no video stream in " + url.filename().string());
  const JSONValue& format = member(answer, "format");
  const std::string* codec = member(*stream, "codec_name").asString();
  return {.duration = duration(*stream, format),
          .width = pixels(member(*stream, "width")),
          .height = pixels(member(*stream, "height")),
          .frameRate = frameRate(*stream),
          .codec = codec ? *codec : "unknown",
          .fileSize = sizeInBytes(format, url),
          .gps = place(member(format, "tags"))};
}

std::optional<double> FFmpegBridge::parseRatio(std::string_view text) {
  const auto pieces = split(text, '/');
  if (pieces.size() == 2) {
    const auto numerator = parseDouble(pieces[0]);
    const auto denominator = parseDouble(pieces[1]);
    if (numerator && denominator && *denominator != 0) {
      const double ratio = *numerator / *denominator;
      return std::isfinite(ratio) ? std::optional(ratio) : std::nullopt;
    }
  }
  return parseDouble(text);
}

}  // namespace tq

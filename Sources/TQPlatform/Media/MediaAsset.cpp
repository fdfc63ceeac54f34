#include "TQPlatform/Media/MediaAsset.hpp"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <iterator>
#include <limits>
#include <new>
#include <string_view>

#include "TQPlatform/Media/ImageStorage.hpp"
#include "TQPlatform/Media/MediaAssetState.hpp"
#include "TQPlatform/Media/MovieEdits.hpp"

extern "C" {
#include <libavformat/avformat.h>
}

namespace tq {

namespace fs = std::filesystem;

namespace {

struct Dictionary {
  AVDictionary* entries = nullptr;
  ~Dictionary() { av_dict_free(&entries); }
  void set(const char* key, const char* value) { av_dict_set(&entries, key, value, 0); }
};

int workIsOver(void* watch) {
  return static_cast<const libav::Watch*>(watch)->isOver();
}

int openNothingElse(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) {
  return AVERROR(EPERM);
}

/// Without it only the start of the first edit counts, which is all that most movies have.
bool mayArrangeByEdits(const MediaAsset::State& state) {
  const auto work = libav::editingWork(state.file.reader(), state.watch);
  return work && *work <= state.limits.editingWork;
}

/// A context that reads `state`'s file and nothing else, opened. Throws as the asset's constructor does.
libav::Owned<AVFormatContext> openFormat(MediaAsset::State& state) {
  Dictionary options;
  options.set("format_whitelist", "mov,mp4,m4a,3gp,3g2,mj2");
  options.set("probesize", "4000000");
  options.set("advanced_editlist", mayArrangeByEdits(state) ? "1" : "0");
  AVFormatContext* format = avformat_alloc_context();
  if (!format) throw std::bad_alloc();
  format->pb = state.file.context();
  format->io_open = openNothingElse;
  format->interrupt_callback = {workIsOver, &state.watch};
  format->max_analyze_duration = 2 * AV_TIME_BASE;
  format->max_streams = state.limits.tracks;
  state.file.measure(format, state.limits);
  // The name is looked at for its extension only.
  const int error = avformat_open_input(&format, state.source->name.c_str(), nullptr, &options.entries);
  libav::Owned<AVFormatContext> opened(format);
  state.file.measure(format, state.limits);
  state.file.check();
  if (error < 0) throw MediaError("the file is damaged or in an unknown format");
  return opened;
}

MediaType typeOf(const AVStream& stream) {
  if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) return MediaType::other;
  switch (stream.codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO: return MediaType::video;
    case AVMEDIA_TYPE_AUDIO: return MediaType::audio;
    default: return MediaType::other;
  }
}

/// The tables of most files tell all that is asked; only where they do not, as in files of fragments, the beginning of
/// the streams is looked at.
bool tablesSuffice(const AVFormatContext& format) {
  return std::all_of(format.streams, format.streams + format.nb_streams, [](const AVStream* stream) {
    return stream->codecpar->codec_type != AVMEDIA_TYPE_VIDEO ||
           (stream->codecpar->width > 0 && stream->avg_frame_rate.num > 0 && stream->start_time != AV_NOPTS_VALUE);
  });
}

/// Where the presentation begins on the clock of the streams' time stamps, in seconds. Edit lists are already in the
/// time stamps, so that is zero, gaps before the first picture included. It is the first time stamp where the
/// container's duration leaves no room for such a gap, as in recordings cut out of a running stream.
double originOf(const AVFormatContext& format, double duration) {
  double start = std::numeric_limits<double>::infinity(), end = 0;
  for (unsigned index = 0; index < format.nb_streams; ++index) {
    const AVStream& stream = *format.streams[index];
    const bool plays = typeOf(stream) != MediaType::other;
    if (!plays || stream.start_time == AV_NOPTS_VALUE || stream.duration <= 0) continue;
    const double unit = av_q2d(stream.time_base);
    start = std::min(start, static_cast<double>(stream.start_time) * unit);
    end = std::max(end, (static_cast<double>(stream.start_time) + static_cast<double>(stream.duration)) * unit);
  }
  constexpr double roundingOfTimes = 0.001;
  return start > 0 && std::isfinite(start) && end > duration + roundingOfTimes ? start : 0;
}

double rateOf(const AVStream& stream) {
  for (const AVRational rate : {stream.avg_frame_rate, stream.r_frame_rate})
    if (rate.num > 0 && rate.den > 0) return av_q2d(rate);
  return 0;
}

std::uint32_t mostSignificantFirst(std::uint32_t tag) {
  return tag >> 24 | (tag >> 8 & 0xFF00U) | (tag << 8 & 0xFF0000U) | tag << 24;
}

void lookAtStreams(AVFormatContext& format) {
  std::vector<AVDictionary*> options(format.nb_streams, nullptr);
  for (AVDictionary*& option : options)
    av_dict_set_int(&option, "max_pixels", libav::largestPicture, 0);
  avformat_find_stream_info(&format, options.data());
  for (AVDictionary*& option : options)
    av_dict_free(&option);
}

MediaTrack trackOf(const AVStream& stream) {
  MediaTrack track;
  track.type = typeOf(stream);
  if (stream.codecpar->codec_tag != 0) track.mediaSubtype = mostSignificantFirst(stream.codecpar->codec_tag);
  if (track.type != MediaType::video) return track;
  track.naturalWidth = std::max(stream.codecpar->width, 0);
  track.naturalHeight = std::max(stream.codecpar->height, 0);
  track.nominalFrameRate = static_cast<float>(rateOf(stream));
  track.clockwise = Orientation::of(stream).clockwise().value_or(0);
  return track;
}

}  // namespace

AVStream* MediaAsset::State::video() const {
  const auto found = std::ranges::find(tracks, MediaType::video, &MediaTrack::type);
  return found == tracks.end() ? nullptr : format->streams[streams[static_cast<std::size_t>(found - tracks.begin())]];
}

MediaAsset::MediaAsset(const fs::path& file, std::stop_token stop, const MediaLimits& limits)
    : MediaAsset(std::make_unique<State>(std::make_shared<MediaSource>(file, limits)), std::move(stop)) {}

MediaAsset MediaAsset::another(std::stop_token stop) const {
  return MediaAsset(std::make_unique<State>(state_->source), std::move(stop));
}

MediaAsset::MediaAsset(std::unique_ptr<State> state, std::stop_token stop) : state_(std::move(state)) {
  libav::prepareLibrary();
  const libav::Watch::Scope scope(state_->watch, std::move(stop), state_->limits.opening);
  if (state_->file.reader().size() == 0) throw MediaError("the file is empty");
  state_->format = openFormat(*state_);
  AVFormatContext& format = *state_->format;
  if (!tablesSuffice(format)) lookAtStreams(format);
  state_->file.check();
  for (unsigned index = 0; index < format.nb_streams; ++index) {
    const AVStream& stream = *format.streams[index];
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) continue;
    state_->tracks.push_back(trackOf(stream));
    state_->streams.push_back(static_cast<int>(index));
  }
  state_->origin = originOf(format, duration());
}

MediaAsset::~MediaAsset() = default;
MediaAsset::MediaAsset(MediaAsset&&) noexcept = default;
MediaAsset& MediaAsset::operator=(MediaAsset&&) noexcept = default;

double MediaAsset::duration() const {
  const AVFormatContext& format = *state_->format;
  if (format.duration > 0) return static_cast<double>(format.duration) / AV_TIME_BASE;
  double longest = 0;
  for (unsigned index = 0; index < format.nb_streams; ++index) {
    const AVStream& stream = *format.streams[index];
    if (stream.duration > 0)
      longest = std::max(longest, static_cast<double>(stream.duration) * av_q2d(stream.time_base));
  }
  return std::isfinite(longest) ? longest : 0;
}

const std::vector<MediaTrack>& MediaAsset::tracks() const {
  return state_->tracks;
}

std::vector<MediaTrack> MediaAsset::tracks(MediaType type) const {
  std::vector<MediaTrack> chosen;
  std::ranges::copy_if(state_->tracks, std::back_inserter(chosen),
                       [type](const MediaTrack& track) { return track.type == type; });
  return chosen;
}

std::vector<MetadataItem> MediaAsset::commonMetadata() const {
  constexpr std::array<std::string_view, 2> places{"location", "com.apple.quicktime.location.ISO6709"};
  std::vector<MetadataItem> items;
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(state_->format->metadata, "", entry, AV_DICT_IGNORE_SUFFIX))) {
    const bool place = std::ranges::find(places, std::string_view(entry->key)) != places.end();
    items.push_back({place ? "location" : "", entry->key, entry->value});
  }
  return items;
}

}  // namespace tq

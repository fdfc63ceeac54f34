#include "TQPlatform/ImageGenerator.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <optional>
#include <utility>

#include "TQPlatform/ImageStorage.hpp"
#include "TQPlatform/MediaAssetState.hpp"
#include "TQPlatform/PictureMemory.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace tq {

namespace {

constexpr int failuresInARow = 250;                // packets that yield nothing but errors
constexpr std::int64_t packetsPerImage = 500'000;  // hours of video without a key frame
constexpr int groupsPerImage = 4;                  // groups of pictures tried, each one before the last
constexpr const char* tooLarge = "its pictures take too much memory";

/// A picture as it left the decoder, and its time from the start of the presentation in seconds.
struct Decoded {
  libav::Owned<AVFrame> frame;
  double time;
};

/// A key frame in the track's index.
struct KeyFrame {
  int entry;
  std::int64_t decodingTime;  // in the track's time base
};

enum class Passing { quickly, exactly };

}  // namespace

/// The decoder stands somewhere in the clip: `current` is the newest picture, `previous` the one before it.
struct ImageGenerator::Decoder {
  MediaAsset::State& asset;
  const double tolerance;
  const int threads;
  DecodingCounts counts;

  AVStream* stream = nullptr;
  Orientation orientation;
  std::shared_ptr<libav::PictureMemory> memory;
  libav::Owned<AVCodecContext> codec;
  libav::Owned<AVPacket> packet = libav::makePacket();

  std::optional<Decoded> previous, current;
  double passedOver = -HUGE_VAL;           // latest time of a picture that may have been skipped
  std::int64_t readUpTo = AV_NOPTS_VALUE;  // decoding time of the newest packet
  bool drained = false, ended = false;
  int failures = 0;
  std::int64_t packetsLeft = 0;
  Seconds fruitless{0};        // spent on pictures that could not be had
  std::int64_t fileBytes = 0;  // of the file as it was when the picture was asked for

  Decoder(MediaAsset& media, double allowed, int threadCount)
      : asset(media.state()),
        tolerance(allowed),
        threads(threadCount),
        memory(std::make_shared<libav::PictureMemory>(asset.limits.pictureBytes)) {}

  void open();
  Image imageAt(double seconds, const std::stop_token& stop);
  void noticeFileSize();
  void forget();
  const Decoded& find(double seconds);

  double timeOf(std::int64_t stamp) const {
    return static_cast<double>(stamp) * av_q2d(stream->time_base) - asset.origin;
  }
  std::int64_t stampOf(double seconds) const;

  bool readable(const AVIndexEntry& entry) const;
  std::optional<KeyFrame> keyAtOrBefore(int entry) const;
  std::optional<KeyFrame> keyFor(double seconds);
  std::int64_t lastStampOf(const KeyFrame& key) const;
  double lastIndexedTime() const;

  bool serves(const Decoded& picture, double seconds) const {
    return picture.time >= seconds - tolerance && picture.time <= seconds + tolerance;
  }
  const Decoded* held(double seconds) const;
  const Decoded* nearest(double seconds) const;
  bool leadsTo(const std::optional<KeyFrame>& key, double seconds) const;
  const Decoded* decodeTo(double seconds, const std::optional<KeyFrame>& key, Passing passing);
  bool isShown(const Decoded& picture, double seconds) const;
  double endOfContent() const;

  void seek(const std::optional<KeyFrame>& key);
  bool advance(double passBefore);
  bool receive();
  void sendNextPacket(double passBefore);
  void countFailure();
};

/// Opens the decoder on the first video track and turns all other streams off.
void ImageGenerator::Decoder::open() {
  const auto video = std::ranges::find(asset.tracks, MediaType::video, &MediaTrack::type);
  if (video == asset.tracks.end()) throw MediaError("there is no video track");
  AVFormatContext& format = *asset.format;
  AVStream* chosen = format.streams[asset.streams[static_cast<std::size_t>(video - asset.tracks.begin())]];
  if (chosen->codecpar->codec_tag == MKTAG('e', 'n', 'c', 'v') ||
      av_stream_get_side_data(chosen, AV_PKT_DATA_ENCRYPTION_INIT_INFO, nullptr))
    throw MediaError("the clip is encrypted");
  const AVCodec* decoder = avcodec_find_decoder(chosen->codecpar->codec_id);
  if (!decoder) throw MediaError("there is no decoder for its video format");
  libav::Owned<AVCodecContext> context(avcodec_alloc_context3(decoder));
  if (!context) throw std::bad_alloc();
  context->pkt_timebase = chosen->time_base;
  context->thread_count = threads;
  context->max_pixels = libav::largestPicture;
  libav::PictureMemory::serve(*context, memory);
  if (avcodec_parameters_to_context(context.get(), chosen->codecpar) < 0 ||
      avcodec_open2(context.get(), decoder, nullptr) < 0)
    throw MediaError("the decoder refuses its video format");
  for (unsigned index = 0; index < format.nb_streams; ++index)
    format.streams[index]->discard = format.streams[index] == chosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  std::size_t size = 0;
  const std::uint8_t* matrix = av_stream_get_side_data(chosen, AV_PKT_DATA_DISPLAYMATRIX, &size);
  std::array<std::int32_t, 9> values{};
  if (matrix && size >= sizeof(values)) {
    std::copy_n(matrix, sizeof(values), reinterpret_cast<std::uint8_t*>(values.data()));
    orientation = Orientation::fromMatrix(values);
  }
  stream = chosen;
  codec = std::move(context);
}

Image ImageGenerator::Decoder::imageAt(double seconds, const std::stop_token& stop) {
  const auto started = std::chrono::steady_clock::now();
  const libav::Watch::Scope scope(asset.watch, stop, asset.limits.withoutPicture - fruitless);
  asset.watch.check();
  asset.file.clearFailure();
  noticeFileSize();
  try {
    if (!codec) open();
    const Decoded& found = find(std::isfinite(seconds) ? seconds : 0);
    return Image(std::make_shared<Image::Storage>(Image::Storage{libav::share(*found.frame), orientation, false}));
  } catch (const std::exception&) {
    fruitless += std::chrono::steady_clock::now() - started;
    readUpTo = AV_NOPTS_VALUE;
    throw;
  }
}

/// Pictures that came before a file changed its length say nothing about where it ends now.
void ImageGenerator::Decoder::noticeFileSize() {
  if (const std::int64_t bytes = avio_size(asset.format->pb); std::exchange(fileBytes, bytes) != bytes) forget();
}

const Decoded& ImageGenerator::Decoder::find(double seconds) {
  failures = 0;
  packetsLeft = packetsPerImage;
  const Decoded* found = held(seconds);
  auto key = found ? std::nullopt : keyFor(seconds);
  for (int group = 0; !found && group < groupsPerImage; ++group) {
    const bool pastTheEnd = seconds - tolerance > lastIndexedTime();
    found = decodeTo(seconds, key, pastTheEnd ? Passing::exactly : Passing::quickly);
    if (found || !key) break;
    const auto earlier = keyAtOrBefore(key->entry - 1);
    if (!earlier) break;
    key = earlier;
  }
  if (!found) found = nearest(seconds);
  if (!found) throw MediaError(memory->exhausted() ? tooLarge : "no picture could be decoded there");
  if (!isShown(*found, seconds)) throw MediaError("the clip ends before that");
  return *found;
}

/// False for a time after the last picture has gone: it stays until the last of all tracks ends.
bool ImageGenerator::Decoder::isShown(const Decoded& picture, double seconds) const {
  if (serves(picture, seconds) || picture.time > seconds) return true;
  const bool last = ended && current && &picture == &*current;
  if (!last) return true;
  const double gone = picture.time + static_cast<double>(picture.frame->pkt_duration) * av_q2d(stream->time_base);
  return seconds <= std::max(gone, endOfContent()) + tolerance;
}

/// The end of the latest sample of any track, in seconds from the start of the presentation. Headers may claim another
/// one, and a file that was cut off has lost what its tables still list.
double ImageGenerator::Decoder::endOfContent() const {
  double end = 0;
  for (unsigned index = 0; index < asset.format->nb_streams; ++index) {
    AVStream& track = *asset.format->streams[index];
    int entry = avformat_index_get_entries_count(&track) - 1;
    while (entry >= 0 && !readable(*avformat_index_get_entry(&track, entry)))
      --entry;
    if (entry < 0) continue;
    const auto last = static_cast<double>(avformat_index_get_entry(&track, entry)->timestamp);
    const double length = entry > 0 ? last - static_cast<double>(avformat_index_get_entry(&track, entry - 1)->timestamp)
                                    : static_cast<double>(std::max(track.duration, std::int64_t{0}));
    end = std::max(end, (last + length) * av_q2d(track.time_base) - asset.origin);
  }
  return end;
}

std::int64_t ImageGenerator::Decoder::stampOf(double seconds) const {
  constexpr double limit = 4e18;
  const double stamp = (seconds + asset.origin) / av_q2d(stream->time_base);
  return static_cast<std::int64_t>(std::clamp(stamp, -limit, limit));
}

/// A file that was cut off keeps the index of what it has lost.
bool ImageGenerator::Decoder::readable(const AVIndexEntry& entry) const {
  return entry.pos <= fileBytes - entry.size;
}

std::optional<KeyFrame> ImageGenerator::Decoder::keyAtOrBefore(int entry) const {
  for (; entry >= 0; --entry) {
    const AVIndexEntry* candidate = avformat_index_get_entry(stream, entry);
    if (candidate && (candidate->flags & AVINDEX_KEYFRAME) != 0 && readable(*candidate))
      return KeyFrame{entry, candidate->timestamp};
  }
  return std::nullopt;
}

/// The latest decoding time that still belongs to the key frame's group. A seek to the key frame's own decoding time
/// could end in the group before, because the picture is shown only later.
std::int64_t ImageGenerator::Decoder::lastStampOf(const KeyFrame& key) const {
  const int count = avformat_index_get_entries_count(stream);
  for (int entry = key.entry + 1; entry < count; ++entry) {
    const AVIndexEntry* next = avformat_index_get_entry(stream, entry);
    if ((next->flags & AVINDEX_KEYFRAME) != 0) return std::max(key.decodingTime, av_sat_sub64(next->timestamp, 1));
  }
  return std::max(key.decodingTime, avformat_index_get_entry(stream, count - 1)->timestamp);
}

double ImageGenerator::Decoder::lastIndexedTime() const {
  const int count = avformat_index_get_entries_count(stream);
  return count > 0 ? timeOf(avformat_index_get_entry(stream, count - 1)->timestamp) : HUGE_VAL;
}

/// Where to start decoding: the last key frame before the time, or the first one after it if that is within the
/// tolerance and the other is not.
std::optional<KeyFrame> ImageGenerator::Decoder::keyFor(double seconds) {
  const std::int64_t stamp = stampOf(seconds);
  // Fragments that the tables leave out are read into the index by a seek to them.
  if (stream->nb_frames == 0 && lastIndexedTime() + 1 < timeOf(stream->duration)) {
    av_seek_frame(asset.format.get(), stream->index, stamp, AVSEEK_FLAG_BACKWARD);
    readUpTo = AV_NOPTS_VALUE;
  }
  const auto before = keyAtOrBefore(av_index_search_timestamp(stream, stamp, AVSEEK_FLAG_BACKWARD));
  if (before && timeOf(before->decodingTime) >= seconds - tolerance) return before;
  const auto after = keyAtOrBefore(av_index_search_timestamp(stream, stamp, 0));
  const bool later = after && after->decodingTime >= stamp;
  return later && (!before || timeOf(after->decodingTime) <= seconds + tolerance) ? after : before;
}

/// The answer that needs no decoding.
const Decoded* ImageGenerator::Decoder::held(double seconds) const {
  for (const auto* picture : {&current, &previous})
    if (*picture && serves(**picture, seconds)) return &**picture;
  const bool between = previous && current && previous->time <= seconds && seconds <= current->time;
  if (between && passedOver <= previous->time) return nearest(seconds);
  if (ended && current && current->time <= seconds && passedOver <= current->time) return &*current;
  return nullptr;
}

const Decoded* ImageGenerator::Decoder::nearest(double seconds) const {
  if (!current) return previous ? &*previous : nullptr;
  if (!previous || std::abs(current->time - seconds) <= std::abs(previous->time - seconds)) return &*current;
  return &*previous;
}

/// True when reading on from here comes to the time without passing a key frame that would be a better start.
bool ImageGenerator::Decoder::leadsTo(const std::optional<KeyFrame>& key, double seconds) const {
  if (ended || readUpTo == AV_NOPTS_VALUE || !key || key->decodingTime > readUpTo) return false;
  return current && current->time < seconds;
}

/// The wanted picture if decoding from `key`, or from here on, comes to it; nothing when it must lie before the key
/// frame.
const Decoded* ImageGenerator::Decoder::decodeTo(double seconds, const std::optional<KeyFrame>& key, Passing passing) {
  const double from = seconds - tolerance;
  const double passBefore = passing == Passing::quickly ? from : -HUGE_VAL;
  if (!leadsTo(key, seconds)) seek(key);
  while (!current || current->time < from)
    if (!advance(passBefore)) break;
  if (!current) return nullptr;
  if (serves(*current, seconds)) return &*current;
  // Only neighbours tell which one is the nearest: nothing may have been skipped between them or after the last one.
  const double known = current->time < from ? current->time : previous ? previous->time : -HUGE_VAL;
  if (passedOver > known) {
    readUpTo = AV_NOPTS_VALUE;
    return passing == Passing::quickly ? decodeTo(seconds, key, Passing::exactly) : nearest(seconds);
  }
  return previous || current->time < from ? nearest(seconds) : nullptr;
}

void ImageGenerator::Decoder::forget() {
  previous.reset();
  current.reset();
  passedOver = -HUGE_VAL;
  readUpTo = AV_NOPTS_VALUE;
  drained = ended = false;
}

void ImageGenerator::Decoder::seek(const std::optional<KeyFrame>& key) {
  const std::int64_t stamp = key ? lastStampOf(*key) : stampOf(0);
  forget();
  avcodec_flush_buffers(codec.get());
  ++counts.seeks;
  if (av_seek_frame(asset.format.get(), stream->index, stamp, AVSEEK_FLAG_BACKWARD) >= 0) return;
  asset.file.check();
  throw MediaError("its index is damaged");
}

/// Makes the next picture the current one; false at the end of what can be read. Pictures before `passBefore` that no
/// other one depends on may be skipped.
bool ImageGenerator::Decoder::advance(double passBefore) {
  while (!ended) {
    asset.watch.check();
    if (receive()) return true;
    if (!ended) sendNextPacket(passBefore);
  }
  return false;
}

bool ImageGenerator::Decoder::receive() {
  auto frame = libav::makeFrame();
  const int status = avcodec_receive_frame(codec.get(), frame.get());
  if (status == AVERROR_EOF) ended = true;
  if (status == AVERROR(ENOMEM)) throw MediaError(tooLarge);
  if (status < 0) {
    if (status != AVERROR_EOF && status != AVERROR(EAGAIN)) countFailure();
    return false;
  }
  ++counts.framesDecoded;
  if (frame->width < 1 || frame->height < 1) return false;
  failures = 0;
  const std::int64_t stamp = frame->best_effort_timestamp;
  const double time = stamp == AV_NOPTS_VALUE ? (current ? current->time : 0) : timeOf(stamp);
  previous = std::exchange(current, Decoded{std::move(frame), time});
  return true;
}

void ImageGenerator::Decoder::sendNextPacket(double passBefore) {
  if (drained) {
    countFailure();
    return;
  }
  if (--packetsLeft < 0) throw MediaError("the next key frame is too far away");
  av_packet_unref(packet.get());
  if (av_read_frame(asset.format.get(), packet.get()) < 0) {
    asset.file.check();
    drained = true;
    avcodec_send_packet(codec.get(), nullptr);
    return;
  }
  if (packet->stream_index != stream->index || (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) return;
  if (av_packet_get_side_data(packet.get(), AV_PKT_DATA_ENCRYPTION_INFO, nullptr))
    throw MediaError("the clip is encrypted");
  ++counts.packetsRead;
  if (packet->dts != AV_NOPTS_VALUE) readUpTo = packet->dts;
  const bool passes = packet->pts != AV_NOPTS_VALUE && timeOf(packet->pts) < passBefore;
  codec->skip_frame = passes ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  if (passes) passedOver = std::max(passedOver, timeOf(packet->pts));
  const int status = avcodec_send_packet(codec.get(), packet.get());
  if (status == AVERROR(ENOMEM)) throw MediaError(tooLarge);
  if (status < 0) countFailure();
}

void ImageGenerator::Decoder::countFailure() {
  if (++failures <= failuresInARow) return;
  readUpTo = AV_NOPTS_VALUE;
  throw MediaError("its pictures cannot be decoded");
}

ImageGenerator::ImageGenerator(MediaAsset& asset, double tolerance, int threads)
    : decoder_(std::make_unique<Decoder>(asset, tolerance, threads)) {}

ImageGenerator::~ImageGenerator() = default;

Image ImageGenerator::image(double seconds, std::stop_token stop) {
  return decoder_->imageAt(seconds, stop);
}

const DecodingCounts& ImageGenerator::counts() const {
  return decoder_->counts;
}

}  // namespace tq

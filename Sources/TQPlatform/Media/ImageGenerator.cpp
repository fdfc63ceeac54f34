#include "TQPlatform/Media/ImageGenerator.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>
#include <optional>
#include <utility>

#include "TQPlatform/Media/ImageStorage.hpp"
#include "TQPlatform/Media/MediaAssetState.hpp"
#include "TQPlatform/Media/PictureMemory.hpp"
#include "TQPlatform/Media/TrackIndex.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace tq {

namespace {

constexpr int failuresInARow = 250;                // packets that yield nothing but errors
constexpr std::int64_t packetsPerImage = 500'000;  // hours of video without a key frame
constexpr int groupsPerImage = 4;                  // groups of pictures tried, each one before the last
constexpr double anything = HUGE_VAL;              // may have been skipped
constexpr const char* tooLarge = "its pictures take too much memory";

/// A picture as it left the decoder, and its time from the start of the presentation in seconds.
struct Decoded {
  libav::Owned<AVFrame> frame;
  double time;
};

enum class Passing { quickly, exactly };

/// What a stretch of decoding is for.
struct Aim {
  Passing passing;
  double seconds;
  bool cut;  // nothing else is wanted of this group of pictures
};

/// Pictures that depend on no other one come from one packet each: several packets at once would only be decoded for
/// nobody.
int threadTypeFor(AVCodecID codec) {
  const AVCodecDescriptor* format = avcodec_descriptor_get(codec);
  const bool standAlone = format && (format->props & AV_CODEC_PROP_INTRA_ONLY) != 0;
  return standAlone ? FF_THREAD_SLICE : FF_THREAD_FRAME | FF_THREAD_SLICE;
}

}  // namespace

/// The decoder stands somewhere in the clip: `current` is the newest picture, `previous` the one before it.
struct ImageGenerator::Decoder {
  MediaAsset::State& asset;
  const double tolerance;
  const int threads;
  const Fidelity fidelity;
  DecodingCounts counts;

  AVStream* stream = nullptr;
  std::optional<libav::TrackIndex> index;
  Orientation orientation;
  std::shared_ptr<libav::PictureMemory> memory;
  libav::Owned<AVCodecContext> codec;
  libav::Owned<AVPacket> packet = libav::makePacket();

  std::vector<double> expected;  // times that will be asked for, rising
  std::vector<double> underWay;  // pictures that were sent for one of them, in the order of decoding, and are not out
  bool wantedLast = false;       // the newest packet is one of these
  bool mayCut = true;            // until that loses a picture

  std::optional<Decoded> previous, current;
  double passedOver = -HUGE_VAL;           // latest time of a picture that may have been skipped
  std::int64_t readUpTo = AV_NOPTS_VALUE;  // decoding time of the newest packet
  bool drained = false, ended = false;
  int failures = 0;
  std::int64_t packetsLeft = 0;

  Decoder(MediaAsset& media, double allowed, int threadCount, Fidelity wanted)
      : asset(media.state()),
        tolerance(allowed),
        threads(threadCount),
        fidelity(wanted),
        memory(asset.source->memory) {}

  void open();
  Image imageAt(double seconds, const std::stop_token& stop);
  void noticeFileSize();
  void forget();
  const Decoded& find(double seconds);

  bool serves(double time, double seconds) const { return time >= seconds - tolerance && time <= seconds + tolerance; }
  bool serves(const Decoded& picture, double seconds) const { return serves(picture.time, seconds); }
  const Decoded* held(double seconds) const;
  const Decoded* nearest(double seconds) const;
  std::optional<libav::KeyFrame> keyFor(double seconds);
  bool leadsTo(const std::optional<libav::KeyFrame>& key, double seconds) const;
  const Decoded* decodeTo(double seconds, const std::optional<libav::KeyFrame>& key, Passing passing);
  bool lastOfGroup(double seconds, const std::optional<libav::KeyFrame>& key) const;
  std::optional<double> target(double seconds) const;
  bool isWanted(double time, const Aim& aim) const;
  double enoughFor(const Aim& aim) const;
  bool isShown(const Decoded& picture, double seconds) const;

  void seek(const std::optional<libav::KeyFrame>& key);
  bool advance(const Aim& aim);
  bool receive();
  void sendNextPacket(const Aim& aim);
  void sendPacket(const Aim& aim);
  void drain();
  void countFailure();
};

/// Opens the decoder on the first video track and turns all other streams off.
void ImageGenerator::Decoder::open() {
  AVStream* chosen = asset.video();
  if (!chosen) throw MediaError("there is no video track");
  AVFormatContext& format = *asset.format;
  if (chosen->codecpar->codec_tag == MKTAG('e', 'n', 'c', 'v') ||
      av_stream_get_side_data(chosen, AV_PKT_DATA_ENCRYPTION_INIT_INFO, nullptr))
    throw MediaError("the clip is encrypted");
  const AVCodec* decoder = avcodec_find_decoder(chosen->codecpar->codec_id);
  if (!decoder) throw MediaError("there is no decoder for its video format");
  libav::Owned<AVCodecContext> context(avcodec_alloc_context3(decoder));
  if (!context) throw std::bad_alloc();
  context->pkt_timebase = chosen->time_base;
  context->thread_count = threads;
  context->thread_type = threadTypeFor(decoder->id);
  if (fidelity == Fidelity::approximate) context->skip_loop_filter = AVDISCARD_ALL;
  context->max_pixels = libav::largestPicture;
  libav::PictureMemory::serve(*context, memory);
  if (avcodec_parameters_to_context(context.get(), chosen->codecpar) < 0 ||
      avcodec_open2(context.get(), decoder, nullptr) < 0)
    throw MediaError("the decoder refuses its video format");
  for (unsigned other = 0; other < format.nb_streams; ++other)
    format.streams[other]->discard = format.streams[other] == chosen ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
  orientation = Orientation::of(*chosen);
  stream = chosen;
  index.emplace(format, *chosen, asset.origin);
  codec = std::move(context);
}

Image ImageGenerator::Decoder::imageAt(double seconds, const std::stop_token& stop) {
  const auto started = std::chrono::steady_clock::now();
  const libav::Watch::Scope scope(asset.watch, stop, asset.limits.withoutPicture - Seconds{asset.source->fruitless});
  asset.watch.check();
  asset.file.clearFailure();
  try {
    if (!codec) open();
    noticeFileSize();
    const Decoded& found = find(std::isfinite(seconds) ? seconds : 0);
    return Image(std::make_shared<Image::Storage>(Image::Storage{libav::share(*found.frame), orientation, false}));
  } catch (const std::exception&) {
    asset.source->fruitless += Seconds(std::chrono::steady_clock::now() - started).count();
    readUpTo = AV_NOPTS_VALUE;
    throw;
  }
}

/// Pictures that came before a file changed its length say nothing about where it ends now.
void ImageGenerator::Decoder::noticeFileSize() {
  if (index->limit(avio_size(asset.format->pb))) forget();
}

const Decoded& ImageGenerator::Decoder::find(double seconds) {
  failures = 0;
  packetsLeft = packetsPerImage;
  const Decoded* found = held(seconds);
  auto key = found ? std::nullopt : keyFor(seconds);
  for (int group = 0; !found && group < groupsPerImage; ++group) {
    const bool pastTheEnd = seconds - tolerance > index->lastTime();
    found = decodeTo(seconds, key, pastTheEnd ? Passing::exactly : Passing::quickly);
    if (found || !key) break;
    const auto earlier = index->keyBefore(*key);
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
  return seconds <= std::max(gone, index->endOfContent()) + tolerance;
}

/// Where to start decoding.
std::optional<libav::KeyFrame> ImageGenerator::Decoder::keyFor(double seconds) {
  if (index->isIncomplete()) {
    av_seek_frame(asset.format.get(), stream->index, index->stampOf(seconds), AVSEEK_FLAG_BACKWARD);
    readUpTo = AV_NOPTS_VALUE;
  }
  return index->keyFor(seconds, tolerance);
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
bool ImageGenerator::Decoder::leadsTo(const std::optional<libav::KeyFrame>& key, double seconds) const {
  if (ended || readUpTo == AV_NOPTS_VALUE || !key || key->decodingTime > readUpTo) return false;
  return current && current->time < seconds;
}

/// True when none of the times still expected needs this group. With an infinite tolerance any picture serves any time.
bool ImageGenerator::Decoder::lastOfGroup(double seconds, const std::optional<libav::KeyFrame>& key) const {
  if (expected.empty()) return std::isinf(tolerance);
  const auto next = std::ranges::upper_bound(expected, seconds);
  return next == expected.end() || (!index->isIncomplete() && index->keyFor(*next, tolerance) != key);
}

/// The first of the pictures under way that serves.
std::optional<double> ImageGenerator::Decoder::target(double seconds) const {
  const auto found = std::ranges::find_if(underWay, [&](double time) { return serves(time, seconds); });
  return found == underWay.end() ? std::nullopt : std::optional(*found);
}

/// True for a picture that serves a time for which none is under way yet.
bool ImageGenerator::Decoder::isWanted(double time, const Aim& aim) const {
  const auto lacks = [&](double wish) { return serves(time, wish) && !target(wish); };
  if (lacks(aim.seconds)) return true;
  auto wish = std::ranges::lower_bound(expected, std::max(time - tolerance, aim.seconds));
  while (wish != expected.end() && serves(time, *wish) && !lacks(*wish))
    ++wish;
  return wish != expected.end() && serves(time, *wish);
}

/// Decoding goes on until a picture of this time is out. Where nobody has told what is expected nothing is left out
/// that serves, and the first one that comes will do.
double ImageGenerator::Decoder::enoughFor(const Aim& aim) const {
  const double from = aim.seconds - tolerance;
  return aim.passing == Passing::exactly || expected.empty() ? from : target(aim.seconds).value_or(from);
}

/// The wanted picture if decoding from `key`, or from here on, comes to it; nothing when it must lie before the key
/// frame.
const Decoded* ImageGenerator::Decoder::decodeTo(double seconds, const std::optional<libav::KeyFrame>& key,
                                                 Passing passing) {
  const bool quick = passing == Passing::quickly;
  const Aim aim{passing, seconds, quick && mayCut && lastOfGroup(seconds, key)};
  if (!leadsTo(key, seconds)) seek(key);
  while (!current || current->time < enoughFor(aim)) {
    // What lies before a picture that is too early itself is never the nearest; large pictures fill the memory.
    if (current && current->time < seconds - tolerance) previous.reset();
    if (!advance(aim)) break;
  }
  if (current && serves(*current, seconds)) {
    previous.reset();
    return &*current;
  }
  if (passedOver == anything) {
    mayCut = false;
    return decodeTo(seconds, key, Passing::exactly);
  }
  if (!current) return nullptr;
  // Only neighbours tell which one is the nearest: nothing may have been skipped between them or after the last one.
  const double from = seconds - tolerance;
  const double known = current->time < from ? current->time : previous ? previous->time : -HUGE_VAL;
  if (passedOver > known) {
    readUpTo = AV_NOPTS_VALUE;
    return quick ? decodeTo(seconds, key, Passing::exactly) : nearest(seconds);
  }
  return previous || current->time < from ? nearest(seconds) : nullptr;
}

void ImageGenerator::Decoder::forget() {
  previous.reset();
  current.reset();
  underWay.clear();
  wantedLast = false;
  passedOver = -HUGE_VAL;
  readUpTo = AV_NOPTS_VALUE;
  drained = ended = false;
}

void ImageGenerator::Decoder::seek(const std::optional<libav::KeyFrame>& key) {
  const std::int64_t stamp = key ? index->lastStampOf(*key) : index->stampOf(0);
  forget();
  avcodec_flush_buffers(codec.get());
  ++counts.seeks;
  if (av_seek_frame(asset.format.get(), stream->index, stamp, AVSEEK_FLAG_BACKWARD) >= 0) return;
  asset.file.check();
  throw MediaError("its index is damaged");
}

/// Makes the next picture the current one; false at the end of what can be read.
bool ImageGenerator::Decoder::advance(const Aim& aim) {
  while (!ended) {
    asset.watch.check();
    if (receive()) return true;
    if (!ended) sendNextPacket(aim);
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
  const double time = stamp == AV_NOPTS_VALUE ? (current ? current->time : 0) : index->timeOf(stamp);
  previous = std::exchange(current, Decoded{std::move(frame), time});
  std::erase_if(underWay, [time](double sent) { return sent < time; });
  return true;
}

void ImageGenerator::Decoder::sendNextPacket(const Aim& aim) {
  if (drained) {
    countFailure();
    return;
  }
  if (aim.cut && target(aim.seconds)) {
    // The decoder gives out what it holds back for the order of display, and knows nothing of this place any more.
    passedOver = anything;
    readUpTo = AV_NOPTS_VALUE;
    drain();
    return;
  }
  if (--packetsLeft < 0) throw MediaError("the next key frame is too far away");
  av_packet_unref(packet.get());
  if (av_read_frame(asset.format.get(), packet.get()) < 0) {
    asset.file.check();
    drain();
    return;
  }
  if (packet->stream_index != stream->index || (packet->flags & AV_PKT_FLAG_CORRUPT) != 0) return;
  if (av_packet_get_side_data(packet.get(), AV_PKT_DATA_ENCRYPTION_INFO, nullptr))
    throw MediaError("the clip is encrypted");
  ++counts.packetsRead;
  if (packet->dts != AV_NOPTS_VALUE) readUpTo = packet->dts;
  if ((packet->flags & AV_PKT_FLAG_KEY) != 0 && packet->dts != AV_NOPTS_VALUE && packet->pts != AV_NOPTS_VALUE)
    index->noteDelay(index->timeOf(packet->pts) - index->timeOf(packet->dts));
  sendPacket(aim);
}

/// A picture that is not wanted may be left out if no other one depends on it. Not the one behind a wanted one, which
/// may be the other field of the same picture, and none behind the aim where nobody has told what is expected.
void ImageGenerator::Decoder::sendPacket(const Aim& aim) {
  const bool known = packet->pts != AV_NOPTS_VALUE;
  const double time = known ? index->timeOf(packet->pts) : HUGE_VAL;
  const bool wanted = isWanted(time, aim);
  const bool early = time < aim.seconds - tolerance;
  const bool passed =
      aim.passing == Passing::quickly && known && !wanted && !wantedLast && (early || !expected.empty());
  wantedLast = wanted;
  if (passed) passedOver = std::max(passedOver, time);
  if (wanted) underWay.push_back(time);
  codec->skip_frame = passed ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
  const int status = avcodec_send_packet(codec.get(), packet.get());
  if (status == AVERROR(ENOMEM)) throw MediaError(tooLarge);
  if (status < 0) countFailure();
}

void ImageGenerator::Decoder::drain() {
  drained = true;
  avcodec_send_packet(codec.get(), nullptr);
}

void ImageGenerator::Decoder::countFailure() {
  if (++failures <= failuresInARow) return;
  readUpTo = AV_NOPTS_VALUE;
  throw MediaError("its pictures cannot be decoded");
}

ImageGenerator::ImageGenerator(MediaAsset& asset, double tolerance, int threads, Fidelity fidelity)
    : decoder_(std::make_unique<Decoder>(asset, tolerance, threads, fidelity)) {}

ImageGenerator::~ImageGenerator() = default;

Image ImageGenerator::image(double seconds, std::stop_token stop) {
  return decoder_->imageAt(seconds, stop);
}

void ImageGenerator::expect(std::vector<double> times) {
  std::ranges::sort(times);
  decoder_->expected = std::move(times);
}

const DecodingCounts& ImageGenerator::counts() const {
  return decoder_->counts;
}

}  // namespace tq

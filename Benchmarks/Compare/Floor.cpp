#include "Benchmarks/Compare/Floor.hpp"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <thread>
#include <turbojpeg.h>

#include "TQPlatform/Media/JPEGColours.hpp"
#include "TQPlatform/Media/Libav.hpp"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
#include <libswscale/swscale.h>
}

namespace tq::compare {

namespace {

constexpr double tolerance = 0.2;  // seconds

/// Decodes as little as it can.
class Reader {
 public:
  Reader(const std::filesystem::path& clip, int threads) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, clip.c_str(), nullptr, nullptr) < 0) throw std::runtime_error("cannot be opened");
    format_.reset(opened);
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(opened, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (index < 0) throw std::runtime_error("no video");
    stream_ = opened->streams[index];
    for (unsigned other = 0; other < opened->nb_streams; ++other)
      if (opened->streams[other] != stream_) opened->streams[other]->discard = AVDISCARD_ALL;
    codec_.reset(avcodec_alloc_context3(decoder));
    avcodec_parameters_to_context(codec_.get(), stream_->codecpar);
    codec_->pkt_timebase = stream_->time_base;
    codec_->thread_count = threads;
    if (avcodec_open2(codec_.get(), decoder, nullptr) < 0) throw std::runtime_error("cannot be decoded");
    delay_ = stream_->start_time - stamp(0);
  }

  void passLoopFilter() { codec_->skip_loop_filter = AVDISCARD_ALL; }

  /// Where in `times` those of another group of pictures begin, and their end. No frame serves times of two groups.
  std::vector<std::size_t> groupsOf(const std::vector<double>& times) const {
    std::vector<std::size_t> begins{0};
    for (std::size_t index = 1; index < times.size(); ++index)
      if (keyFor(times[index]) != keyFor(times[index - 1]) && times[index] - times[index - 1] > 2 * tolerance)
        begins.push_back(index);
    begins.push_back(times.size());
    return begins;
  }

  /// The frame at `times[index]`, until the next call.
  const AVFrame& at(const std::vector<double>& times, std::size_t index) {
    const double unit = av_q2d(stream_->time_base);
    const auto from = static_cast<std::int64_t>(std::ceil((times[index] - tolerance) / unit));
    if (frame_->data[0] && frame_->best_effort_timestamp >= from) return *frame_;
    const int key = keyFor(times[index]);
    if (drained_ || stamp(key) > readUpTo_) seek(key);
    const bool lastOfGroup = index + 1 == times.size() || keyFor(times[index + 1]) != key;
    std::int64_t target = INT64_MAX;  // the first picture in the order of decoding that serves
    for (;;) {
      const int status = avcodec_receive_frame(codec_.get(), frame_.get());
      if (status == 0 && frame_->best_effort_timestamp >= target) return *frame_;
      if (status == AVERROR_EOF) throw std::runtime_error("no frame there");
      if (status == 0) continue;
      if ((target != INT64_MAX && lastOfGroup) || av_read_frame(format_.get(), packet_.get()) < 0) {
        drain();
      } else {
        send(from, target);
      }
    }
  }

 private:
  std::int64_t stamp(int entry) const { return avformat_index_get_entry(stream_, entry)->timestamp; }

  /// The key frame that lies within the tolerance, or the last one before it.
  int keyFor(double seconds) const {
    const double unit = av_q2d(stream_->time_base);
    const auto wanted = static_cast<std::int64_t>(seconds / unit) - delay_;
    const auto slack = static_cast<std::int64_t>(tolerance / unit);
    const int before = std::max(av_index_search_timestamp(stream_, wanted, AVSEEK_FLAG_BACKWARD), 0);
    const int after = av_index_search_timestamp(stream_, wanted, 0);
    return stamp(before) < wanted - slack && after >= 0 && stamp(after) <= wanted + slack ? after : before;
  }

  void seek(int key) {
    avcodec_flush_buffers(codec_.get());
    avformat_seek_file(format_.get(), stream_->index, stamp(key), stamp(key) + delay_, stamp(key) + delay_, 0);
    drained_ = false;
  }

  void drain() {
    avcodec_send_packet(codec_.get(), nullptr);
    drained_ = true;
  }

  void send(std::int64_t from, std::int64_t& target) {
    const bool serves = target == INT64_MAX && packet_->pts >= from;
    codec_->skip_frame = serves ? AVDISCARD_DEFAULT : AVDISCARD_NONREF;
    if (serves) target = packet_->pts;
    readUpTo_ = packet_->dts;
    if ((packet_->flags & AV_PKT_FLAG_KEY) != 0) delay_ = std::max(delay_, packet_->pts - packet_->dts);
    avcodec_send_packet(codec_.get(), packet_.get());
    av_packet_unref(packet_.get());
  }

  libav::Owned<AVFormatContext> format_;
  AVStream* stream_ = nullptr;
  libav::Owned<AVCodecContext> codec_;
  libav::Owned<AVPacket> packet_ = libav::makePacket();
  libav::Owned<AVFrame> frame_ = libav::makeFrame();
  std::int64_t delay_ = 0;  // from the decoding of a key frame to its time of display
  std::int64_t readUpTo_ = 0;
  bool drained_ = true;
};

libav::Owned<AVFrame> makePlanes(int width, int height, AVPixelFormat format) {
  auto frame = libav::makeFrame();
  frame->width = width;
  frame->height = height;
  frame->format = format;
  frame->color_range = AVCOL_RANGE_JPEG;
  av_frame_get_buffer(frame.get(), 0);
  return frame;
}

/// Scales planar frames of one size and format to another; grey ones become full range, the others keep theirs.
class Scaler {
 public:
  Scaler(const AVFrame& source, int width, int height, AVPixelFormat format, int filter)
      : target_(makePlanes(width, height, format)) {
    context_.reset(sws_alloc_context());
    const bool grey = format == AV_PIX_FMT_GRAY8;
    const bool fullRange = grey && source.color_range == AVCOL_RANGE_JPEG;
    const std::pair<const char*, std::int64_t> settings[] = {
        {"srcw", source.width},
        {"srch", source.height},
        {"src_format", source.format},
        {"src_range", fullRange},
        {"dstw", width},
        {"dsth", height},
        {"dst_format", format},
        {"dst_range", grey},
        {"sws_flags", filter | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP}};
    for (const auto& [name, value] : settings)
      av_opt_set_int(context_.get(), name, value, 0);
    if (sws_init_context(context_.get(), nullptr, nullptr) < 0) throw std::runtime_error("cannot be scaled");
    const int* same = sws_getCoefficients(SWS_CS_ITU601);
    sws_setColorspaceDetails(context_.get(), same, fullRange, same, grey, 0, 1 << 16, 1 << 16);
  }

  const AVFrame& scale(const AVFrame& source) {
    sws_scale(context_.get(), source.data, source.linesize, 0, source.height, target_->data, target_->linesize);
    return *target_;
  }

 private:
  libav::Owned<SwsContext> context_;
  libav::Owned<AVFrame> target_;
};

/// Brings planar frames of BT.709 down to a size, in the colours of a JPEG.
class Shrinker {
 public:
  Shrinker(const AVFrame& source, int maxEdge) {
    const double scale = std::min(1.0, static_cast<double>(maxEdge) / std::max(source.width, source.height));
    const int width = static_cast<int>(std::lround(source.width * scale));
    const int height = static_cast<int>(std::lround(source.height * scale));
    scaler_.emplace(source, width, height, AV_PIX_FMT_YUV420P10, SWS_BICUBIC);
    planes_ = makePlanes(width, height, AV_PIX_FMT_YUV420P);
  }

  const AVFrame& shrink(const AVFrame& source) {
    toJPEGColours(scaler_->scale(source), {.matrix = SWS_CS_ITU709}, *planes_);
    return *planes_;
  }

 private:
  std::optional<Scaler> scaler_;
  libav::Owned<AVFrame> planes_;
};

Bytes encode(tjhandle encoder, const AVFrame& frame, int quality) {
  const std::uint8_t* planes[] = {frame.data[0], frame.data[1], frame.data[2]};
  unsigned char* bytes = nullptr;
  unsigned long count = 0;
  tjCompressFromYUVPlanes(encoder, planes, frame.width, frame.linesize, frame.height, TJSAMP_420, &bytes, &count,
                          quality, 0);
  Bytes jpeg(bytes, bytes + count);
  tjFree(bytes);
  return jpeg;
}

std::uint64_t hashOf(const AVFrame& grey) {
  std::uint64_t hash = 0;
  for (int row = 0; row < 8; ++row) {
    const std::uint8_t* line = grey.data[0] + std::ptrdiff_t{grey.linesize[0]} * row;
    for (int column = 0; column < 8; ++column)
      hash = hash << 1 | static_cast<std::uint64_t>(line[column] > line[column + 1]);
  }
  return hash;
}

/// A multiple of `to` that a filter reaches in one step.
int onTheWay(int from, int to) {
  while (to * 32 < from)
    to *= 2;
  return to;
}

}  // namespace

std::vector<Bytes> floorFrames(const std::filesystem::path& clip, const std::vector<double>& times, int maxEdge,
                               int quality, std::size_t readers, int threads) {
  std::vector<Bytes> frames(times.size());
  const std::vector<std::size_t> groups = Reader(clip, 1).groupsOf(times);
  std::atomic<std::size_t> next = 0;
  const auto read = [&] {
    Reader reader(clip, threads);
    const std::unique_ptr<void, decltype(&tjDestroy)> encoder(tjInitCompress(), &tjDestroy);
    std::optional<Shrinker> shrinker;
    for (std::size_t group = next++; group + 1 < groups.size(); group = next++)
      for (std::size_t index = groups[group]; index < groups[group + 1]; ++index) {
        const AVFrame& frame = reader.at(times, index);
        if (!shrinker) shrinker.emplace(frame, maxEdge);
        frames[index] = encode(encoder.get(), shrinker->shrink(frame), quality);
      }
  };
  std::vector<std::jthread> others;
  for (std::size_t other = 1; other < readers; ++other)
    others.emplace_back(read);
  read();
  others.clear();
  return frames;
}

std::vector<std::uint64_t> floorHashes(const std::filesystem::path& clip, const std::vector<double>& times,
                                       int threads) {
  Reader reader(clip, threads);
  reader.passLoopFilter();
  std::optional<Scaler> first, second;
  std::vector<std::uint64_t> hashes;
  for (std::size_t index = 0; index < times.size(); ++index) {
    const AVFrame& frame = reader.at(times, index);
    if (!first) first.emplace(frame, onTheWay(frame.width, 9), onTheWay(frame.height, 8), AV_PIX_FMT_GRAY8, SWS_AREA);
    const AVFrame& middle = first->scale(frame);
    if (!second) second.emplace(middle, 9, 8, AV_PIX_FMT_GRAY8, SWS_AREA);
    hashes.push_back(hashOf(second->scale(middle)));
  }
  return hashes;
}

}  // namespace tq::compare

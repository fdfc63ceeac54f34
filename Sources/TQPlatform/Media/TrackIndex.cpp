#include "TQPlatform/Media/TrackIndex.hpp"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavformat/avformat.h>
}

namespace tq::libav {

namespace {

/// Seconds between decoding and display of the first picture, which is a key frame.
double delayOf(AVStream& stream) {
  const AVIndexEntry* first = avformat_index_get_entry(&stream, 0);
  if (!first || stream.start_time == AV_NOPTS_VALUE) return 0;
  return static_cast<double>(av_sat_sub64(stream.start_time, first->timestamp)) * av_q2d(stream.time_base);
}

}  // namespace

std::int64_t listedSamples(const AVFormatContext& format) {
  std::int64_t samples = 0;
  for (unsigned index = 0; index < format.nb_streams; ++index)
    samples += avformat_index_get_entries_count(format.streams[index]);
  return samples;
}

TrackIndex::TrackIndex(AVFormatContext& format, AVStream& stream, double origin)
    : format_(format), stream_(stream), origin_(origin) {
  noteDelay(delayOf(stream));
}

void TrackIndex::noteDelay(double seconds) {
  constexpr int mostPictures = 16;  // ITU-T H.264, A.3.1
  const double rate = stream_.avg_frame_rate.num > 0 ? av_q2d(stream_.avg_frame_rate) : 0;
  // Tables that hide pictures before the start make it seem longer than any codec allows.
  if (rate > 0) delay_ = std::clamp(seconds, delay_, std::max(delay_, mostPictures / rate));
}

double TrackIndex::timeOf(std::int64_t stamp) const {
  return static_cast<double>(stamp) * av_q2d(stream_.time_base) - origin_;
}

std::int64_t TrackIndex::stampOf(double seconds) const {
  constexpr double limit = 4e18;
  const double stamp = (seconds + origin_) / av_q2d(stream_.time_base);
  return static_cast<std::int64_t>(std::clamp(stamp, -limit, limit));
}

bool TrackIndex::readable(const AVIndexEntry& entry) const {
  return entry.pos <= fileBytes_ - entry.size;
}

std::optional<KeyFrame> TrackIndex::keyAtOrBefore(int entry) const {
  for (; entry >= 0; --entry) {
    const AVIndexEntry* candidate = avformat_index_get_entry(&stream_, entry);
    if (candidate && (candidate->flags & AVINDEX_KEYFRAME) != 0 && readable(*candidate))
      return KeyFrame{entry, candidate->timestamp};
  }
  return std::nullopt;
}

std::optional<KeyFrame> TrackIndex::keyFor(double seconds, double tolerance) const {
  const std::int64_t stamp = stampOf(seconds - delay_);
  const auto before = keyAtOrBefore(av_index_search_timestamp(&stream_, stamp, AVSEEK_FLAG_BACKWARD));
  if (before && shownAt(*before) >= seconds - tolerance) return before;
  const auto after = keyAtOrBefore(av_index_search_timestamp(&stream_, stamp, 0));
  const bool later = after && after->decodingTime >= stamp;
  return later && (!before || shownAt(*after) <= seconds + tolerance) ? after : before;
}

std::int64_t TrackIndex::lastStampOf(const KeyFrame& key) const {
  const int count = avformat_index_get_entries_count(&stream_);
  for (int entry = key.entry + 1; entry < count; ++entry) {
    const AVIndexEntry* next = avformat_index_get_entry(&stream_, entry);
    if ((next->flags & AVINDEX_KEYFRAME) != 0) return std::max(key.decodingTime, av_sat_sub64(next->timestamp, 1));
  }
  return std::max(key.decodingTime, avformat_index_get_entry(&stream_, count - 1)->timestamp);
}

double TrackIndex::lastTime() const {
  const int count = avformat_index_get_entries_count(&stream_);
  return count > 0 ? timeOf(avformat_index_get_entry(&stream_, count - 1)->timestamp) : HUGE_VAL;
}

bool TrackIndex::isIncomplete() const {
  return stream_.nb_frames == 0 && lastTime() + 1 < timeOf(stream_.duration);
}

double TrackIndex::endOfContent() const {
  double end = 0;
  for (unsigned index = 0; index < format_.nb_streams; ++index) {
    AVStream& track = *format_.streams[index];
    int entry = avformat_index_get_entries_count(&track) - 1;
    while (entry >= 0 && !readable(*avformat_index_get_entry(&track, entry)))
      --entry;
    if (entry < 0) continue;
    const auto last = static_cast<double>(avformat_index_get_entry(&track, entry)->timestamp);
    const double length = entry > 0 ? last - static_cast<double>(avformat_index_get_entry(&track, entry - 1)->timestamp)
                                    : static_cast<double>(std::max(track.duration, std::int64_t{0}));
    end = std::max(end, (last + length) * av_q2d(track.time_base) - origin_);
  }
  return end;
}

}  // namespace tq::libav

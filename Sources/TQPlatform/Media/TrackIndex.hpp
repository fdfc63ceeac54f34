#pragma once

#include <cstdint>
#include <optional>
#include <utility>

struct AVFormatContext;
struct AVIndexEntry;
struct AVStream;

namespace tq::libav {

/// A key frame in a track's index.
struct KeyFrame {
  int entry;
  std::int64_t decodingTime;  ///< in the track's time base

  bool operator==(const KeyFrame&) const = default;
};

/// How many samples the tables of all tracks list together.
std::int64_t listedSamples(const AVFormatContext& format);

/// What the tables of a clip tell about one of its tracks. Times are seconds from the start of the presentation, time
/// stamps are in the track's time base.
class TrackIndex {
 public:
  /// `origin`: the time stamp at which the presentation begins, in seconds. Both must stay while this is used.
  TrackIndex(AVFormatContext& format, AVStream& stream, double origin);

  /// A file that was cut off keeps the index of what it has lost; what lies beyond `bytes` does not count. True when
  /// that changes anything.
  bool limit(std::int64_t bytes) { return std::exchange(fileBytes_, bytes) != bytes; }

  /// Tells that a key frame was shown so many seconds after its decoding. The tables tell it of the first one only, and
  /// those of open groups come later.
  void noteDelay(double seconds);

  double timeOf(std::int64_t stamp) const;
  std::int64_t stampOf(double seconds) const;

  /// Where decoding starts for the picture at a time: the key frame within the tolerance; else the last one before the
  /// time, and the first of all where there is none.
  std::optional<KeyFrame> keyFor(double seconds, double tolerance) const;

  /// The last key frame before that one.
  std::optional<KeyFrame> keyBefore(const KeyFrame& key) const { return keyAtOrBefore(key.entry - 1); }

  /// The latest decoding time that still belongs to the key frame's group. A seek to the key frame's own decoding time
  /// could end in the group before, because the picture is shown only later.
  std::int64_t lastStampOf(const KeyFrame& key) const;

  /// Decoding time of the last picture that is listed, and infinity for a track without a list.
  double lastTime() const;

  /// True for fragments whose list is not read yet: a seek to them reads it.
  bool isIncomplete() const;

  /// The end of the latest sample of any track of the clip. Headers may claim another one.
  double endOfContent() const;

 private:
  bool readable(const AVIndexEntry& entry) const;
  std::optional<KeyFrame> keyAtOrBefore(int entry) const;
  double shownAt(const KeyFrame& key) const { return timeOf(key.decodingTime) + delay_; }

  AVFormatContext& format_;
  AVStream& stream_;
  double origin_;
  double delay_ = 0;  // from the decoding of a key frame until it is shown, as far as is known
  std::int64_t fileBytes_ = 0;
};

}  // namespace tq::libav

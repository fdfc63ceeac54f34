#include "TQDescription/Export/ExportItem.hpp"

#include <algorithm>
#include <utility>

#include "TQCore/ValueCodec.hpp"
#include "TQDescription/Export/Timecode.hpp"

namespace tq {

namespace {

constexpr double standardFrameRate = 25.0;

/// A shot and the time that it tells.
struct TimedShot {
  double seconds;
  const Shot* shot;
};

std::vector<TimedShot> timedShots(const std::vector<Shot>& shots) {
  std::vector<TimedShot> timed;
  for (const Shot& shot : shots)
    if (const auto seconds = shot.timecode ? Timecode::secondsFromSidecarTimecode(*shot.timecode) : std::nullopt)
      timed.push_back({*seconds, &shot});
  std::ranges::stable_sort(timed, {}, &TimedShot::seconds);
  return timed;
}

std::optional<std::string> nameOf(const Shot& shot, const GlobalSummary& global) {
  if (shot.framingNotes && !shot.framingNotes->empty()) return shot.framingNotes;
  if (shot.tags && !shot.tags->empty() && !shot.tags->front().empty()) return shot.tags->front();
  return global.overallSummaryOneLine;
}

std::vector<ExportRange> rangesOfShots(const DescriptionResult& result, double end) {
  const std::vector<TimedShot> shots = timedShots(result.shots);
  std::vector<ExportRange> ranges;
  if (shots.size() < 2) return ranges;
  for (std::size_t index = 0; index < shots.size(); ++index) {
    const double start = shots[index].seconds;
    const double next = index + 1 < shots.size() ? shots[index + 1].seconds : end;
    if (start < next) ranges.push_back({start, next, nameOf(*shots[index].shot, result.global)});
  }
  return ranges;
}

}  // namespace

double ExportRange::durationSeconds() const {
  return std::max(0.0, endSeconds - startSeconds);
}

template <>
std::size_t hashOf(const ExportRange& range) {
  return hashOfValues(range.startSeconds, range.endSeconds, range.name);
}

ExportItem ExportItem::make(std::filesystem::path mediaURL, Shared<DescriptionResult> result, bool wholeClip) {
  const double end = std::max(0.0, result->source.durationSeconds);
  std::vector<ExportRange> ranges;
  if (!wholeClip) ranges = rangesOfShots(*result, end);
  if (ranges.empty()) ranges = {{0, end, result->global.overallSummaryOneLine}};
  return {.mediaURL = std::move(mediaURL), .result = std::move(result), .ranges = std::move(ranges)};
}

double ExportItem::frameRate() const {
  return result->source.frameRate > 0 ? result->source.frameRate : standardFrameRate;
}

double ExportItem::durationSeconds() const {
  return result->source.durationSeconds;
}

template <>
std::size_t hashOf(const ExportItem& item) {
  return hashOfValues(item.mediaURL, *item.result, item.ranges);
}

double timelineFrameRate(const std::vector<ExportItem>& items) {
  return items.empty() ? standardFrameRate : items.front().frameRate();
}

}  // namespace tq

#include <algorithm>
#include <barrier>
#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>

#include "TQCore/TQError.hpp"
#include "TQFrames/FrameBatches.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;

constexpr FrameEncoding encoding{.maxEdge = 40, .quality = 0.8};

Image picture(int width = 80, int height = 60) {
  return Image::fromRGB(width, height, Bytes(static_cast<std::size_t>(width * height * 3), 77));
}

std::vector<double> seconds(int count) {
  std::vector<double> times;
  for (int index = 0; index < count; ++index)
    times.push_back(index + 0.5);
  return times;
}

std::vector<double> timesOf(const std::vector<ExtractedFrame>& frames) {
  std::vector<double> times;
  std::ranges::transform(frames, std::back_inserter(times), [](const auto& frame) { return frame.timecode.seconds; });
  return times;
}

std::string failureOf(const std::function<void()>& action) try {
  action();
  return "no failure";
} catch (const TQError& error) {
  return std::get<TQError::FrameExtractionFailed>(error.value()).text;
}

TEST(FFmpegWindow, IsHalfTheProcessorsFromTwoToFour) {
  const std::vector<std::pair<std::size_t, std::size_t>> cases{{0, 2}, {1, 2}, {2, 2}, {4, 2},  {5, 2},  {6, 3},
                                                               {7, 3}, {8, 4}, {9, 4}, {16, 4}, {128, 4}};
  for (const auto& [processors, window] : cases)
    EXPECT_EQ(ffmpegWindow(processors), window) << processors;
}

TEST(FFmpegBatch, GivesOneFrameForEachTimeInOrder) {
  const auto frames =
      extractFramesFFmpegBatch([](double, std::stop_token) { return picture(); }, seconds(7), encoding, 4, nullptr, {});
  EXPECT_EQ(timesOf(frames), seconds(7));
  for (const auto& frame : frames) {
    EXPECT_EQ(frame.width, 40);
    EXPECT_EQ(frame.height, 30);
    EXPECT_EQ(Image::decodeJPEG(frame.jpegData)->width(), 40);
  }
}

/// How many frames were decoded at once at most. The first `meeting` calls wait for each other, so that a window that
/// is too narrow would never end.
std::size_t widestWindow(int count, std::size_t window, std::ptrdiff_t meeting) {
  std::barrier together(meeting);
  std::mutex mutex;
  std::size_t running = 0, widest = 0, begun = 0;
  extractFramesFFmpegBatch(
      [&](double, std::stop_token) {
        bool first = false;
        {
          const std::lock_guard lock(mutex);
          widest = std::max(widest, ++running);
          first = ++begun <= static_cast<std::size_t>(meeting);
        }
        if (first) together.arrive_and_wait();
        const std::lock_guard lock(mutex);
        --running;
        return picture();
      },
      seconds(count), encoding, window, nullptr, {});
  return widest;
}

TEST(FFmpegBatch, OnEightProcessorsThreeTimesStartThreeTasks) {
  EXPECT_EQ(widestWindow(3, ffmpegWindow(8), 3), 3u);
}

TEST(FFmpegBatch, OnEightProcessorsTenTimesStartFourTasks) {
  EXPECT_EQ(widestWindow(10, ffmpegWindow(8), 4), 4u);
}

TEST(FFmpegBatch, EveryEndStartsTheNextWhileTheOthersStillRun) {
  std::promise<void> lastBegins;
  std::future<void> lastBegun = lastBegins.get_future();
  bool others = false;
  const FrameAt firstIsSlow = [&](double time, std::stop_token) {
    if (time == 9.5) lastBegins.set_value();
    if (time == 0.5) others = lastBegun.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    return picture();
  };
  extractFramesFFmpegBatch(firstIsSlow, seconds(10), encoding, 4, nullptr, {});
  EXPECT_TRUE(others) << "the last frame waited for the first one";
}

TEST(FFmpegBatch, ProgressRisesToOneInEqualSteps) {
  std::vector<double> told;
  extractFramesFFmpegBatch([](double, std::stop_token) { return picture(); }, seconds(8), encoding, 4,
                           [&](double fraction) { told.push_back(fraction); }, {});
  EXPECT_THAT(told, ElementsAre(0.125, 0.25, 0.375, 0.5, 0.625, 0.75, 0.875, 1.0));
}

TEST(FFmpegBatch, OneFailureFailsTheBatchWithThatError) {
  std::mutex mutex;
  std::set<double> asked;
  const FrameAt failing = [&](double time, std::stop_token) {
    const std::lock_guard lock(mutex);
    asked.insert(time);
    if (time == 1.5) throw TQError::frameExtractionFailed("frame two is broken");
    return picture();
  };
  EXPECT_EQ(failureOf([&] { extractFramesFFmpegBatch(failing, seconds(50), encoding, 2, nullptr, {}); }),
            "frame two is broken");
  EXPECT_LT(asked.size(), 50u) << "nothing more is started after a failure";
}

TEST(FFmpegBatch, AStopRequestStartsNothingMoreAndAwaitsWhatRuns) {
  std::stop_source source;
  std::mutex mutex;
  int begun = 0, ended = 0;
  const FrameAt stopping = [&](double, std::stop_token) {
    {
      const std::lock_guard lock(mutex);
      if (++begun == 3) source.request_stop();
    }
    std::this_thread::yield();
    const std::lock_guard lock(mutex);
    ++ended;
    return picture();
  };
  EXPECT_THROW(extractFramesFFmpegBatch(stopping, seconds(100), encoding, 2, nullptr, source.get_token()), Cancelled);
  EXPECT_EQ(begun, ended);
  EXPECT_LE(begun, 4);
}

std::vector<ExtractedFrame> inOneRun(const FrameAt& frameAt, const std::vector<double>& times,
                                     const ExtractionProgress& progress, std::stop_token stop) {
  const OpenRun open = [&](const PictureRun&) { return frameAt; };
  return extractFramesPlatformBatch({times}, open, 1, encoding, progress, std::move(stop));
}

/// A run for each of the times 0.5, 1.5, ...
std::vector<ExtractedFrame> inRunsOfOne(int count, const FrameAt& frameAt, std::size_t window,
                                        const ExtractionProgress& progress = nullptr) {
  std::vector<PictureRun> runs;
  for (const double time : seconds(count))
    runs.push_back({time});
  return extractFramesPlatformBatch(runs, [&](const PictureRun&) { return frameAt; }, window, encoding, progress, {});
}

TEST(PlatformBatch, GivesOneFrameForEachTimeInOrderAndOneAfterTheOther) {
  std::vector<double> asked, told;
  const auto frames = inOneRun(
      [&](double time, std::stop_token) {
        asked.push_back(time);
        return picture(20, 10);
      },
      seconds(4), [&](double fraction) { told.push_back(fraction); }, {});
  EXPECT_EQ(timesOf(frames), seconds(4));
  EXPECT_EQ(asked, seconds(4));
  EXPECT_THAT(told, ElementsAre(0.25, 0.5, 0.75, 1.0));
  EXPECT_EQ(frames.front().width, 20) << "small pictures keep their size";
}

TEST(PlatformBatch, AFailureNamesTheTimeAndTheReason) {
  const FrameAt failing = [](double time, std::stop_token) {
    if (time > 1) throw std::runtime_error("the disk is on fire");
    return picture();
  };
  EXPECT_EQ(failureOf([&] { inOneRun(failing, seconds(3), nullptr, {}); }),
            "could not extract frame at 1.5s: the disk is on fire");
}

TEST(PlatformBatch, CancellationIsNoFailureOfAFrame) {
  const FrameAt cancelled = [](double, std::stop_token) -> Image { throw Cancelled(); };
  EXPECT_THROW(inOneRun(cancelled, seconds(3), nullptr, {}), Cancelled);
  std::stop_source source;
  int decoded = 0;
  const FrameAt stopping = [&](double, std::stop_token) {
    ++decoded;
    source.request_stop();
    return picture();
  };
  EXPECT_THROW(inOneRun(stopping, seconds(3), nullptr, source.get_token()), Cancelled);
  EXPECT_EQ(decoded, 1);
}

TEST(PlatformBatch, OfTimesThatCoincideOnlyTheLastIsServed) {
  const FrameAt any = [](double, std::stop_token) { return picture(); };
  EXPECT_EQ(failureOf([&] {
              inOneRun(any, {1.0, 2.0, 2.0004, 3.0}, nullptr, {});
            }),
            "frame 1 at 2.0s missing from AVFoundation batch");
}

TEST(PlatformBatch, RunsGoOnSideBySideAndTheFramesStayInOrder) {
  std::barrier together(3);
  std::vector<double> told;
  const FrameAt meeting = [&](double, std::stop_token) {
    together.arrive_and_wait();
    return picture();
  };
  const auto frames = inRunsOfOne(6, meeting, 3, [&](double fraction) { told.push_back(fraction); });
  EXPECT_EQ(timesOf(frames), seconds(6));
  EXPECT_TRUE(std::ranges::is_sorted(told));
  EXPECT_EQ(told.back(), 1.0);
}

TEST(PlatformBatch, OfSeveralFailuresTheFirstInTimeIsTold) {
  std::promise<void> laterFailed;
  std::mutex mutex;
  std::set<double> asked;
  const FrameAt failing = [&](double time, std::stop_token) {
    {
      const std::lock_guard lock(mutex);
      asked.insert(time);
    }
    if (time == 0.5) laterFailed.get_future().wait();
    if (time == 1.5) laterFailed.set_value();
    if (time < 2) throw std::runtime_error("broken");
    return picture();
  };
  EXPECT_EQ(failureOf([&] { inRunsOfOne(50, failing, 2); }), "could not extract frame at 0.5s: broken");
  EXPECT_LT(asked.size(), 50u) << "nothing more is begun after a failure";
}

TEST(AssembleFrames, TheFirstFrameThatIsMissingIsNamed) {
  std::vector<std::optional<ExtractedFrame>> frames(3);
  frames[0] = ExtractedFrame{};
  EXPECT_EQ(failureOf([&] {
              assembleFrames(frames, {0.5, 12.25, 3}, "ffmpeg batch");
            }),
            "frame 1 at 12.25s missing from ffmpeg batch");
}

}  // namespace
}  // namespace tq::test

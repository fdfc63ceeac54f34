#include <gmock/gmock.h>

#include "Support/ClipMaker.hpp"
#include "Support/MovieWriter.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Media/PictureRuns.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;

constexpr double tolerance = 0.2;

/// Ten seconds with a key frame every two.
std::filesystem::path fiveGroups(const Arguments& more = {}) {
  Arguments arguments{"-g", "20", "-keyint_min", "20", "-sc_threshold", "0", "-bf", "0"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  return makeVideo("testsrc=s=64x48:r=10:d=10", h264(arguments), "mp4");
}

std::vector<PictureRun> runsOf(const std::filesystem::path& clip, const std::vector<double>& times) {
  MediaAsset asset(clip);
  return pictureRuns(asset, times, tolerance, {});
}

TEST(PictureRuns, TimesOfOneGroupOfPicturesStayTogether) {
  EXPECT_THAT(runsOf(fiveGroups(), {0.5, 1.5, 2.5, 3.5, 6.5, 9.5}),
              ElementsAre(PictureRun{0.5, 1.5}, PictureRun{2.5, 3.5}, PictureRun{6.5}, PictureRun{9.5}));
}

TEST(PictureRuns, ATimeJustBeforeAKeyFrameBelongsToIt) {
  EXPECT_THAT(runsOf(fiveGroups(), {1.0, 1.9, 3.0}), ElementsAre(PictureRun{1.0}, PictureRun{1.9, 3.0}));
}

TEST(PictureRuns, TimesThatOnePictureMayServeStayTogether) {
  EXPECT_THAT(runsOf(fiveGroups(), {1.75, 2.1, 4.5}), ElementsAre(PictureRun{1.75, 2.1}, PictureRun{4.5}));
}

TEST(PictureRuns, FragmentsThatAreNotReadYetAreOneRun) {
  const auto clip =
      makeVideo("testsrc=s=64x48:r=10:d=30",
                h264({"-g", "20", "-movflags", "frag_keyframe+empty_moov+global_sidx+default_base_moof"}), "mp4");
  EXPECT_THAT(runsOf(clip, {0.5, 13.5, 29.5}), ElementsAre(PictureRun{0.5, 13.5, 29.5}));
}

TEST(PictureRuns, LargeTablesAreNotHeldTwice) {
  const TemporaryFolder folder;
  const auto runsOfSamples = [&](std::uint32_t count) {
    const MovieTrack track{.sampleCount = count, .times = {{count, 10}}};
    return runsOf(writeClip(folder / "movie.mov", movieOf(track)), {0, 0.45, 0.9}).size();
  };
  EXPECT_EQ(runsOfSamples(10), 3u);
  EXPECT_EQ(runsOfSamples((1u << 20) + 1), 1u);
}

TEST(PictureRuns, WithoutAVideoTrackNothingIsDivided) {
  const auto clip = makeClip({"-f", "lavfi", "-i", "sine=d=4", "-c:a", "aac"}, "mp4");
  EXPECT_THAT(runsOf(clip, {1, 2}), ElementsAre(PictureRun{1, 2}));
  EXPECT_TRUE(runsOf(clip, {}).empty());
}

TEST(PictureRuns, AStopRequestEndsTheWork) {
  MediaAsset asset(fiveGroups());
  std::stop_source source;
  source.request_stop();
  EXPECT_THROW(pictureRuns(asset, {1, 5}, tolerance, source.get_token()), Cancelled);
}

}  // namespace
}  // namespace tq::test

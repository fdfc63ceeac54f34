#include <algorithm>
#include <gmock/gmock.h>
#include <limits>
#include <stdexcept>

#include "TQFrames/AdaptiveSampling.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"

namespace tq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint64_t bits(int count) {
  return (std::uint64_t{1} << count) - 1;
}

Image grey(std::uint8_t level) {
  return Image::fromRGB(1, 1, Bytes(3, level));
}

Image mustNotDecode(double, std::stop_token) {
  throw std::logic_error("a picture was decoded");
}

std::vector<HashedTime> still(int count) {
  std::vector<HashedTime> hashed;
  for (int index = 0; index < count; ++index)
    hashed.push_back({5.0 + 10 * index, 0});
  return hashed;
}

TEST(CandidateTimes, ShortClipsGetOneASecond) {
  EXPECT_THAT(candidateTimes(3), ElementsAre(0.5, 1.5, 2.5));
}

TEST(CandidateTimes, LongClipsGetSixtyWhateverTheirLength) {
  EXPECT_THAT(candidateTimes(600), SizeIs(60));
  EXPECT_DOUBLE_EQ(candidateTimes(600).front(), 5);
  EXPECT_DOUBLE_EQ(candidateTimes(600)[1], 15);
  EXPECT_DOUBLE_EQ(candidateTimes(600).back(), 595);
  for (const double duration : {60.0, 61.0, 3599.9, 143'165.0, 1e300})
    EXPECT_LE(candidateTimes(duration).size(), 61u);
}

TEST(CandidateTimes, HalfASecondHasNone) {
  EXPECT_THAT(candidateTimes(0.5), IsEmpty());
  EXPECT_THAT(candidateTimes(0.51), ElementsAre(0.5));
}

TEST(SelectByChange, ADifferenceOfTwelveBitsIsKeptAndOneOfElevenIsNot) {
  EXPECT_THAT(selectByChange({{1, 0}, {2, bits(12)}}, 5), ElementsAre(1, 2));
  const std::vector<HashedTime> small{{1, 0}, {2, bits(11)}, {3, bits(12)}};
  EXPECT_THAT(selectByChange(small, 1), ElementsAre(1)) << "thinned from 1 and 3, of which the first stays";
  EXPECT_THAT(selectByChange({{1, 0}, {2, bits(11)}, {3, bits(12)}, {4, bits(12)}}, 2), ElementsAre(1, 3));
}

TEST(SelectByChange, TheLastKeptPictureIsWhatCounts) {
  // A slow pan: six bits more each time.
  std::vector<HashedTime> pan;
  for (int step = 0; step < 8; ++step)
    pan.push_back({static_cast<double>(step), bits(6 * step)});
  EXPECT_THAT(selectByChange(pan, 4), ElementsAre(0, 2, 4, 6));
}

TEST(SelectByChange, TooManyAreThinnedEvenlyWithBothEnds) {
  std::vector<HashedTime> busy;
  for (int step = 0; step < 10; ++step)
    busy.push_back({static_cast<double>(step), step % 2 == 0 ? 0 : ~std::uint64_t{0}});
  EXPECT_THAT(selectByChange(busy, 4), ElementsAre(0, 3, 6, 9));
}

TEST(SelectByChange, AStillClipIsFilledUpInStrides) {
  EXPECT_THAT(selectByChange(still(60), 10), ElementsAre(5, 15, 75, 135, 195, 255, 315, 375, 435, 495));
}

TEST(SelectByChange, FillingStopsAtTheBudgetAlthoughTheStrideLeavesMore) {
  // 9 remain for 5: stride 1 would reach all nine.
  EXPECT_THAT(selectByChange(still(10), 6), ElementsAre(5, 15, 25, 35, 45, 55));
}

TEST(SelectByChange, FewerHashesThanTheBudgetAreAllTaken) {
  EXPECT_THAT(selectByChange(still(4), 10), ElementsAre(5, 15, 25, 35));
}

TEST(SelectByChange, FilledTimesAreSortedInAmongTheKept) {
  const std::vector<HashedTime> hashed{{1, 0}, {2, 0}, {3, 0}, {4, bits(20)}, {5, bits(20)}};
  EXPECT_THAT(selectByChange(hashed, 4), ElementsAre(1, 2, 3, 4));
}

TEST(SelectByChange, ABudgetBelowOneLeavesNothing) {
  EXPECT_THAT(selectByChange(still(5), 0), IsEmpty());
  EXPECT_THAT(selectByChange(still(5), -1), IsEmpty());
  EXPECT_THAT(selectByChange(still(5), std::numeric_limits<std::int64_t>::min()), IsEmpty());
}

TEST(SelectByChange, NothingHashedGivesNothing) {
  EXPECT_THAT(selectByChange({}, 5), IsEmpty());
}

TEST(AdaptiveSample, AVeryShortClipGivesItsMiddleUnseen) {
  EXPECT_THAT(adaptiveSample(0.4, 12, mustNotDecode, {}), ElementsAre(0.2));
  EXPECT_THAT(adaptiveSample(0.4, 0, mustNotDecode, {}), ElementsAre(0.2));
}

TEST(AdaptiveSample, AStillClipOfTenMinutesUsesItsBudget) {
  int decoded = 0;
  const auto times = adaptiveSample(600, 10,
                                    [&](double, std::stop_token) {
                                      ++decoded;
                                      return grey(100);
                                    },
                                    {});
  EXPECT_THAT(times, ElementsAre(5, 15, 75, 135, 195, 255, 315, 375, 435, 495));
  EXPECT_EQ(decoded, 60);
}

TEST(AdaptiveSample, PicturesAreAskedForInOrder) {
  std::vector<double> asked;
  adaptiveSample(120, 5,
                 [&](double seconds, std::stop_token) {
                   asked.push_back(seconds);
                   return grey(0);
                 },
                 {});
  EXPECT_EQ(asked, candidateTimes(120));
}

TEST(AdaptiveSample, PicturesThatFailAreLeftOut) {
  const auto times = adaptiveSample(10, 3,
                                    [](double seconds, std::stop_token) {
                                      if (seconds < 8) throw std::runtime_error("damaged");
                                      return grey(0);
                                    },
                                    {});
  EXPECT_THAT(times, ElementsAre(8.5, 9.5));
}

TEST(AdaptiveSample, WhenAllFailTheMiddleIsAll) {
  const FrameAt failing = [](double, std::stop_token) -> Image { throw std::runtime_error("damaged"); };
  EXPECT_THAT(adaptiveSample(10, 3, failing, {}), ElementsAre(5));
  EXPECT_THAT(adaptiveSample(10, 0, failing, {}), ElementsAre(5));
}

TEST(AdaptiveSample, NoBudgetGivesNothing) {
  EXPECT_THAT(adaptiveSample(10, 0, [](double, std::stop_token) { return grey(0); }, {}), IsEmpty());
}

TEST(AdaptiveSample, CancellationIsNoFailureOfAPicture) {
  const FrameAt cancelled = [](double, std::stop_token) -> Image { throw Cancelled(); };
  EXPECT_THROW(adaptiveSample(10, 3, cancelled, {}), Cancelled);
}

TEST(AdaptiveSample, AStopRequestIsSeenBetweenPictures) {
  std::stop_source source;
  int decoded = 0;
  const FrameAt stopping = [&](double, std::stop_token) {
    if (++decoded == 4) source.request_stop();
    return grey(0);
  };
  EXPECT_THROW(adaptiveSample(600, 3, stopping, source.get_token()), Cancelled);
  EXPECT_EQ(decoded, 4);
}

}  // namespace
}  // namespace tq::test

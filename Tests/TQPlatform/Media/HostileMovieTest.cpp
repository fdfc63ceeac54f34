#include <algorithm>
#include <cstdint>
#include <limits>

#include "TQPlatform/Media/HostileMovie.hpp"
#include "TQPlatform/Media/MovieEdits.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t most32 = std::numeric_limits<std::uint32_t>::max();

TEST_F(HostileMovie, AnHonestOneOfTheSameMakeIsRead) {
  const fs::path clip = write(MovieTrack{});
  EXPECT_EQ(MediaAsset(clip).duration(), 1);
  EXPECT_EQ(pictureAt(clip, 0), "0");
  EXPECT_EQ(pictureAt(clip, 0.95), "9");
}

TEST_F(HostileMovie, PicturesOfBillionsOfPixelsAreRefused) {
  const fs::path clip = write(MovieTrack{.width = 60'000, .height = 60'000});
  EXPECT_EQ(MediaAsset(clip).tracks().front().naturalWidth, 60'000);
  EXPECT_EQ(pictureAt(clip, 0), "the decoder refuses its video format");
}

TEST_F(HostileMovie, PicturesThatTurnOutToHaveBillionsOfPixelsAreRefused) {
  Bytes bytes = readClip(makeVideo(movingPicture(1), {"-c:v", "mjpeg"}, "mov"));
  // The frame header of a baseline JPEG (ITU-T T.81, B.2.2): marker, length, precision, height, width.
  constexpr std::array<std::uint8_t, 5> frameHeader{0xFF, 0xC0, 0x00, 0x11, 0x08};
  auto at = bytes.begin();
  int changed = 0;
  while ((at = std::search(at, bytes.end(), frameHeader.begin(), frameHeader.end())) != bytes.end()) {
    std::fill_n(at + 5, 4, std::uint8_t{0xFD});
    at += 5;
    ++changed;
  }
  EXPECT_EQ(changed, 25);
  EXPECT_EQ(pictureAt(write(bytes), 0), "no picture could be decoded there");
}

TEST_F(HostileMovie, PicturesThatTakeTooMuchMemoryAreRefused) {
  const fs::path clip = makeVideo(movingPicture(1), h264({"-bf", "2"}), "mp4");
  MediaLimits limits;
  limits.pictureBytes = 20'000;  // less than one picture
  EXPECT_EQ(pictureAt(clip, 0.5, limits), "its pictures take too much memory");
  limits.pictureBytes = 20 * 160 * 120 * 3 / 2;
  MediaAsset asset(clip, {}, limits);
  ImageGenerator generator(asset);
  for (const double time : {0.9, 0.1, 0.5, 0.0, 0.7})
    EXPECT_EQ(generator.image(time).width(), 160) << "memory comes back with every picture that is dropped";
}

TEST_F(HostileMovie, PicturesMayOutliveTheirGenerator) {
  const fs::path clip = makeVideo(movingPicture(1), h264(), "mp4");
  const auto image = [&] {
    MediaAsset asset(clip);
    return ImageGenerator(asset).image(0.5);
  }();
  EXPECT_EQ(image.scaled(16, 12).width(), 16);
}

TEST_F(HostileMovie, AMillionTracksAreRefused) {
  const Bytes track = box("trak", {});
  Bytes tracks;
  tracks.reserve(track.size() * 1'000'000);
  for (int number = 0; number < 1'000'000; ++number)
    tracks.insert(tracks.end(), track.begin(), track.end());
  EXPECT_EQ(refusalOf(write(fileTypeBox() + moovBox(tracks))), "the file is damaged or in an unknown format");
}

TEST_F(HostileMovie, AsManyTracksAsAnEditingProgramWritesAreFine) {
  Bytes tracks = trackBox({});
  for (int number = 0; number < 100; ++number)
    tracks = std::move(tracks) + trackBox({});
  EXPECT_EQ(MediaAsset(write(fileTypeBox() + moovBox(tracks) + picturesBox())).tracks().size(), 101u);
}

TEST_F(HostileMovie, AFewBytesThatClaimGigabytesOfTablesAreRefused) {
  MediaLimits limits;
  limits.samples = 100'000;
  const MovieTrack track{.sampleCount = 60'000, .times = {{60'000, 1}}};
  EXPECT_EQ(refusalOf(write(track), limits), "none");
  EXPECT_EQ(refusalOf(write(fileTypeBox() + moovBox(trackBox(track) + trackBox(track))), limits),
            "its tables are too large");
  Bytes tracks;
  for (int number = 0; number < 200; ++number)
    tracks = std::move(tracks) + trackBox(track);
  EXPECT_EQ(refusalOf(write(fileTypeBox() + moovBox(tracks)), limits), "its tables are too large");
}

TEST_F(HostileMovie, ManySamplesOfManyTracksAreRefused) {
  MediaLimits limits;
  limits.samplesByTracks = 1'000;
  const auto movie = [](std::uint32_t samples) {
    const Bytes track = trackBox({.sampleCount = samples, .times = {{samples, 1}}});
    return fileTypeBox() + moovBox(track + track + track);
  };
  EXPECT_EQ(refusalOf(write(movie(111)), limits), "none");
  EXPECT_EQ(refusalOf(write(movie(112)), limits), "its tables are too large");
}

TEST_F(HostileMovie, FragmentsThatClaimGigabytesOfTablesAreRefused) {
  MediaLimits limits;
  limits.samples = 1'000;
  const Bytes extends =
      box("mvex", fullBox("trex", bigEndian32(1) + bigEndian32(1) + bigEndian32(10) + bigEndian32(1) + bigEndian32(0)));
  const auto fragment = [](std::uint32_t samples) {
    return box("moof", fullBox("mfhd", bigEndian32(1)) + box("traf", fullBox("tfhd", bigEndian32(1), 0x20000) +
                                                                         fullBox("trun", bigEndian32(samples)))) +
           box("mdat", Bytes(2000));
  };
  const Bytes head = fileTypeBox() + moovBox(trackBox({.sampleCount = 0, .times = {}}) + extends);
  EXPECT_EQ(refusalOf(write(head + fragment(900)), limits), "none");
  EXPECT_EQ(refusalOf(write(head + fragment(900) + fragment(900)), limits), "its tables are too large");
}

TEST_F(HostileMovie, TwoEditsAreArranged) {
  const fs::path clip = write(MovieTrack{.edits = {{50, 50}, {50, 0}}});
  EXPECT_EQ(pictureAt(clip, 0), "5");
  EXPECT_EQ(pictureAt(clip, 0.85), "3");
}

TEST_F(HostileMovie, EditsThatWouldTakeHoursAreNotArranged) {
  MovieTrack track{.sampleCount = 1'000'000, .times = {{1'000'000, 1}}, .delays = {{1'000'000, 1}}, .keyFrames = {1}};
  track.edits.assign(60'000, {1, 999'990});
  EXPECT_EQ(refusalOf(write(track)), "none");
  MediaLimits limits;
  limits.editingWork = 19;  // two edits of ten samples are twenty
  const fs::path clip = write(MovieTrack{.edits = {{50, 50}, {50, 0}}});
  EXPECT_EQ(pictureAt(clip, 0, limits), "5") << "the start of the first edit still counts";
  EXPECT_EQ(pictureAt(clip, 0.85, limits), "9");
}

TEST_F(HostileMovie, EditListsAreCountedWhereverTheyStand) {
  const auto work = [&](const Bytes& movie) { return libav::editingWork(FileReader(write(movie)), {}); };
  EXPECT_EQ(work(movieOf({})), 0);
  const Bytes track = trackBox({.edits = {{50, 50}, {50, 0}}});
  EXPECT_EQ(work(fileTypeBox() + moovBox(track + track) + picturesBox()), 40);
  EXPECT_EQ(work(fileTypeBox() + moovBox({}) + box("udta", box("udta", track))), 20);
  // At every place around the end of what is read at once.
  for (std::size_t shift = 65'200; shift < 65'600; ++shift)
    ASSERT_EQ(work(moovBox(box("xxxx", Bytes(shift)) + track)), 20) << shift;
}

TEST_F(HostileMovie, TablesThatCannotBeSeenTellNothingOfTheirEdits) {
  const auto work = [&](const Bytes& movie) { return libav::editingWork(FileReader(write(movie)), {}); };
  EXPECT_EQ(work(fileTypeBox() + box("free", moovBox(trackBox({})))), std::nullopt);
  EXPECT_EQ(work(fileTypeBox() + box("moov", box("cmov", Bytes(100)))), std::nullopt);
  EXPECT_EQ(work(Bytes(20, 0xFF)), std::nullopt);
}

TEST_F(HostileMovie, BoxesOfAnySizeAreWalked) {
  const auto work = [&](const Bytes& movie) { return libav::editingWork(FileReader(write(movie)), {}); };
  const Bytes tables = moovBox(trackBox({.edits = {{50, 50}}}));
  const auto large = [](std::uint64_t size) { return bigEndian32(1) + Bytes{'f', 'r', 'e', 'e'} + bigEndian64(size); };
  EXPECT_EQ(work(large(20) + Bytes(4) + tables), 10);
  for (const std::uint64_t size : {std::uint64_t{0}, std::uint64_t{15}, std::uint64_t{1} << 63, ~std::uint64_t{0}})
    EXPECT_EQ(work(large(size) + tables), std::nullopt) << size;
  EXPECT_EQ(work(bigEndian32(0) + Bytes{'f', 'r', 'e', 'e'} + tables), std::nullopt) << "0 is the rest of the file";
}

TEST_F(HostileMovie, AbsurdEditsGiveAPictureOrAReason) {
  for (const auto& edits : {Pairs{{most32, 0}}, Pairs{{0, 0}}, Pairs{{100, most32 - 1}}, Pairs{{most32, most32}},
                            Pairs{{most32, most32}, {most32, most32}, {100, 0}}, Pairs{{0x7FFFFFFF, 0x7FFFFFFF}},
                            Pairs{{1, 99}, {1, 98}, {0, 97}}, Pairs{{100, 0x80000000}}}) {
    const fs::path clip = write(MovieTrack{.edits = edits});
    for (const double time : {0.0, 0.5, 0.9})
      EXPECT_FALSE(pictureAt(clip, time).empty());
  }
}

TEST_F(HostileMovie, AbsurdMatricesGiveAPicture) {
  constexpr std::uint32_t smallest = 0x80000000, largest = 0x7FFFFFFF;
  for (const auto& matrix :
       {std::array<std::uint32_t, 9>{},
        std::array<std::uint32_t, 9>{smallest, smallest, 0, smallest, smallest, 0, 0, 0, 0},
        std::array<std::uint32_t, 9>{largest, 0, 0, 0, smallest, 0, largest, largest, largest},
        std::array<std::uint32_t, 9>{0, smallest, most32, largest, 0, most32, most32, most32, most32},
        std::array<std::uint32_t, 9>{1, 1, 1, 1, 1, 1, 1, 1, 1}})
    EXPECT_EQ(pictureAt(write(MovieTrack{.matrix = matrix}), 0.5), "5");
}

TEST_F(HostileMovie, AbsurdTimesGiveAPictureOrAReason) {
  constexpr std::uint32_t negative = 0x80000000;
  const std::vector<MovieTrack> tracks{
      {.timescale = 0},
      {.timescale = most32},
      {.timescale = 1, .duration = most32},
      {.duration = 0},
      {.times = {{10, 0}}},
      {.times = {{10, most32}}},
      {.times = {{1, most32}, {1, most32}, {8, 0x7FFFFFFF}}},
      {.times = {{most32, most32}}},
      {.times = {}},
      {.delays = {{10, negative}}},
      {.delays = {{5, 0x7FFFFFFF}, {5, negative}}},
      {.delays = {{most32, most32}}},
      {.timescale = 1, .times = {{10, most32}}, .delays = {{10, negative}}, .edits = {{most32, 0x7FFFFFFF}}},
      {.timescale = 0, .duration = most32, .times = {{10, most32}}, .edits = {{most32, most32}}},
      {.keyFrames = {most32, 0, 5}},
  };
  for (const MovieTrack& track : tracks) {
    const fs::path clip = write(track);
    for (const double time : {0.0, 0.5, 1e6, 4e9, -4e9})
      EXPECT_FALSE(pictureAt(clip, time).empty());
  }
}

TEST_F(HostileMovie, FragmentsWithAbsurdTimesGiveAPictureOrAReason) {
  const Bytes whole =
      readClip(makeVideo(movingPicture(1), h264({"-g", "5", "-movflags", "frag_keyframe+empty_moov"}), "mp4"));
  constexpr std::array<std::uint8_t, 8> box{'t', 'f', 'd', 't', 1, 0, 0, 0};
  for (const auto filling : {std::uint8_t{0x7F}, std::uint8_t{0x80}, std::uint8_t{0xFF}}) {
    Bytes bytes = whole;
    for (auto at = bytes.begin(); (at = std::search(at, bytes.end(), box.begin(), box.end())) != bytes.end();
         at += 16) {
      std::fill_n(at + 9, 7, std::uint8_t{0xFF});
      at[8] = filling;
    }
    EXPECT_NE(bytes, whole);
    const fs::path clip = write(bytes, "clip.mp4");
    for (const double time : {0.0, 0.5, 1e15})
      EXPECT_FALSE(pictureAt(clip, time).empty());
  }
}

TEST_F(HostileMovie, SamplesThatLieOutsideTheFileEndTheClip) {
  EXPECT_EQ(pictureAt(write(MovieTrack{.sampleSize = 0x7FFFFFFF}), 0), "its index is damaged");
  const Bytes whole = movieOf({});
  Bytes cut(whole.begin(), whole.end() - 5 * 768 - 300);  // in the middle of the fifth picture
  const fs::path clip = write(cut);
  EXPECT_EQ(pictureAt(clip, 0.3), "3");
  EXPECT_EQ(pictureAt(clip, 0.9), "the clip ends before that");
}

TEST_F(HostileMovie, TablesWithoutPicturesOpenAndHaveNone) {
  const fs::path clip = write(fileTypeBox() + moovBox(trackBox({})));
  EXPECT_EQ(MediaAsset(clip).duration(), 1);
  EXPECT_EQ(pictureAt(clip, 0), "no picture could be decoded there");
}

TEST_F(HostileMovie, AKeyFrameAndThenNoiseGiveTheKeyFrame) {
  Bytes bytes = readClip(makeVideo(movingPicture(2), h264({"-g", "1000", "-movflags", "+faststart"}), "mp4"));
  constexpr std::string_view data = "mdat";
  const auto pictures = std::search(bytes.begin(), bytes.end(), data.begin(), data.end()) + 4;
  const auto first = std::distance(pictures, bytes.end()) / 4;
  std::uint32_t noise = 1;
  for (auto byte = pictures + first; byte != bytes.end(); ++byte) {
    noise = noise * 1664525 + 1013904223;
    *byte = static_cast<std::uint8_t>(noise >> 24);
  }
  const fs::path clip = write(bytes, "clip.mp4");
  MediaAsset asset(clip);
  ImageGenerator generator(asset);
  for (const double time : {0.0, 1.9})
    EXPECT_EQ(generator.image(time).width(), 160) << time;
}

}  // namespace
}  // namespace tq::test

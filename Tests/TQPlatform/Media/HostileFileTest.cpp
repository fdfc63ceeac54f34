#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "Support/Faults/FileFaults.hpp"
#include "Support/FileOpenings.hpp"
#include "Support/ListeningPort.hpp"
#include "Support/Playlists.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Media/HostileMovie.hpp"

namespace tq::test {
namespace {

namespace fs = std::filesystem;

using HostileFile = HostileMovie;

/// A socket that stands in a folder.
class LocalSocket {
 public:
  explicit LocalSocket(const fs::path& path) : descriptor_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un name{};
    name.sun_family = AF_UNIX;
    path.string().copy(name.sun_path, sizeof name.sun_path - 1);
    if (::bind(descriptor_.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) throwErrno(path);
  }

 private:
  Descriptor descriptor_;
};

TEST_F(HostileFile, AFileThatShrinksWhileItIsReadEndsWhereItEndsNow) {
  const fs::path clip = write(MovieTrack{});
  MediaAsset asset(clip);
  ImageGenerator generator(asset);
  EXPECT_EQ(pictureNumber(generator.image(0.9)), 9);
  fs::resize_file(clip, fs::file_size(clip) - std::uintmax_t{5} * 768);
  EXPECT_EQ(pictureNumber(generator.image(0.3)), 3);
  EXPECT_THROW(generator.image(0.9), MediaError);
  fs::resize_file(clip, 0);
  EXPECT_THROW(generator.image(0.3), MediaError);
}

TEST_F(HostileFile, AFileThatGrowsWhileItIsReadGoesOn) {
  const Bytes whole = movieOf({});
  const fs::path clip = write(Bytes(whole.begin(), whole.end() - std::ptrdiff_t{5} * 768));
  MediaAsset asset(clip);
  ImageGenerator generator(asset);
  EXPECT_EQ(pictureNumber(generator.image(0.4)), 4);
  EXPECT_THROW(generator.image(0.9), MediaError);
  write(whole);
  EXPECT_EQ(pictureNumber(generator.image(0.9)), 9);
}

TEST_F(HostileFile, WorkEndsAtItsTimeLimits) {
  const fs::path clip = write(MovieTrack{});
  MediaLimits limits;
  limits.opening = Seconds(0);
  EXPECT_EQ(refusalOf(clip, limits), "reading it takes too long");
  limits = {};
  limits.withoutPicture = Seconds(0);
  MediaAsset asset(clip, {}, limits);
  ImageGenerator generator(asset);
  EXPECT_THROW(generator.image(0), MediaError);
  EXPECT_EQ(generator.counts().packetsRead, 0);
}

TEST_F(HostileFile, TheTimeWithoutAPictureIsOneSumForTheClip) {
  Bytes bytes = movieOf({});
  bytes.resize(bytes.size() - std::size_t{10} * 768);
  MediaLimits limits;
  limits.withoutPicture = std::chrono::milliseconds(1);
  MediaAsset asset(write(bytes), {}, limits);
  ImageGenerator generator(asset);
  std::string refusal;
  for (int attempt = 0; attempt < 1'000'000 && refusal != "reading it takes too long"; ++attempt)
    try {
      generator.image(0.5);
    } catch (const MediaError& error) {
      refusal = error.what();
    }
  EXPECT_EQ(refusal, "reading it takes too long");
}

TEST_F(HostileFile, OtherFilesThatATrackNamesStayClosed) {
  const fs::path other = write(movieOf({}), "other.mov");
  const auto textOf = [](const std::string& text) { return Bytes(text.begin(), text.end()); };
  // The records 2 and 18 of an alias hold the path on the Macintosh and the POSIX path.
  const std::string path = other.string();
  const auto record = [&](std::uint16_t kind) {
    return bigEndian16(kind) + bigEndian16(static_cast<std::uint16_t>(path.size())) + textOf(path) +
           Bytes(path.size() % 2);
  };
  const Bytes alias = Bytes(10) + Bytes(28) + Bytes(12) + Bytes(64) + Bytes(36) + record(2) + record(18) +
                      bigEndian16(0xFFFF) + bigEndian16(0);
  for (const Bytes& reference : {fullBox("alis", alias), fullBox("url ", textOf("file://" + path) + Bytes(1)),
                                 fullBox("url ", textOf(path) + Bytes(1)), fullBox("rsrc", alias)}) {
    const FileOpenings openings(other);
    EXPECT_FALSE(pictureAt(write(MovieTrack{.dataReference = reference}), 0).empty());
    EXPECT_FALSE(openings.any());
  }
  const FileOpenings openings(other);
  EXPECT_EQ(pictureAt(other, 0), "0");
  EXPECT_TRUE(openings.any()) << "the watch itself works";
}

TEST_F(HostileFile, PlaylistsReachNeitherFilesNorAddresses) {
  const fs::path other = write(movieOf({}), "other.mov");
  const FileOpenings openings(other);
  const ListeningPort port;
  for (const std::string& target : {other.string(), std::string("other.mov"), "http://" + port.address() + "/clip.ts"})
    for (const auto& [name, text] : playlistsTo(target))
      EXPECT_EQ(refusalOf(folder.write("list.mp4", text)), "the file is damaged or in an unknown format") << name;
  EXPECT_FALSE(openings.any());
  EXPECT_FALSE(port.anybodyCame());
}

TEST_F(HostileFile, WhatIsNoFileIsRefusedWithoutBeingOpened) {
  const fs::path pipe = folder / "pipe.mp4";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  const FileOpenings openings(pipe);
  EXPECT_EQ(refusalOf(pipe), "it is not a regular file");
  EXPECT_FALSE(openings.any());

  const LocalSocket socket(folder / "socket.mp4");
  EXPECT_EQ(refusalOf(folder / "socket.mp4"), "it is not a regular file");
  fs::create_symlink("/dev/zero", folder / "device.mp4");
  EXPECT_EQ(refusalOf(folder / "device.mp4"), "it is not a regular file");
}

TEST_F(HostileFile, ADiskThatFailsIsReportedAsSuch) {
  const fs::path clip = write(MovieTrack{});
  int healthy = 0;
  {
    const FileFaults faults(folder.path());
    MediaAsset asset(clip);
    ImageGenerator(asset).image(0.5);
    healthy = faults.count(FileCall::read);
  }
  ASSERT_GT(healthy, 2);
  for (int failing = 0; failing < healthy; ++failing) {
    const FileFaults faults(folder.path(), [failing](FileCall call, int index) {
      return FileFate{.error = call == FileCall::read && index >= failing ? EIO : 0};
    });
    try {
      MediaAsset asset(clip);
      ImageGenerator(asset).image(0.5);
      ADD_FAILURE() << failing;
    } catch (const SystemError& error) {
      EXPECT_STREQ(error.what(), "clip.mov: Input/output error") << failing;
    }
  }
}

TEST_F(HostileFile, ADiskThatFailedOnceIsAskedAgain) {
  const fs::path clip = write(MovieTrack{});
  MediaAsset asset(clip);
  ImageGenerator generator(asset);
  {
    const FileFaults faults(folder.path(),
                            [](FileCall call, int) { return FileFate{.error = call == FileCall::read ? EIO : 0}; });
    EXPECT_THROW(generator.image(0.5), SystemError);
  }
  EXPECT_EQ(pictureNumber(generator.image(0.5)), 5);
}

TEST_F(HostileFile, ReadsThatComeInPiecesMakeNoDifference) {
  const fs::path clip = write(MovieTrack{});
  const FileFaults faults(folder.path(),
                          [](FileCall call, int) { return FileFate{.most = call == FileCall::read ? 7u : 100u}; });
  EXPECT_EQ(pictureAt(clip, 0.5), "5");
}

TEST_F(HostileFile, FilesThatCannotBeReachedGiveTheSystemsReason) {
  fs::create_symlink("loop.mp4", folder / "loop.mp4");
  folder.write("file", "");
  folder.write("locked.mp4", "");
  const FileFaults faults(folder.path(),
                          [](FileCall call, int) { return FileFate{.error = call == FileCall::open ? EACCES : 0}; });
  for (const auto& [name, reason] : {std::pair{"locked.mp4", "Permission denied"},
                                     {"loop.mp4", "Too many levels of symbolic links"},
                                     {"file/clip.mp4", "Not a directory"},
                                     {"gone.mp4", "No such file or directory"},
                                     {".", "Is a directory"}})
    try {
      MediaAsset(folder / name);
      ADD_FAILURE() << name;
    } catch (const SystemError& error) {
      EXPECT_EQ(error.reason(), reason) << name;
    }
}

}  // namespace
}  // namespace tq::test

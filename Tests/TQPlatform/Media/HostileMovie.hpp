#pragma once

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#include "Support/ClipMaker.hpp"
#include "Support/MovieWriter.hpp"
#include "Support/TemporaryFolder.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"

namespace tq::test {

/// Writes movies that no honest program would write and says what becomes of them.
class HostileMovie : public testing::Test {
 protected:
  using Path = std::filesystem::path;

  Path write(const Bytes& movie, std::string_view name = "clip.mov") const { return writeClip(folder / name, movie); }
  Path write(const MovieTrack& track) const { return write(movieOf(track)); }

  /// The number of the picture that is shown at a time, or why there is none.
  static std::string pictureAt(const Path& clip, double seconds, const MediaLimits& limits = {}) try {
    constexpr double tolerance = 0.01;
    MediaAsset asset(clip, {}, limits);
    return std::to_string(pictureNumber(ImageGenerator(asset, tolerance).image(seconds)));
  } catch (const MediaError& error) {
    return error.what();
  }

  /// Why a file is refused at once; "none" when it is not.
  static std::string refusalOf(const Path& clip, const MediaLimits& limits = {}) try {
    MediaAsset(clip, {}, limits);
    return "none";
  } catch (const MediaError& error) {
    return error.what();
  }

  TemporaryFolder folder;
};

}  // namespace tq::test

#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq::test {

using Arguments = std::vector<std::string>;

/// The clip that `ffmpeg <arguments> clip.<extension>` makes. Made once and kept for other tests, which must not change
/// it: in the folder that the environment's TARQUEL_TEST_CLIPS names, or in the user's temporary folder. Throws when
/// ffmpeg fails.
std::filesystem::path makeClip(const Arguments& arguments, std::string_view extension);

/// One video stream from the filter source `picture`, encoded as `encoding` says.
std::filesystem::path makeVideo(const std::string& picture, Arguments encoding, std::string_view extension);

/// Small moving picture of that many seconds.
std::string movingPicture(double seconds, int framesPerSecond = 25, std::string_view size = "160x120");

/// A picture that shows its own number as twelve bars, for `numberShown`: 192 x 32.
std::string numberedPicture(double seconds, int framesPerSecond);

/// The number of a frame of `numberedPicture`, however it was encoded.
int numberShown(const Image& image);

/// A still picture of four grey quarters whose levels rise in reading order, for `brightestCorners`.
std::string fourQuarters(int seconds = 1, std::string_view quarter = "80x60");

/// The corners, named "tl", "tr", "bl" and "br", from the darkest to the brightest: "tl tr bl br" when upright.
std::string cornersByBrightness(const Image& image);

Arguments h264(Arguments more = {});
Arguments hevc(Arguments more = {});

/// A copy of a movie's bytes with the duration in all its headers replaced, in units of each header's time scale
/// (ISO/IEC 14496-12, version 0 boxes).
Bytes withDuration(Bytes movie, std::uint32_t duration);

/// The same with the matrix of the first track header replaced: {a, b, u, c, d, v, x, y, w} in fixed point.
Bytes withMatrix(Bytes movie, const std::array<std::int32_t, 9>& matrix);

/// The matrix that turns a picture of `width` x `height` by that many degrees clockwise, a multiple of 90.
std::array<std::int32_t, 9> rotation(int degrees);

Bytes readClip(const std::filesystem::path& file);
std::filesystem::path writeClip(const std::filesystem::path& file, ByteView content);

/// A red, green and blue level.
using Colour = std::array<int, 3>;

/// The colour of one pixel of a JPEG.
Colour colourAt(ByteView jpeg, int x, int y);

/// The largest difference of one component.
int distance(const Colour& left, const Colour& right);

}  // namespace tq::test

#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "TQPlatform/Bytes.hpp"
#include "TQPlatform/Media/Image.hpp"

namespace tq::test {

// Movies written box by box (ISO/IEC 14496-12 and the QuickTime file format), for claims that no encoder would make.

Bytes bigEndian16(std::uint16_t value);
Bytes bigEndian32(std::uint32_t value);
Bytes bigEndian64(std::uint64_t value);

Bytes operator+(Bytes left, const Bytes& right);

/// A box with its size and the four letters of its type.
Bytes box(std::string_view type, const Bytes& content);

/// The same with a version and flags of zero, or those given, before the content.
Bytes fullBox(std::string_view type, const Bytes& content, std::uint32_t versionAndFlags = 0);

using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

/// One video track of ten uncompressed pictures of 16 x 16, all key frames, ten a second; picture number n is grey of
/// the level 20 * n. What is claimed about them can be set to anything.
struct MovieTrack {
  std::uint16_t width = 16, height = 16;
  std::uint32_t timescale = 100, duration = 100;
  std::uint32_t sampleCount = 10, sampleSize = 768;
  Pairs times{{10, 10}};                 ///< stts: count and length
  Pairs delays;                          ///< ctts: count and delay; no box without any
  std::vector<std::uint32_t> keyFrames;  ///< stss, from 1; no box without any, and all are such
  Pairs edits;                           ///< elst: length and start; no box without any
  std::array<std::uint32_t, 9> matrix{0x10000, 0, 0, 0, 0x10000, 0, 0, 0, 0x40000000};
  Bytes dataReference;  ///< the entry of dref; this file when empty
};

/// A track box whose samples begin at `offset` of the file, all in one chunk.
Bytes trackBox(const MovieTrack& track, std::uint32_t offset = 0);

/// The movie's tables, with any number of tracks in them.
Bytes moovBox(const Bytes& tracks, std::uint32_t timescale = 100, std::uint32_t duration = 100);

/// A box with the ten pictures.
Bytes picturesBox();

/// What stands at the start of every movie file.
Bytes fileTypeBox();

/// A whole file with one track: the tables first, then the pictures.
Bytes movieOf(const MovieTrack& track);

/// The number of the picture.
int pictureNumber(const Image& image);

}  // namespace tq::test

#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace tq::libav {

// Owners of the objects of libavformat, libavcodec and libswscale, for the files of this room.

struct Release {
  void operator()(AVCodecContext* context) const;
  void operator()(AVFormatContext* context) const;
  void operator()(AVFrame* frame) const;
  void operator()(AVPacket* packet) const;
  void operator()(SwsContext* context) const;
};

template <class T>
using Owned = std::unique_ptr<T, Release>;

/// Pictures with more pixels are refused: 16K, 15360 x 8640, is what no camera goes beyond.
inline constexpr std::int64_t largestPicture = std::int64_t{1} << 27;

/// Bytes that libav allocates in one piece at most: a plane of the largest picture with two bytes a sample, and its
/// borders.
inline constexpr std::size_t largestBlock = std::size_t{320} << 20;

/// What libav keeps once for the whole process; to be called before anything else of it. A hostile file makes it talk
/// to standard error without end, and sizes that stand in tables make it allocate before anything is read.
void prepareLibrary();

/// An empty frame or packet. Throws `std::bad_alloc`.
Owned<AVFrame> makeFrame();
Owned<AVPacket> makePacket();

/// Another reference to the same, unchanging picture. Throws `std::bad_alloc`.
Owned<AVFrame> share(const AVFrame& frame);

}  // namespace tq::libav

#pragma once

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

/// Pictures with more pixels are refused: 16384 x 16384, beyond any camera, and what memory bears.
inline constexpr std::int64_t largestPicture = std::int64_t{1} << 28;

/// An empty frame or packet. Throws `std::bad_alloc`.
Owned<AVFrame> makeFrame();
Owned<AVPacket> makePacket();

/// Another reference to the same, unchanging picture. Throws `std::bad_alloc`.
Owned<AVFrame> share(const AVFrame& frame);

}  // namespace tq::libav

#include "TQPlatform/Media/Libav.hpp"

#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

namespace tq::libav {

void Release::operator()(AVCodecContext* context) const {
  avcodec_free_context(&context);
}
void Release::operator()(AVFormatContext* context) const {
  avformat_close_input(&context);
}
void Release::operator()(AVFrame* frame) const {
  av_frame_free(&frame);
}
void Release::operator()(AVPacket* packet) const {
  av_packet_free(&packet);
}
void Release::operator()(SwsContext* context) const {
  sws_freeContext(context);
}

namespace {

template <class T>
Owned<T> orBadAlloc(T* object) {
  if (!object) throw std::bad_alloc();
  return Owned<T>(object);
}

}  // namespace

void prepareLibrary() {
  static const bool prepared = (av_log_set_level(AV_LOG_QUIET), av_max_alloc(largestBlock), true);
  static_cast<void>(prepared);
}

Owned<AVFrame> makeFrame() {
  return orBadAlloc(av_frame_alloc());
}
Owned<AVPacket> makePacket() {
  return orBadAlloc(av_packet_alloc());
}
Owned<AVFrame> share(const AVFrame& frame) {
  return orBadAlloc(av_frame_clone(&frame));
}

}  // namespace tq::libav

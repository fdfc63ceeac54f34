#include "TQPlatform/Media/PictureMemory.hpp"

#include <new>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace tq::libav {

namespace {

/// Travels with every reference to a picture and gives its memory back with the last one.
struct Receipt {
  std::shared_ptr<PictureMemory> memory;
  std::int64_t bytes;

  ~Receipt() { memory->giveBack(bytes); }
};

void release(void*, std::uint8_t* receipt) {
  delete reinterpret_cast<Receipt*>(receipt);
}

std::int64_t bytesOf(const AVFrame& picture) {
  std::int64_t bytes = 0;
  for (const AVBufferRef* plane : picture.buf)
    if (plane) bytes += static_cast<std::int64_t>(plane->size);
  return bytes;
}

/// libavcodec drops the picture when this fails.
int getBuffer(AVCodecContext* codec, AVFrame* picture, int flags) noexcept {
  if (const int status = avcodec_default_get_buffer2(codec, picture, flags); status < 0) return status;
  const auto& memory = *static_cast<std::shared_ptr<PictureMemory>*>(codec->opaque);
  const std::int64_t bytes = bytesOf(*picture);
  if (!memory->take(bytes)) return AVERROR(ENOMEM);
  auto* receipt = new (std::nothrow) Receipt{memory, bytes};
  if (!receipt) {
    memory->giveBack(bytes);
    return AVERROR(ENOMEM);
  }
  picture->opaque_ref = av_buffer_create(reinterpret_cast<std::uint8_t*>(receipt), sizeof(Receipt), release, nullptr,
                                         AV_BUFFER_FLAG_READONLY);
  if (picture->opaque_ref) return 0;
  delete receipt;
  return AVERROR(ENOMEM);
}

}  // namespace

void PictureMemory::serve(AVCodecContext& codec, std::shared_ptr<PictureMemory>& memory) {
  codec.opaque = &memory;
  codec.get_buffer2 = getBuffer;
#if LIBAVCODEC_VERSION_MAJOR < 60
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  codec.thread_safe_callbacks = 1;
#pragma GCC diagnostic pop
#endif
}

bool PictureMemory::take(std::int64_t bytes) {
  const std::int64_t now = used_ += bytes;
  if (now <= limit_) {
    for (std::int64_t before = peak_; before < now && !peak_.compare_exchange_weak(before, now);) {
    }
    return true;
  }
  used_ -= bytes;
  exhausted_ = true;
  return false;
}

}  // namespace tq::libav

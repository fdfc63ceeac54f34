#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

struct AVCodecContext;

namespace tq::libav {

/// Counts the bytes of the pictures of a clip's decoders for as long as anybody holds them, the decoders themselves
/// among them, and refuses more than a limit. A decoder that does not ask libavcodec for its memory (libdav1d) is
/// bounded by the size of one picture only.
class PictureMemory {
 public:
  explicit PictureMemory(std::int64_t bytes) : limit_(bytes) {}

  /// Makes `codec`, which is not open yet, ask `memory` for every picture. Both must stay until the codec is closed;
  /// the pictures themselves may outlive them.
  static void serve(AVCodecContext& codec, std::shared_ptr<PictureMemory>& memory);

  /// False when that would be too much.
  bool take(std::int64_t bytes);
  void giveBack(std::int64_t bytes) { used_ -= bytes; }

  /// The most bytes that were held at once.
  std::int64_t peak() const { return peak_; }

  /// True once a picture was refused. Decoders do not always tell why they failed.
  bool exhausted() const { return exhausted_; }

 private:
  const std::int64_t limit_;
  std::atomic<std::int64_t> used_ = 0, peak_ = 0;
  std::atomic<bool> exhausted_ = false;
};

}  // namespace tq::libav

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <stop_token>

#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/Media/Libav.hpp"
#include "TQPlatform/Media/MediaLimits.hpp"

struct AVIOContext;

namespace tq::libav {

/// What the work on a clip listens to while it lasts: a stop request and a deadline.
class Watch {
 public:
  /// Sets both for the scope of the guard; outside of any, nothing ends the work.
  class Scope {
   public:
    Scope(Watch& watch, std::stop_token stop, Seconds allowed);
    ~Scope() { watch_ = {}; }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Watch& watch_;
  };

  bool isOver() const;

  /// Throws `Cancelled`, or `MediaError` after the deadline.
  void check() const;

 private:
  std::stop_token stop_;
  std::chrono::steady_clock::time_point deadline_ = std::chrono::steady_clock::time_point::max();
};

/// Opens a clip's file. Throws `SystemError` when it cannot be opened and `MediaError` when it is no regular file; such
/// a one is never waited for.
FileReader openMediaFile(const std::filesystem::path& file);

/// A clip's file as libavformat reads it: this one descriptor, and no other file or address whatever the clip refers
/// to. Its length may change meanwhile. Never moves, because libavformat keeps its address.
class MediaFile {
 public:
  /// `watch` ends every read. Both must outlive this; others may read from `reader` at the same time.
  MediaFile(const FileReader& reader, const Watch& watch);
  ~MediaFile();
  MediaFile(const MediaFile&) = delete;
  MediaFile& operator=(const MediaFile&) = delete;

  AVIOContext* context() const { return context_; }
  const FileReader& reader() const { return reader_; }

  /// From now on every read measures the tables that `format` holds, and ends once they go beyond `limits`. Null when
  /// there is none any more.
  void measure(const AVFormatContext* format, const MediaLimits& limits);

  /// Says why reading ended before the end of the file, by `Cancelled`, `SystemError` or `MediaError`; returns where it
  /// did not. libavformat itself takes any failed read for the end.
  void check() const;

  /// Forgets a failed read and where the file ended, for another attempt.
  void clearFailure();

 private:
  static int read(void* self, std::uint8_t* buffer, int size) noexcept;
  static std::int64_t seek(void* self, std::int64_t offset, int whence) noexcept;
  bool tablesTooLarge() const;
  bool mayRead();

  const Watch& watch_;
  const FileReader& reader_;
  AVIOContext* context_ = nullptr;
  std::int64_t position_ = 0;
  const AVFormatContext* format_ = nullptr;
  MediaLimits limits_;
  bool outgrown_ = false;
  std::optional<SystemError> failure_;
};

}  // namespace tq::libav

#include "TQPlatform/Media/MediaFile.hpp"

#include <new>
#include <system_error>

#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"
#include "TQPlatform/Media/TrackIndex.hpp"

extern "C" {
#include <libavformat/avformat.h>
}

namespace tq::libav {

namespace fs = std::filesystem;

namespace {

// So small that little of the tables is read between two measurements; larger pieces bypass it.
constexpr std::size_t bufferSize = 1024;

/// Opening a device may wait or do something, so what is no file is refused before.
const fs::path& requireRegularFile(const fs::path& file) {
  std::error_code error;
  const fs::file_status status = fs::status(file, error);
  if (!fs::exists(status)) throw SystemError(error ? error.value() : ENOENT, file);
  if (fs::is_directory(status)) throw SystemError(EISDIR, file);
  if (!fs::is_regular_file(status)) throw MediaError("it is not a regular file");
  return file;
}

}  // namespace

Watch::Scope::Scope(Watch& watch, std::stop_token stop, Seconds allowed) : watch_(watch) {
  using Clock = std::chrono::steady_clock;
  watch_.stop_ = std::move(stop);
  watch_.deadline_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(allowed);
}

bool Watch::isOver() const {
  return stop_.stop_requested() || std::chrono::steady_clock::now() >= deadline_;
}

void Watch::check() const {
  throwIfStopped(stop_);
  if (isOver()) throw MediaError("reading it takes too long");
}

FileReader openMediaFile(const fs::path& file) {
  return FileReader(requireRegularFile(file));
}

MediaFile::MediaFile(const FileReader& reader, const Watch& watch) : watch_(watch), reader_(reader) {
  auto* buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
  if (!buffer) throw std::bad_alloc();
  context_ = avio_alloc_context(buffer, bufferSize, 0, this, read, nullptr, seek);
  if (context_) return;
  av_free(buffer);
  throw std::bad_alloc();
}

MediaFile::~MediaFile() {
  // libavformat may have put another buffer in the place of the first.
  av_freep(&context_->buffer);
  avio_context_free(&context_);
}

void MediaFile::measure(const AVFormatContext* format, const MediaLimits& limits) {
  format_ = format;
  limits_ = limits;
}

void MediaFile::check() const {
  watch_.check();
  if (failure_) throw *failure_;
  if (outgrown_ || tablesTooLarge()) throw MediaError("its tables are too large");
}

void MediaFile::clearFailure() {
  failure_.reset();
  context_->error = 0;
  context_->eof_reached = 0;
}

bool MediaFile::tablesTooLarge() const {
  if (!format_) return false;
  const std::int64_t samples = listedSamples(*format_);
  return samples > limits_.samples || samples * format_->nb_streams > limits_.samplesByTracks;
}

bool MediaFile::mayRead() {
  outgrown_ = outgrown_ || tablesTooLarge();
  return !outgrown_ && !failure_ && !watch_.isOver();
}

int MediaFile::read(void* self, std::uint8_t* buffer, int size) noexcept {
  auto& file = *static_cast<MediaFile*>(self);
  if (!file.mayRead()) return AVERROR_EXIT;
  try {
    const std::size_t count = file.reader_.readAt(file.position_, {buffer, static_cast<std::size_t>(size)});
    file.position_ += static_cast<std::int64_t>(count);
    return count == 0 ? AVERROR_EOF : static_cast<int>(count);
  } catch (const SystemError& error) {
    file.failure_ = error;
    return AVERROR(error.code().value());
  }
}

std::int64_t MediaFile::seek(void* self, std::int64_t offset, int whence) noexcept {
  auto& file = *static_cast<MediaFile*>(self);
  try {
    if ((whence & AVSEEK_SIZE) != 0) return file.reader_.sizeNow();
  } catch (const SystemError& error) {
    return AVERROR(error.code().value());
  }
  // libavformat itself turns the other origins into this one.
  if ((whence & ~AVSEEK_FORCE) != SEEK_SET || offset < 0) return AVERROR(EINVAL);
  return file.position_ = offset;
}

}  // namespace tq::libav

#include "TQPlatform/Media/MediaContainer.hpp"

#include "TQPlatform/Media/MediaFile.hpp"
#include "TQPlatform/Media/MediaLimits.hpp"

extern "C" {
#include <libavformat/avformat.h>
}

namespace tq {

std::optional<std::string> containerOf(const std::filesystem::path& file) {
  libav::prepareLibrary();
  libav::Watch watch;
  const libav::Watch::Scope scope(watch, {}, MediaLimits().opening);
  const FileReader reader = libav::openMediaFile(file);
  const libav::MediaFile media(reader, watch);
  const AVInputFormat* format = nullptr;
  av_probe_input_buffer2(media.context(), &format, file.c_str(), nullptr, 0, 0);
  media.check();
  return format ? std::optional<std::string>(format->name) : std::nullopt;
}

}  // namespace tq

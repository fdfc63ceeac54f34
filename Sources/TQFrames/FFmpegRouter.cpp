#include "TQFrames/FFmpegRouter.hpp"

#include <algorithm>

#include "TQCore/VideoExtensions.hpp"

namespace tq::FFmpegRouter {

bool requiresFFmpeg(const std::filesystem::path& url) {
  return std::ranges::find(ffmpegOnlyExtensions, lowercasedExtension(url)) != ffmpegOnlyExtensions.end();
}

}  // namespace tq::FFmpegRouter

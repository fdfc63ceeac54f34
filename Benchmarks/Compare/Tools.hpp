#pragma once

#include <filesystem>
#include <vector>

namespace tq::compare {

// The same work done by command-line tools, as a program without a decoder of its own would have it done. All throw
// when a tool is missing or fails.

/// One ffmpeg process for each time, `width` of them at once; each writes one JPEG.
void ffmpegFrames(const std::filesystem::path& clip, const std::vector<double>& times, std::size_t width);

/// One ffmpeg process that decodes the whole clip and looks for changes of scene.
void ffmpegScenes(const std::filesystem::path& clip);

/// `openssl dgst -sha256`.
void opensslDigest(const std::filesystem::path& file);

}  // namespace tq::compare

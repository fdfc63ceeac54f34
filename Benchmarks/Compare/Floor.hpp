#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

#include "TQPlatform/Bytes.hpp"

namespace tq::compare {

// What the work costs at least: loops on libav without anything around them. They know that the clip is sound, upright
// and of ordinary brightness, that every packet has a time and that the times asked for rise, they keep one scaler for
// all frames, and they check nothing. They give the very bytes that the product gives. The step from the colours of a
// video to those of a JPEG, for which libav has no short way, is the product's own.

/// JPEGs of the frames at `times` (seconds), the longer side brought down to `maxEdge`. So many `readers` share the
/// groups of pictures, each on a thread of its own, and each decodes with so many `threads`.
std::vector<Bytes> floorFrames(const std::filesystem::path& clip, const std::vector<double>& times, int maxEdge,
                               int quality, std::size_t readers, int threads);

/// Difference hashes of the frames at `times`.
std::vector<std::uint64_t> floorHashes(const std::filesystem::path& clip, const std::vector<double>& times,
                                       int threads);

}  // namespace tq::compare

#pragma once

#include <filesystem>
#include <vector>

#include "Benchmarks/Library/SampleClips.hpp"
#include "TQDescription/Library/LoadedSidecar.hpp"

namespace tq::compare {

/// The sidecar of a sample clip, as the product writes it.
std::string sidecarText(const SampleClips& clips, std::size_t number);

/// A folder of `count` sidecars below `parent`, made when it is not there yet. Its name tells what is in it.
std::filesystem::path sidecarFolder(const SampleClips& clips, std::size_t count, const std::filesystem::path& parent);

/// The first `count` sidecars as the product has them once they are loaded; no file is read or written.
std::vector<LoadedSidecar> loadedSidecars(const SampleClips& clips, std::size_t count, std::size_t processorCount);

/// Of what the clips say: another one when they or the writer of records have changed.
std::string fingerprint(const SampleClips& clips);

}  // namespace tq::compare

#pragma once

#include <filesystem>

namespace tq::compare {

/// The most memory that extracting 12 frames of `clip` took, in pictures as the decoder gives them (three bytes for two
/// pixels). Measured in a process of its own, which starts this program again.
double peakInPictures(const std::filesystem::path& clip);

/// The work of that process: writes the figure, in bytes, to standard output.
void extractAndReportPeak(const std::filesystem::path& clip);

}  // namespace tq::compare

#pragma once

#include <filesystem>
#include <string>

namespace tq::compare {

/// The most memory that extracting 12 frames took, in pictures as the decoder gives them (three bytes for two pixels).
struct Peak {
  double resident = 0;  ///< growth of the resident set, with all that the decoder keeps beside its pictures
  double held = 0;      ///< pictures that the decoder and those who use it held at once; 0 when nobody counted
};

/// Who extracts; each in a process of its own, which starts this program again.
enum class Extractor { product, floor };
Peak peakInPictures(const std::filesystem::path& clip, Extractor extractor);

/// True when the arguments of this program ask for the work of that process, which is done then: it writes both
/// figures, in bytes, to standard output.
bool reportPeak(const std::string& who, const std::filesystem::path& clip);

}  // namespace tq::compare

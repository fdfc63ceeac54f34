#pragma once

#include <cstdint>
#include <memory>
#include <stop_token>
#include <vector>

#include "TQPlatform/Media/Image.hpp"
#include "TQPlatform/Media/MediaAsset.hpp"

namespace tq {

/// What a generator has done so far.
struct DecodingCounts {
  std::int64_t seeks = 0;
  std::int64_t packetsRead = 0;    ///< of the video track
  std::int64_t framesDecoded = 0;  ///< pictures that left the decoder
};

/// How true to the clip a picture has to be.
enum class Fidelity {
  exact,
  approximate,  ///< without smoothed edges between blocks, which adds up over a group: a sixth faster, fit for a hash
};

/// Decodes single upright pictures of an asset's first video track. Works best when the times asked for rise: what was
/// decoded for one serves the next, and nothing is decoded twice within a group of pictures. Not for use by several
/// threads at once.
class ImageGenerator {
 public:
  /// `tolerance`: seconds by which a picture may miss the time asked for; infinity takes whatever is cheapest nearby.
  /// `threads`: of the decoder. The asset must outlive the generator and serves one generator only.
  explicit ImageGenerator(MediaAsset& asset, double tolerance = 0.2, int threads = 1,
                          Fidelity fidelity = Fidelity::exact);
  ~ImageGenerator();
  ImageGenerator(const ImageGenerator&) = delete;
  ImageGenerator& operator=(const ImageGenerator&) = delete;

  /// The picture that is cheapest to reach among those within the tolerance of `seconds` (from the start of the
  /// presentation), or the nearest one where the clip has none there; times before the start give the first one. The
  /// last one stays until the end of the longest track. Throws `MediaError` for times after that, whatever duration the
  /// clip claims, when no picture can be decoded, and when it takes more than the asset's limits; `SystemError` when
  /// the file cannot be read any more, and `Cancelled` at once when `stop` asks for it.
  Image image(double seconds, std::stop_token stop = {});

  /// The times that `image` will be asked for from now on, in rising order. Only then does the generator know when it
  /// is done with a group of pictures, and decodes nothing of it any more. Other times still give their pictures.
  void expect(std::vector<double> times);

  const DecodingCounts& counts() const;

 private:
  struct Decoder;
  std::unique_ptr<Decoder> decoder_;
};

}  // namespace tq

#include <algorithm>
#include <cmath>
#include <fstream>

#include "Fuzz/Property.hpp"
#include "TQCore/TQError.hpp"
#include "TQFrames/FrameImages.hpp"
#include "TQFrames/PerceptualHash.hpp"
#include "TQFrames/PlatformMetadata.hpp"
#include "TQPlatform/Media/ImageGenerator.hpp"
#include "TQPlatform/Media/PictureRuns.hpp"
#include "TQPlatform/UUID.hpp"

namespace tq {
namespace {

/// A file that is there as long as this value.
class ClipFile {
 public:
  explicit ClipFile(ByteView content) {
    const std::string_view text = textOf(content);
    std::ofstream stream(path, std::ios::binary);
    fuzz::require(stream.write(text.data(), static_cast<std::streamsize>(text.size())).flush().good(),
                  "a clip can be written to the folder for temporary files");
  }
  ~ClipFile() { std::filesystem::remove(path); }

  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / ("tarquel-fuzz-" + UUID::random().text() + ".mp4");
};

void checkMetadata(const MediaAsset& asset, const std::filesystem::path& file) {
  fuzz::require(std::isfinite(asset.duration()) && asset.duration() >= 0, "a duration is finite and not negative");
  if (asset.tracks(MediaType::video).empty()) return;
  const VideoMetadata metadata = loadMetadataPlatform(asset, file);
  fuzz::require(metadata.width >= 0 && metadata.height >= 0, "a track's size is not negative");
  fuzz::require(std::isfinite(metadata.frameRate) && metadata.frameRate >= 0, "a frame rate is finite");
}

void checkRuns(MediaAsset& asset, const std::vector<double>& times) {
  std::vector<double> inRuns;
  for (const PictureRun& run : pictureRuns(asset, times, 0.2, {}))
    inRuns.insert(inRuns.end(), run.begin(), run.end());
  fuzz::require(inRuns == times, "runs hold all times in their order");
}

/// Three pictures: the first, one from the middle, which takes a seek, and the last; from the file as it was opened
/// again.
void checkPictures(const MediaAsset& first) {
  MediaAsset asset = first.another();
  const std::vector<double> times{0.0, asset.duration() / 2, asset.duration()};
  checkRuns(asset, times);
  ImageGenerator generator(asset);
  for (const double seconds : times) {
    const Image picture = generator.image(seconds);
    fuzz::require(picture.width() >= 1 && picture.height() >= 1, "a picture has a size");
    fuzz::require(perceptualHash(picture) == perceptualHash(picture), "a picture always has the same hash");
    const Image small = downscale(picture, 16);
    const auto [shorter, longer] = std::minmax({picture.width(), picture.height()});
    // A picture of which nothing would be left stays as it is.
    fuzz::require(shorter * 32 < longer || std::max(small.width(), small.height()) <= 16, "a picture can be scaled");
    const std::optional<Image> again = Image::decodeJPEG(jpegData(small, 0.5));
    fuzz::require(again && again->width() == small.width() && again->height() == small.height(),
                  "a picture can be stored");
  }
}

}  // namespace

void fuzz::check(ByteView input) {
  const ClipFile file(input);
  try {
    MediaAsset asset(file.path);
    checkMetadata(asset, file.path);
    checkPictures(asset);
  } catch (const MediaError&) {
  } catch (const ImageError&) {
  } catch (const TQError&) {
    // A picture may be longer than a JPEG can be.
  }
}

}  // namespace tq

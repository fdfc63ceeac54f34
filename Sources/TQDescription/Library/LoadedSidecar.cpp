#include "TQDescription/Library/LoadedSidecar.hpp"

#include "TQCore/ValueCodec.hpp"
#include "TQDescription/Library/MediaPathResolver.hpp"

namespace tq {

std::filesystem::path LoadedSidecar::posterURL() const {
  return std::filesystem::path(sidecarURL).replace_extension("jpg");
}

std::optional<std::filesystem::path> LoadedSidecar::sourceVideoURL() const {
  return MediaPathResolver::resolve(sidecarURL, result->source.filename);
}

template <>
std::size_t hashOf(const LoadedSidecar& sidecar) {
  return hashOfValues(sidecar.sidecarURL, *sidecar.result);
}

RecordAt recordsOf(const std::vector<LoadedSidecar>& sidecars) {
  return [&sidecars](std::size_t number) -> const DescriptionResult& { return *sidecars[number].result; };
}

}  // namespace tq

#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/Shared.hpp"
#include "TQDescription/Search/RecordSequence.hpp"

namespace tq {

/// A description and the sidecar it was read from. The record is shared, so that a list of hits costs no copies of it;
/// `result` always has a value.
struct LoadedSidecar {
  std::filesystem::path sidecarURL;  ///< the `.description.json` file
  Shared<DescriptionResult> result;

  /// Where the poster stands: `clip.description.jpg`.
  std::filesystem::path posterURL() const;

  /// The clip, whether or not it is still there; absent when the record's filename names nothing in the sidecar's
  /// folder.
  std::optional<std::filesystem::path> sourceVideoURL() const;

  bool operator==(const LoadedSidecar&) const = default;
};
template <>
std::size_t hashOf(const LoadedSidecar&);

/// The records of `sidecars`, which must stay where they are for as long as the function is used.
RecordAt recordsOf(const std::vector<LoadedSidecar>& sidecars);

}  // namespace tq

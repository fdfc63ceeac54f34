#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "TQCore/RecordJSON.hpp"

namespace tq {

/// A clip proposed for another run.
struct RerateCandidate {
  std::filesystem::path sidecarURL;
  std::filesystem::path sourceURL;
  std::optional<std::string> reason;

  bool operator==(const RerateCandidate&) const = default;
};
template <>
std::size_t hashOf(const RerateCandidate&);

}  // namespace tq

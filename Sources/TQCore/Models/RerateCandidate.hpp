#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tq {

/// A clip proposed for another run.
struct RerateCandidate {
  std::filesystem::path sidecarURL;
  std::filesystem::path sourceURL;
  std::optional<std::string> reason;

  bool operator==(const RerateCandidate&) const = default;
};

}  // namespace tq

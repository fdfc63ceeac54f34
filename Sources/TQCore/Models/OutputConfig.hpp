#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>

#include "TQCore/RawValue.hpp"
#include "TQCore/RecordJSON.hpp"

namespace tq {

enum class OutputFormat { markdown, json, both };

template <>
inline constexpr auto rawValues<OutputFormat> = std::to_array<std::string_view>({"markdown", "json", "both"});

/// What happens when a file to be written is there already.
enum class ConflictPolicy { skipExisting, overwrite, suffix };

template <>
inline constexpr auto rawValues<ConflictPolicy> = std::to_array<std::string_view>({"skip-existing", "overwrite",
                                                                                   "suffix"});

/// Which sidecars are written, and where.
struct OutputConfig {
  OutputFormat format = OutputFormat::both;
  ConflictPolicy conflictPolicy = ConflictPolicy::skipExisting;
  std::optional<std::filesystem::path> sidecarDirectory;  ///< absent: beside the clip

  bool operator==(const OutputConfig&) const = default;
};
TQ_RECORD(OutputConfig);

}  // namespace tq

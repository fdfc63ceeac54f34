#pragma once

#include <cstdint>
#include <string>

#include "TQCore/RecordJSON.hpp"

namespace tq {

/// What produced a description.
struct EngineMetadata {
  std::string provider;             ///< id of the vision provider
  std::string model;                ///< as the provider's answer names it
  std::int64_t framesAnalyzed = 0;  ///< number of frames sent
  std::string samplingStrategy;     ///< raw value of the `SamplingStrategy` used

  bool operator==(const EngineMetadata&) const = default;
};
TQ_RECORD(EngineMetadata);

}  // namespace tq

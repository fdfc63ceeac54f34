#pragma once

#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/EngineMetadata.hpp"
#include "TQCore/Models/GlobalSummary.hpp"
#include "TQCore/Models/Shot.hpp"
#include "TQCore/Models/SourceMetadata.hpp"
#include "TQCore/Models/TranscriptInfo.hpp"
#include "TQCore/RecordJSON.hpp"

namespace tq {

struct SchemaVersion {
  static constexpr const char* current = "1.0";
};

/// The complete description of one clip: what a model's answer becomes and what the JSON sidecar holds. The model
/// supplies the version, summary, shots, global and the flags; the pipeline the rest.
struct DescriptionResult {
  std::string schemaVersion = SchemaVersion::current;
  SourceMetadata source;
  EngineMetadata engine;
  std::string summary;
  std::vector<Shot> shots;  ///< one a sampled frame, chronological; may be empty
  GlobalSummary global;
  std::optional<bool> flagged;     ///< hard refusal: the model could not describe the clip at all
  std::optional<bool> reviewFlag;  ///< soft cull: a candidate for human review or deletion
  std::optional<std::string> reviewReason;
  std::optional<TranscriptInfo> transcript;

  bool operator==(const DescriptionResult&) const = default;
};
TQ_RECORD(DescriptionResult);

}  // namespace tq

#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQCore/Models/ExtractedFrame.hpp"
#include "TQCore/Models/OutputConfig.hpp"
#include "TQCore/RawValue.hpp"
#include "TQCore/RecordJSON.hpp"
#include "TQCore/Shared.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"
#include "TQPlatform/UUID.hpp"

namespace tq {

enum class JobStatus { queued, extracting, calling, writing, done, failed, cancelled };

template <>
inline constexpr auto rawValues<JobStatus> =
    std::to_array<std::string_view>({"queued", "extracting", "calling", "writing", "done", "failed", "cancelled"});

/// True for `done`, `failed` and `cancelled`: no job leaves these by itself.
bool isTerminal(JobStatus status);

/// What a job's result means to its reader. Derived, never stored.
struct JobBadge {
  enum class Kind { none, refused, needsReview };
  Kind kind = Kind::none;
  std::optional<std::string> reason;  ///< of `needsReview` only

  bool operator==(const JobBadge&) const = default;
};

/// What a job was run with, in words that stay true when the settings change.
struct EngineSnapshot {
  std::string providerId;
  std::string providerDisplay;
  std::string modelId;
  std::string promptProfile;     ///< raw value
  std::string samplingStrategy;  ///< raw value

  bool operator==(const EngineSnapshot&) const = default;
};
TQ_RECORD(EngineSnapshot);

/// The unit of work: one clip on its way to sidecars. A plain value; the large parts are shared between copies.
struct Job {
  UUID id;
  std::filesystem::path sourceURL;
  JobStatus status = JobStatus::queued;
  double progress = 0;               ///< 0 to 1
  std::optional<std::string> error;  ///< for a failed or cancelled job
  Shared<DescriptionResult> result;
  Shared<std::string> rawResponse;  ///< the model's answer as it came
  Shared<std::vector<ExtractedFrame>> frames;
  std::optional<EngineSnapshot> engineSnapshot;
  Date createdAt;
  std::optional<OutputConfig> outputOverride;  ///< replaces the configured output for this job only

  JobBadge badge() const;

  bool operator==(const Job&) const = default;
};

}  // namespace tq

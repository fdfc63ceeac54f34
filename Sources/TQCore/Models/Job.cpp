#include "TQCore/Models/Job.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<EngineSnapshot> = RecordTable{
    field("providerId", &EngineSnapshot::providerId),
    field("providerDisplay", &EngineSnapshot::providerDisplay),
    field("modelId", &EngineSnapshot::modelId),
    field("promptProfile", &EngineSnapshot::promptProfile),
    field("samplingStrategy", &EngineSnapshot::samplingStrategy),
};
TQ_RECORD_CODEC(EngineSnapshot);

bool isTerminal(JobStatus status) {
  return status == JobStatus::done || status == JobStatus::failed || status == JobStatus::cancelled;
}

JobBadge Job::badge() const {
  if (!result) return {};
  if (result->flagged.value_or(false)) return {JobBadge::Kind::refused, {}};
  if (result->reviewFlag.value_or(false)) return {JobBadge::Kind::needsReview, result->reviewReason};
  return {};
}

}  // namespace tq

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

}  // namespace tq

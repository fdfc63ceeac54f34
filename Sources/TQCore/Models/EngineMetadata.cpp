#include "TQCore/Models/EngineMetadata.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<EngineMetadata> = RecordTable{
    field("provider", &EngineMetadata::provider),
    field("model", &EngineMetadata::model),
    field("frames_analyzed", &EngineMetadata::framesAnalyzed),
    field("sampling_strategy", &EngineMetadata::samplingStrategy),
};
TQ_RECORD_CODEC(EngineMetadata);

}  // namespace tq

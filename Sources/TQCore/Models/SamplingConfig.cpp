#include "TQCore/Models/SamplingConfig.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<SamplingConfig> = RecordTable{
    field("strategy", &SamplingConfig::strategy),
    field("intervalSeconds", &SamplingConfig::intervalSeconds),
    field("evenFrameCount", &SamplingConfig::evenFrameCount),
    field("maxFrames", &SamplingConfig::maxFrames),
    field("maxEdgePixels", &SamplingConfig::maxEdgePixels),
    field("jpegQuality", &SamplingConfig::jpegQuality),
};
TQ_RECORD_CODEC(SamplingConfig);

}  // namespace tq

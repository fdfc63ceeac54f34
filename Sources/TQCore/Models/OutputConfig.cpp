#include "TQCore/Models/OutputConfig.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<OutputConfig> = RecordTable{
    field("format", &OutputConfig::format),
    field("conflictPolicy", &OutputConfig::conflictPolicy),
    field("sidecarDirectory", &OutputConfig::sidecarDirectory),
};
TQ_RECORD_CODEC(OutputConfig);

}  // namespace tq

#include "TQCore/Models/DescriptionResult.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<DescriptionResult> = RecordTable{
    field("schema_version", &DescriptionResult::schemaVersion),
    field("source", &DescriptionResult::source),
    field("engine", &DescriptionResult::engine),
    field("summary", &DescriptionResult::summary),
    field("shots", &DescriptionResult::shots),
    field("global", &DescriptionResult::global),
    field("flagged", &DescriptionResult::flagged),
    field("review_flag", &DescriptionResult::reviewFlag),
    field("review_reason", &DescriptionResult::reviewReason),
    field("transcript", &DescriptionResult::transcript),
};
TQ_RECORD_CODEC(DescriptionResult);

}  // namespace tq

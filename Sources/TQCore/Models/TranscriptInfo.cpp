#include "TQCore/Models/TranscriptInfo.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<TranscriptSpeakerTurn> = RecordTable{
    field("speaker", &TranscriptSpeakerTurn::speaker),
    field("start_seconds", &TranscriptSpeakerTurn::startSeconds),
    field("end_seconds", &TranscriptSpeakerTurn::endSeconds),
    field("text", &TranscriptSpeakerTurn::text),
};
TQ_RECORD_CODEC(TranscriptSpeakerTurn);

template <>
constexpr auto recordTable<TranscriptInfo> = RecordTable{
    field("text", &TranscriptInfo::text),         field("provider", &TranscriptInfo::provider),
    field("model", &TranscriptInfo::model),       field("language", &TranscriptInfo::language),
    field("speakers", &TranscriptInfo::speakers),
};
TQ_RECORD_CODEC(TranscriptInfo);

}  // namespace tq

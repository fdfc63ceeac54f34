#include "TQDescription/FolderIndex/FolderIndex.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<IndexedClip> = RecordTable{
    field("filename", &IndexedClip::filename),
    field("duration_seconds", &IndexedClip::durationSeconds),
    field("summary", &IndexedClip::summary),
    field("one_line", &IndexedClip::oneLine),
    field("primary_subjects", &IndexedClip::primarySubjects),
    field("themes", &IndexedClip::themes),
    field("search_keywords", &IndexedClip::searchKeywords),
    field("suggested_use_cases", &IndexedClip::suggestedUseCases),
    field("dominant_palette", &IndexedClip::dominantPalette),
    field("gps", &IndexedClip::gps),
    field("flagged", &IndexedClip::flagged),
    field("review_flag", &IndexedClip::reviewFlag),
    field("review_reason", &IndexedClip::reviewReason),
    field("has_transcript", &IndexedClip::hasTranscript),
};
TQ_RECORD_CODEC(IndexedClip);

template <>
constexpr auto recordTable<FolderIndex::TopCount> = RecordTable{
    field("name", &FolderIndex::TopCount::name),
    field("count", &FolderIndex::TopCount::count),
};
TQ_RECORD_CODEC(FolderIndex::TopCount);

template <>
constexpr auto recordTable<FolderIndex> = RecordTable{
    field("schema_version", &FolderIndex::schemaVersion),
    field("folder", &FolderIndex::folder),
    field("generated_at", &FolderIndex::generatedAt),
    field("total_clips", &FolderIndex::totalClips),
    field("total_duration_seconds", &FolderIndex::totalDurationSeconds),
    field("flagged_count", &FolderIndex::flaggedCount),
    field("review_count", &FolderIndex::reviewCount),
    field("themes_top", &FolderIndex::themesTop),
    field("clips", &FolderIndex::clips),
};
TQ_RECORD_CODEC(FolderIndex);

}  // namespace tq

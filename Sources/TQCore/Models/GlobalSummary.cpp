#include "TQCore/Models/GlobalSummary.hpp"

#include "TQCore/RecordCodec.hpp"

namespace tq {

template <>
constexpr auto recordTable<GlobalSummary> = RecordTable{
    field("overall_summary_one_line", &GlobalSummary::overallSummaryOneLine),
    field("primary_subjects", &GlobalSummary::primarySubjects),
    field("themes", &GlobalSummary::themes),
    field("dominant_palette", &GlobalSummary::dominantPalette),
    field("search_keywords", &GlobalSummary::searchKeywords),
    field("suggested_use_cases", &GlobalSummary::suggestedUseCases),
};
TQ_RECORD_CODEC(GlobalSummary);

}  // namespace tq

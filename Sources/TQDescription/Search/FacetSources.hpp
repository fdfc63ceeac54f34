#pragma once

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "TQDescription/Search/Facets.hpp"

namespace tq {

// Where the values of each field stand: in one list of the whole clip, or in one text of every shot.

inline constexpr auto globalFacets =
    std::to_array<std::pair<FacetField, std::optional<std::vector<std::string>> GlobalSummary::*>>({
        {FacetField::theme, &GlobalSummary::themes},
        {FacetField::keyword, &GlobalSummary::searchKeywords},
        {FacetField::useCase, &GlobalSummary::suggestedUseCases},
        {FacetField::subject, &GlobalSummary::primarySubjects},
    });

inline constexpr auto shotFacets = std::to_array<std::pair<FacetField, std::optional<std::string> Shot::*>>({
    {FacetField::shotType, &Shot::shotType},
    {FacetField::cameraMotion, &Shot::cameraMotion},
    {FacetField::mood, &Shot::overallMood},
});

inline constexpr auto settingFacets = std::to_array<std::pair<FacetField, std::optional<std::string> Setting::*>>({
    {FacetField::timeOfDay, &Setting::timeOfDay},
    {FacetField::lighting, &Setting::lighting},
    {FacetField::environment, &Setting::environment},
    {FacetField::weather, &Setting::weather},
});

/// Calls `visit` with each text of the record that is a field's, as it stands there; those of one field in their order.
template <class Visit>
void forEachFacetText(const DescriptionResult& record, Visit visit) {
  for (const auto& [field, list] : globalFacets)
    if (const auto& texts = record.global.*list)
      for (const std::string& text : *texts)
        visit(field, text);
  for (const Shot& shot : record.shots) {
    for (const auto& [field, member] : shotFacets)
      if (const auto& text = shot.*member) visit(field, *text);
    if (!shot.setting) continue;
    for (const auto& [field, member] : settingFacets)
      if (const auto& text = (*shot.setting).*member) visit(field, *text);
  }
}

}  // namespace tq

#pragma once

#include <array>
#include <cstddef>

#include "TQCore/Models/DescriptionResult.hpp"

namespace tq {

/// What a full match is worth in each searchable part of a record, in the order of the parts.
inline constexpr auto searchFieldWeights =
    std::to_array<double>({3.0, 3.0, 2.5, 2.0, 2.0, 1.0, 2.0, 2.0, 1.5, 1.5, 1.0, 1.5, 1.5});

/// The last part, which only a record with a transcript has.
inline constexpr std::size_t transcriptField = searchFieldWeights.size() - 1;

namespace detail {

template <class Visit>
void visitTexts(const std::optional<std::string>& text, Visit visit) {
  if (text) visit(*text);
}

template <class Visit>
void visitTexts(const std::optional<std::vector<std::string>>& texts, Visit visit) {
  if (!texts) return;
  for (const std::string& text : *texts)
    visit(text);
}

}  // namespace detail

/// Calls `visit` with the part's number and text for every text that a search by words sees. People, moods, colours,
/// the reason for a review and the filename are left out on purpose.
template <class Visit>
void forEachSearchText(const DescriptionResult& record, Visit visit) {
  const auto all = [&](std::size_t field, const auto& texts) {
    detail::visitTexts(texts, [&](const std::string& text) { visit(field, text); });
  };
  const GlobalSummary& global = record.global;
  all(0, global.searchKeywords);
  all(1, global.themes);
  all(2, global.suggestedUseCases);
  all(3, global.primarySubjects);
  all(4, global.overallSummaryOneLine);
  visit(std::size_t{5}, record.summary);
  for (const Shot& shot : record.shots) {
    all(6, shot.tags);
    if (shot.setting)
      for (const auto text :
           {&Setting::locationType, &Setting::timeOfDay, &Setting::lighting, &Setting::environment, &Setting::weather})
        all(7, (*shot.setting).*text);
    all(8, shot.cameraMotion);
    all(9, shot.shotType);
    all(10, shot.framingNotes);
    all(11, shot.onScreenText);
  }
  if (record.transcript) visit(transcriptField, record.transcript->text);
}

}  // namespace tq

#include "TQDescription/Facets.hpp"

#include <algorithm>

#include "TQCore/ValueCodec.hpp"
#include "TQDescription/FacetSources.hpp"
#include "TQDescription/FacetTable.hpp"
#include "TQPlatform/Unicode.hpp"

namespace tq {
namespace {

const auto sources = std::to_array<FacetSource>({
    {"Theme", &GlobalSummary::themes},
    {"Keyword", &GlobalSummary::searchKeywords},
    {"Use case", &GlobalSummary::suggestedUseCases},
    {"Subject", &GlobalSummary::primarySubjects},
    {"Shot", &Shot::shotType},
    {"Motion", &Shot::cameraMotion},
    {"Time", &Setting::timeOfDay},
    {"Lighting", &Setting::lighting},
    {"Environment", &Setting::environment},
    {"Weather", &Setting::weather},
    {"Mood", &Shot::overallMood},
});

std::set<std::string> lowercasedAll(const auto& texts) {
  std::set<std::string> lower;
  for (const std::string& text : texts)
    lower.insert(lowercased(text));
  return lower;
}

bool haveCommon(const std::set<std::string>& a, const std::set<std::string>& b) {
  return std::any_of(a.begin(), a.end(), [&](const std::string& element) { return b.contains(element); });
}

}  // namespace

const FacetSource& sourceOf(FacetField field) {
  return sources.at(static_cast<std::size_t>(field));
}

std::string_view label(FacetField field) {
  return sourceOf(field).label;
}

template <>
std::size_t hashOf(const FacetValue& value) {
  return hashOfValues(value.value, value.count);
}

FacetSelection activeFacets(const FacetSelection& facets) {
  FacetSelection active = facets;
  std::erase_if(active, [](const auto& entry) { return entry.second.empty(); });
  return active;
}

std::vector<std::string> FacetIndex::values(FacetField field, const DescriptionResult& in) {
  std::vector<std::string> values;
  forEachFacetText(field, in, [&](std::string_view text) {
    if (const std::string_view value = trimmed(text); !value.empty()) values.emplace_back(value);
  });
  return values;
}

FacetOptions FacetIndex::build(std::span<const DescriptionResult> from) {
  FacetTable table;
  for (const DescriptionResult& record : from)
    table.add(record);
  return table.options();
}

bool FacetIndex::matches(const FacetSelection& selection, const DescriptionResult& record) {
  return std::all_of(selection.begin(), selection.end(), [&](const auto& entry) {
    const auto& [field, chosen] = entry;
    return chosen.empty() || haveCommon(lowercasedAll(chosen), lowercasedAll(values(field, record)));
  });
}

}  // namespace tq

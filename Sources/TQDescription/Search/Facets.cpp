#include "TQDescription/Search/Facets.hpp"

#include <algorithm>

#include "TQCore/ValueCodec.hpp"
#include "TQDescription/Search/FacetSources.hpp"
#include "TQDescription/Search/FacetTable.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr auto labels = std::to_array<std::string_view>({"Theme", "Keyword", "Use case", "Subject", "Shot", "Motion",
                                                         "Time", "Lighting", "Environment", "Weather", "Mood"});
static_assert(labels.size() == rawValues<FacetField>.size());

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

std::string_view label(FacetField field) {
  return labels.at(static_cast<std::size_t>(field));
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
  forEachFacetText(in, [&](FacetField of, std::string_view text) {
    if (of != field) return;
    if (const std::string_view value = trimmed(text); !value.empty()) values.emplace_back(value);
  });
  return values;
}

FacetOptions FacetIndex::build(std::span<const DescriptionResult> from) {
  return build(from.size(), recordsIn(from), 1);
}

FacetOptions FacetIndex::build(std::size_t count, const RecordAt& record, std::size_t width) {
  FacetTable table;
  for (FacetTable& portion : inPortions<FacetTable>(count, record, width, {}))
    table.append(std::move(portion));
  return table.options();
}

bool FacetIndex::matches(const FacetSelection& selection, const DescriptionResult& record) {
  return std::all_of(selection.begin(), selection.end(), [&](const auto& entry) {
    const auto& [field, chosen] = entry;
    return chosen.empty() || haveCommon(lowercasedAll(chosen), lowercasedAll(values(field, record)));
  });
}

}  // namespace tq

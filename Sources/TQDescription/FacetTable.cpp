#include "TQDescription/FacetTable.hpp"

#include <algorithm>
#include <numeric>
#include <optional>

#include "TQDescription/FacetSources.hpp"
#include "TQPlatform/Unicode.hpp"

namespace tq {

TextDictionary::Number FacetTable::Field::add(std::string_view key, std::string_view display) {
  const TextDictionary::Number number = keys.add(key);
  if (number == values.size()) values.push_back({std::string(display), {}});
  return number;
}

std::optional<TextDictionary::Number> FacetTable::Field::valueOf(std::string_view text) {
  const TextDictionary::Number spelling = spellings.add(text);
  if (spelling < valueOfSpelling.size()) return valueOfSpelling[spelling];

  std::optional<TextDictionary::Number> number;
  if (const std::string_view value = trimmed(text); !value.empty()) number = add(lowercased(value), value);
  valueOfSpelling.push_back(number);
  return number;
}

void FacetTable::add(const DescriptionResult& record) {
  const auto recordNumber = static_cast<std::uint32_t>(recordCount_++);
  for (const FacetField field : allCases<FacetField>()) {
    Field& known = fields_[static_cast<std::size_t>(field)];
    forEachFacetText(field, record, [&](const std::string& text) {
      const auto number = known.valueOf(text);
      if (!number) return;
      std::vector<std::uint32_t>& records = known.values[*number].records;
      if (records.empty() || records.back() != recordNumber) records.push_back(recordNumber);
    });
  }
}

void FacetTable::append(const FacetTable& other) {
  for (std::size_t field = 0; field < fields_.size(); ++field) {
    const Field& from = other.fields_[field];
    for (std::size_t number = 0; number < from.values.size(); ++number) {
      const Value& value = from.values[number];
      const auto key = from.keys.text(static_cast<TextDictionary::Number>(number));
      std::vector<std::uint32_t>& records = fields_[field].values[fields_[field].add(key, value.display)].records;
      for (const std::uint32_t record : value.records)
        records.push_back(static_cast<std::uint32_t>(recordCount_ + record));
    }
  }
  recordCount_ += other.recordCount_;
}

FacetOptions FacetTable::options() const {
  FacetOptions options;
  for (const FacetField field : allCases<FacetField>()) {
    const Field& known = fields_[static_cast<std::size_t>(field)];
    if (known.values.empty()) continue;
    std::vector<TextDictionary::Number> order(known.values.size());
    std::iota(order.begin(), order.end(), TextDictionary::Number{0});
    std::sort(order.begin(), order.end(), [&](TextDictionary::Number a, TextDictionary::Number b) {
      const std::size_t countOfA = known.values[a].records.size();
      const std::size_t countOfB = known.values[b].records.size();
      return countOfA != countOfB ? countOfA > countOfB : known.keys.text(a) < known.keys.text(b);
    });
    std::vector<FacetValue>& offered = options[field];
    offered.reserve(order.size());
    for (const TextDictionary::Number number : order)
      offered.push_back({known.values[number].display, known.values[number].records.size()});
  }
  return options;
}

std::vector<bool> FacetTable::matches(const FacetSelection& selection) const {
  std::vector<bool> matching(recordCount_, true);
  for (const auto& [field, chosen] : activeFacets(selection)) {
    const Field& known = fields_[static_cast<std::size_t>(field)];
    std::vector<bool> having(recordCount_);
    for (const std::string& choice : chosen)
      if (const auto number = known.keys.find(lowercased(choice)))
        for (const std::uint32_t record : known.values[*number].records)
          having[record] = true;
    std::transform(matching.begin(), matching.end(), having.begin(), matching.begin(), std::logical_and<>());
  }
  return matching;
}

}  // namespace tq

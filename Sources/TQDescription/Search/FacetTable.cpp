#include "TQDescription/Search/FacetTable.hpp"

#include <algorithm>
#include <functional>
#include <limits>
#include <numeric>

#include "TQDescription/Search/FacetSources.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr TextDictionary::Number none = std::numeric_limits<TextDictionary::Number>::max();

}  // namespace

void FacetTable::add(const DescriptionResult& record) {
  const auto number = static_cast<std::uint32_t>(recordCount_++);
  forEachFacetText(record, [&](FacetField field, const std::string& text) {
    fields_[static_cast<std::size_t>(field)].add(text, number);
  });
  for (Field& field : fields_)
    field.endRecord();
}

void FacetTable::append(FacetTable other) {
  for (std::size_t field = 0; field < fields_.size(); ++field)
    fields_[field].append(std::move(other.fields_[field]));
  recordCount_ += other.recordCount_;
}

FacetOptions FacetTable::options() const {
  FacetOptions options;
  for (const FacetField field : allCases<FacetField>()) {
    std::vector<FacetValue> values = fields_[static_cast<std::size_t>(field)].values();
    if (!values.empty()) options.emplace(field, std::move(values));
  }
  return options;
}

std::vector<bool> FacetTable::matches(const FacetSelection& selection) const {
  std::vector<bool> matching(recordCount_, true);
  for (const auto& [field, choices] : activeFacets(selection)) {
    const std::vector<bool> having = fields_[static_cast<std::size_t>(field)].having(choices);
    std::transform(matching.begin(), matching.end(), having.begin(), matching.begin(), std::logical_and<>());
  }
  return matching;
}

void FacetTable::Field::add(std::string_view text, std::uint32_t record) {
  const Value value = valueOf(text);
  if (value == none) return;
  Tally& tally = tallies_[value];
  if (tally.last == record + 1) return;
  tally = {tally.records + 1, record + 1};
  valuesOfRecords_.push_back(value);
}

void FacetTable::Field::append(Field other) {
  if (ends_.empty()) {
    *this = std::move(other);
    return;
  }
  std::vector<Value> own;
  for (std::size_t value = 0; value < other.displays_.size(); ++value) {
    own.push_back(valueWith(other.keys_.text(static_cast<Value>(value)), other.displays_[value]));
    tallies_[own.back()].records += other.tallies_[value].records;
  }
  const std::size_t start = valuesOfRecords_.size();
  for (const Value value : other.valuesOfRecords_)
    valuesOfRecords_.push_back(own[value]);
  for (const std::size_t end : other.ends_)
    ends_.push_back(start + end);
}

std::vector<FacetValue> FacetTable::Field::values() const {
  std::vector<Value> order(tallies_.size());
  std::iota(order.begin(), order.end(), Value{0});
  std::sort(order.begin(), order.end(), [&](Value a, Value b) {
    if (tallies_[a].records != tallies_[b].records) return tallies_[a].records > tallies_[b].records;
    return keys_.text(a) < keys_.text(b);
  });
  std::vector<FacetValue> values;
  values.reserve(order.size());
  for (const Value value : order)
    values.push_back({displays_[value], tallies_[value].records});
  return values;
}

std::vector<bool> FacetTable::Field::having(const std::set<std::string>& choices) const {
  std::vector<bool> chosen(tallies_.size());
  for (const std::string& choice : choices)
    if (const auto value = keys_.find(lowercased(choice))) chosen[*value] = true;
  std::vector<bool> having(ends_.size());
  std::size_t place = 0;
  for (std::size_t record = 0; record < ends_.size(); ++record)
    for (; place < ends_[record]; ++place)
      if (chosen[valuesOfRecords_[place]]) having[record] = true;
  return having;
}

FacetTable::Value FacetTable::Field::valueOf(std::string_view text) {
  const TextDictionary::Number spelling = spellings_.add(text);
  if (spelling == valueOfSpelling_.size()) {
    const std::string_view value = trimmed(text);
    valueOfSpelling_.push_back(value.empty() ? none : valueWith(lowercased(value), value));
  }
  return valueOfSpelling_[spelling];
}

FacetTable::Value FacetTable::Field::valueWith(std::string_view key, std::string_view display) {
  const Value value = keys_.add(key);
  if (value == displays_.size()) {
    displays_.emplace_back(display);
    tallies_.emplace_back();
  }
  return value;
}

}  // namespace tq

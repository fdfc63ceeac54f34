#include "Fuzz/Property.hpp"
#include "TQDescription/Search/SearchIndex.hpp"

namespace tq {
namespace {

/// The input's lines: the query, a facet value, and then the records, a shot's texts each.
std::vector<std::string> lines(std::string_view text) {
  std::vector<std::string> all{""};
  for (const char c : text) {
    if (c == '\n')
      all.emplace_back();
    else
      all.back() += c;
  }
  all.resize(std::max<std::size_t>(all.size(), 2));
  return all;
}

DescriptionResult recordOf(const std::string& line) {
  DescriptionResult record;
  record.source.filename = line.substr(0, 1);
  record.source.durationSeconds = static_cast<double>(line.size());
  record.summary = line;
  record.shots = {{.shotType = line.substr(0, line.size() / 2), .peopleCount = std::int64_t{1}, .tags = {{line}}}};
  record.global.overallSummaryOneLine = line.substr(line.size() / 2);
  return record;
}

}  // namespace

void fuzz::check(ByteView input) {
  const std::vector<std::string> text = lines(textOf(input));
  std::vector<DescriptionResult> records;
  std::vector<IndexedResult> prepared;
  std::vector<FilenameSimilarity> semantic;
  for (std::size_t line = 2; line < text.size(); ++line) {
    records.push_back(recordOf(text[line]));
    prepared.push_back({records.back(), SearchEngine::buildScoredFields(records.back())});
    semantic.push_back({text[line].substr(0, 1), static_cast<double>(line % 5) / 2 - 1});
  }
  const FacetSelection facets{{FacetField::shotType, text[1].empty() ? std::set<std::string>{} : std::set{text[1]}}};

  const SearchIndex index(records);
  require(index.facetOptions() == FacetIndex::build(records), "an index offers the facets of its records");
  for (const std::size_t limit : {2, 100}) {
    require(index.search(text[0], facets, limit) == SearchEngine::search(text[0], prepared, facets, limit),
            "an index finds what the plain search finds");
    require(index.hybridSearch(text[0], semantic, 0.5, 0.2, facets, limit) ==
                SearchEngine::hybridSearch(text[0], prepared, semantic, 0.5, 0.2, facets, limit),
            "an index blends as the plain search does");
  }
}

}  // namespace tq

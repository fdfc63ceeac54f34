#pragma once

#include <string>
#include <vector>

#include "TQDescription/Library/LoadedSidecar.hpp"
#include "TQDescription/Search/SearchEngine.hpp"

namespace tq::test {

/// The sidecar `/v/<stem>.description.json` of a clip named `filename` whose summary is `summary`.
inline LoadedSidecar sidecarOf(const std::string& stem, std::string filename, std::string summary,
                               std::vector<std::string> themes = {}) {
  DescriptionResult result;
  result.source.filename = std::move(filename);
  result.summary = std::move(summary);
  result.global.themes = std::move(themes);
  return {.sidecarURL = "/v/" + stem + ".description.json", .result = result};
}

/// The stems of the sidecars that `matches` show.
template <class Matches>
std::vector<std::string> stemsOf(const Matches& matches) {
  std::vector<std::string> stems;
  for (const auto& match : matches)
    stems.push_back(match.sidecar.sidecarURL.stem().stem().string());
  return stems;
}

/// The hits alone.
template <class Matches>
std::vector<SearchHit> hitsOf(const Matches& matches) {
  std::vector<SearchHit> hits;
  for (const auto& match : matches)
    hits.push_back(match.hit);
  return hits;
}

/// The records prepared as the search engine wants them.
inline std::vector<IndexedResult> indexed(const std::vector<LoadedSidecar>& sidecars) {
  std::vector<IndexedResult> records;
  for (const LoadedSidecar& sidecar : sidecars)
    records.push_back({sidecar.result, SearchEngine::buildScoredFields(*sidecar.result)});
  return records;
}

}  // namespace tq::test

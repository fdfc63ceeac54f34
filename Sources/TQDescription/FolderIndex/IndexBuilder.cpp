#include "TQDescription/FolderIndex/IndexBuilder.hpp"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

#include "TQDescription/JoinedText.hpp"
#include "TQPlatform/JSON/JSON.hpp"
#include "TQPlatform/Text/DateText.hpp"
#include "TQPlatform/Text/Unicode.hpp"

namespace tq {
namespace {

constexpr std::size_t keptThemes = 10;
constexpr std::size_t shownSubjects = 3;
constexpr std::size_t shownSummaryCharacters = 80;

std::vector<std::string> listOrEmpty(const std::optional<std::vector<std::string>>& list) {
  return list.value_or(std::vector<std::string>());
}

IndexedClip indexed(const DescriptionResult& result) {
  return {.filename = result.source.filename,
          .durationSeconds = result.source.durationSeconds,
          .summary = result.summary,
          .oneLine = result.global.overallSummaryOneLine,
          .primarySubjects = listOrEmpty(result.global.primarySubjects),
          .themes = listOrEmpty(result.global.themes),
          .searchKeywords = listOrEmpty(result.global.searchKeywords),
          .suggestedUseCases = listOrEmpty(result.global.suggestedUseCases),
          .dominantPalette = listOrEmpty(result.global.dominantPalette),
          .gps = result.source.gps,
          .flagged = result.flagged == true,
          .reviewFlag = result.reviewFlag == true,
          .reviewReason = result.reviewReason,
          .hasTranscript = result.transcript && !result.transcript->text.empty()};
}

std::vector<FolderIndex::TopCount> mostFrequentThemes(const std::vector<IndexedClip>& clips) {
  std::map<std::string_view, std::int64_t> counts;
  for (const IndexedClip& clip : clips)
    for (const std::string& theme : clip.themes)
      if (!theme.empty()) ++counts[theme];

  std::vector<FolderIndex::TopCount> top;
  for (const auto& [name, count] : counts)
    top.push_back({.name = std::string(name), .count = count});
  std::stable_sort(top.begin(), top.end(),
                   [](const auto& left, const auto& right) { return left.count > right.count; });
  if (top.size() > keptThemes) top.resize(keptThemes);
  return top;
}

std::string pathText(const std::filesystem::path& folder) {
  std::string text = validUTF8(folder.native());
  while (text.size() > 1 && text.ends_with('/'))
    text.pop_back();
  return text;
}

std::string lastComponent(const std::string& path) {
  return path == "/" ? path : path.substr(path.rfind('/') + 1);
}

std::string countsLine(const FolderIndex& index) {
  std::vector<std::string> parts{std::to_string(index.totalClips) + " clip" + (index.totalClips == 1 ? "" : "s"),
                                 IndexBuilder::formatDuration(index.totalDurationSeconds) + " total"};
  if (index.flaggedCount >= 1) parts.push_back("⚠️ " + std::to_string(index.flaggedCount) + " flagged");
  if (index.reviewCount >= 1) parts.push_back("👀 " + std::to_string(index.reviewCount) + " need review");
  return joined(parts, " · ");
}

/// `text` as it can stand in a cell of a table.
std::string cell(std::string_view text) {
  std::string safe;
  safe.reserve(text.size());
  for (const char c : text) {
    if (c == '|') safe += '\\';
    safe += c == '\n' ? ' ' : c;
  }
  return safe;
}

std::string shownSubjectsOf(const IndexedClip& clip) {
  const auto count = static_cast<std::ptrdiff_t>(std::min(shownSubjects, clip.primarySubjects.size()));
  return joined({clip.primarySubjects.begin(), clip.primarySubjects.begin() + count}, ", ");
}

std::string shownSummaryOf(const IndexedClip& clip) {
  if (clip.oneLine) return *clip.oneLine;
  const std::string_view start = characterPrefix(clip.summary, shownSummaryCharacters);
  return start.size() == clip.summary.size() ? clip.summary : std::string(start) + "…";
}

std::string row(const IndexedClip& clip) {
  return "| `" + cell(clip.filename) + "`" + (clip.flagged ? " ⚠️" : "") + (clip.reviewFlag ? " 👀" : "") + " | " +
         IndexBuilder::formatDuration(clip.durationSeconds) + " | " + cell(shownSubjectsOf(clip)) + " | " +
         cell(shownSummaryOf(clip)) + " |\n";
}

std::int64_t wholeSeconds(double seconds) {
  using Limits = std::numeric_limits<std::int64_t>;
  if (std::isnan(seconds)) return 0;
  const double rounded = std::round(seconds);
  if (rounded >= 0x1p63) return Limits::max();
  if (rounded < -0x1p63) return Limits::min();
  return static_cast<std::int64_t>(rounded);
}

}  // namespace

FolderIndex IndexBuilder::build(const std::filesystem::path& folder,
                                const std::vector<Shared<DescriptionResult>>& descriptions, Date generatedAt) {
  FolderIndex index{.folder = pathText(folder), .generatedAt = generatedAt};
  index.clips.reserve(descriptions.size());
  for (const Shared<DescriptionResult>& description : descriptions)
    index.clips.push_back(indexed(*description));
  std::stable_sort(index.clips.begin(), index.clips.end(),
                   [](const IndexedClip& left, const IndexedClip& right) { return left.filename < right.filename; });
  for (const IndexedClip& clip : index.clips) {
    ++index.totalClips;
    index.totalDurationSeconds += clip.durationSeconds;
    index.flaggedCount += clip.flagged ? 1 : 0;
    index.reviewCount += clip.reviewFlag ? 1 : 0;
  }
  index.themesTop = mostFrequentThemes(index.clips);
  return index;
}

std::string IndexBuilder::renderJSON(const FolderIndex& index) {
  return writeJSON(encode(index), JSONLayout::pretty);
}

std::string IndexBuilder::renderMarkdown(const FolderIndex& index) {
  std::string document = "# Index — " + lastComponent(index.folder) + "\n\n";
  document += countsLine(index) + "\n\n";
  document += "> Generated " + iso8601(index.generatedAt) + "\n\n";
  if (!index.themesTop.empty()) {
    document += "## Top themes\n\n";
    for (const FolderIndex::TopCount& theme : index.themesTop)
      document += "- **" + theme.name + "** — " + std::to_string(theme.count) + "\n";
    document += "\n";
  }
  document += "## Clips\n\n| File | Duration | Subjects | Summary |\n|---|---|---|---|\n";
  for (const IndexedClip& clip : index.clips)
    document += row(clip);
  return document;
}

std::string IndexBuilder::formatDuration(double seconds) {
  const std::int64_t total = wholeSeconds(seconds);
  const std::int64_t minutes = total % 3600 / 60;
  std::array<char, 64> text;
  const int length = total < 3600
                         ? std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64, total / 60, total % 60)
                         : std::snprintf(text.data(), text.size(), "%" PRId64 ":%02" PRId64 ":%02" PRId64, total / 3600,
                                         minutes, total % 60);
  return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace tq

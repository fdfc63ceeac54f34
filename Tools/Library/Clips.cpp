#include "Tools/Library/Clips.hpp"

#include <algorithm>
#include <stdexcept>

#include "TQCore/TQError.hpp"
#include "TQDescription/Library/LibraryModel.hpp"
#include "TQDescription/Library/LibraryTexts.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/FileSystem/Files.hpp"
#include "TQPlatform/Text/Unicode.hpp"
#include "Tools/Library/SemanticSearch.hpp"
#include "Tools/Shared/PlainText.hpp"

namespace tq::library {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t standardLimit = 500;

fs::path standardized(const fs::path& folder) {
  const fs::path path = fs::absolute(folder).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

std::vector<Found> ranked(std::vector<LibraryMatch> matches) {
  const double top = matches.empty() ? 0 : matches.front().hit.score;
  std::vector<Found> found;
  for (LibraryMatch& match : matches)
    found.push_back({std::move(match.sidecar),
                     top > 0 ? std::optional(LibraryTexts::matchPercent(match.hit.score, top)) : std::nullopt});
  return found;
}

}  // namespace

std::string Clips::shownPath(const fs::path& file) const {
  const fs::path relative = file.lexically_relative(folder);
  return (relative.empty() ? file : relative).string();
}

std::string Clips::shownPath(const LoadedSidecar& sidecar) const {
  return shownPath(sidecar.sourceVideoURL().value_or(sidecar.sidecarURL));
}

Clips loadClips(const Options& options, const Environment& environment, const std::stop_token& stop) {
  if (!fs::is_directory(options.folder))
    throw fs::exists(options.folder) ? std::runtime_error("Not a folder: " + options.folder.string())
                                     : std::runtime_error(TQError::fileNotFound(options.folder).description());
  Clips clips{.folder = standardized(options.folder), .sidecars = {}};
  std::vector<std::string> skipped;
  const auto onSkip = [&](const fs::path& url, const std::string& message) {
    skipped.push_back(clips.shownPath(url) + ": " + message);
  };
  try {
    clips.sidecars =
        LibraryModel::loadSidecars(clips.folder, options.recursive, onSkip, environment.processorCount, stop);
  } catch (const Cancelled&) {
    throw;
  } catch (const std::exception& error) {
    throw std::runtime_error(LibraryTexts::loadFailed(userFacingDescription(error)));
  }
  if (!skipped.empty()) complain(environment, LibraryTexts::skipped(skipped.size()) + ":");
  for (const std::string& line : skipped)
    complain(environment, line);
  return clips;
}

std::vector<LoadedSidecar> Selection::sidecars() const {
  std::vector<LoadedSidecar> sidecars;
  for (const Found& one : found)
    sidecars.push_back(one.sidecar);
  return sidecars;
}

Selection selectClips(const Clips& clips, const Options& options, const Environment& environment,
                      const std::stop_token& stop) {
  Selection selection;
  selection.isSearch = !trimmed(options.query).empty() || !options.facets.empty();
  if (!selection.isSearch) {
    const std::size_t count =
        std::min(clips.sidecars.size(),
                 static_cast<std::size_t>(options.limit.value_or(static_cast<std::int64_t>(clips.sidecars.size()))));
    for (std::size_t index = 0; index < count; ++index)
      selection.found.push_back({clips.sidecars[index], std::nullopt});
    return selection;
  }
  const auto limit = options.limit ? static_cast<std::size_t>(*options.limit) : standardLimit;
  if (options.semantic && !trimmed(options.query).empty()) {
    SemanticMatches semantic = searchByMeaning(clips, options, limit, environment, stop);
    selection.isWhole = semantic.isWhole;
    selection.found = ranked(std::move(semantic.matches));
  } else {
    selection.found = ranked(LibraryModel::filter(clips.sidecars, options.query, options.facets, limit));
  }
  if (!options.limit && selection.found.size() == standardLimit)
    note(environment,
         "A search takes " + std::to_string(standardLimit) + " clips at most; --limit sets another number.");
  return selection;
}

void complain(const Environment& environment, const std::string& text) {
  environment.errors << "tarquel-library: " << tools::printable(text) << "\n" << std::flush;
}

void note(const Environment& environment, const std::string& text) {
  environment.errors << tools::printable(text) << "\n" << std::flush;
}

}  // namespace tq::library

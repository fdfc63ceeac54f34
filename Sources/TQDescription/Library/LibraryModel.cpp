#include "TQDescription/Library/LibraryModel.hpp"

#include <algorithm>
#include <system_error>
#include <variant>

#include "TQCore/SafeFile.hpp"
#include "TQCore/TQError.hpp"
#include "TQDescription/SidecarNames.hpp"
#include "TQPlatform/Concurrency/Cancelled.hpp"
#include "TQPlatform/Concurrency/Tasks.hpp"
#include "TQPlatform/FileSystem/SystemError.hpp"
#include "TQPlatform/JSON/JSONDocument.hpp"

namespace tq {
namespace {

namespace fs = std::filesystem;

// What one thread reads in a row: enough to make its buffers worth their while, few enough to share the work evenly.
constexpr std::size_t sidecarsInARow = 32;

/// What became of a file: its description, or why it is left out.
using Outcome = std::variant<std::monostate, Shared<DescriptionResult>, std::string>;

std::string reasonOf(const std::exception& error) {
  const auto* system = dynamic_cast<const SystemError*>(&error);
  return system ? system->reason() : userFacingDescription(error);
}

std::size_t objectsIn(JSONView json) {
  std::size_t count = json.isObject() ? 1 : 0;
  json.forEachElement([&](JSONView element) { count += objectsIn(element); });
  json.forEachMember([&](std::string_view, JSONView member) { count += objectsIn(member); });
  return count;
}

/// A record takes hundreds of bytes for an object of two, so a hostile sidecar could take gigabytes. Braces are quickly
/// counted, and only where there are too many it matters which of them belong to texts.
void refuseTooManyObjects(std::string_view text, JSONView json) {
  constexpr std::size_t most = LibraryModel::mostObjectsOfASidecar;
  if (static_cast<std::size_t>(std::count(text.begin(), text.end(), '{')) > most && objectsIn(json) > most)
    throw DecodingError("the JSON has more than " + std::to_string(most) + " objects");
}

/// Reads sidecars one after the other, in the same memory.
class SidecarReader {
 public:
  Outcome read(const fs::path& url) {
    try {
      const std::string_view text = textOf(SafeFile::readBounded(url, SafeFile::maxMetadataBytes, buffer_));
      const JSONView json = document_.read(text);
      refuseTooManyObjects(text, json);
      return Shared(decode<DescriptionResult>(json));
    } catch (const std::exception& error) {
      return reasonOf(error);
    }
  }

 private:
  Bytes buffer_;
  JSONDocument document_;
};

std::vector<Outcome> outcomesOf(const std::vector<fs::path>& urls, std::size_t processorCount, std::stop_token stop) {
  std::vector<Outcome> outcomes(urls.size());
  const std::size_t rows = (urls.size() + sidecarsInARow - 1) / sidecarsInARow;
  forEachWindowed(rows, processorCount, stop, [&](std::size_t row, std::stop_token rowStop) {
    SidecarReader reader;
    const std::size_t end = std::min((row + 1) * sidecarsInARow, urls.size());
    for (std::size_t index = row * sidecarsInARow; index < end; ++index) {
      throwIfStopped(rowStop);
      outcomes[index] = reader.read(urls[index]);
    }
  });
  return outcomes;
}

/// Adds what a folder holds: the sidecars to one list, the folders to the other.
void list(const fs::path& folder, std::vector<fs::path>& sidecars, std::vector<fs::path>& folders,
          std::error_code& error) {
  fs::directory_iterator entry(folder, error);
  for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
    if (isJSONSidecar(entry->path())) sidecars.push_back(entry->path());
    std::error_code unknown;
    if (!entry->is_symlink(unknown) && entry->is_directory(unknown)) folders.push_back(entry->path());
  }
}

void sortByPath(std::vector<fs::path>& paths) {
  std::sort(paths.begin(), paths.end(),
            [](const fs::path& left, const fs::path& right) { return left.native() < right.native(); });
}

}  // namespace

std::vector<fs::path> LibraryModel::collectSidecarURLs(const fs::path& under, bool recursive, std::stop_token stop) {
  std::vector<fs::path> sidecars, folders;
  std::error_code error;
  list(under, sidecars, folders, error);
  if (error && !recursive) throw SystemError(error.value(), under);
  // One folder after the other, so that no depth of folders takes more than one of them open at a time.
  while (recursive && !folders.empty()) {
    throwIfStopped(stop);
    const fs::path folder = std::move(folders.back());
    folders.pop_back();
    list(folder, sidecars, folders, error);
  }
  sortByPath(sidecars);
  return sidecars;
}

std::vector<LoadedSidecar> LibraryModel::loadSidecars(const fs::path& from, bool recursive, const SkipCallback& onSkip,
                                                      std::size_t processorCount, std::stop_token stop) {
  std::vector<fs::path> urls = collectSidecarURLs(from, recursive, stop);
  std::vector<Outcome> outcomes = outcomesOf(urls, processorCount, stop);
  std::vector<LoadedSidecar> sidecars;
  sidecars.reserve(urls.size());
  for (std::size_t index = 0; index < urls.size(); ++index) {
    if (auto* result = std::get_if<Shared<DescriptionResult>>(&outcomes[index]))
      sidecars.push_back({.sidecarURL = std::move(urls[index]), .result = std::move(*result)});
    else if (onSkip)
      onSkip(urls[index], std::get<std::string>(outcomes[index]));
  }
  return sidecars;
}

std::vector<LibraryMatch> LibraryModel::filter(const std::vector<LoadedSidecar>& sidecars, std::string_view query,
                                               const FacetSelection& facets, std::size_t limit) {
  return PreparedLibrary(sidecars, 1, {}).filter(query, facets, limit);
}

std::vector<LibraryMatch> LibraryModel::filter(const std::vector<LoadedSidecar>& sidecars, std::string_view query,
                                               const FacetSelection& facets, std::size_t limit,
                                               SemanticIndex* semanticIndex, const TextEmbedder* embedder,
                                               double semanticWeight, std::stop_token stop) {
  const PreparedLibrary prepared(sidecars, 1, stop);
  return prepared.filter(query, facets, limit, semanticIndex, embedder, semanticWeight, stop);
}

FacetOptions LibraryModel::facetOptions(const std::vector<LoadedSidecar>& sidecars, std::size_t processorCount) {
  return FacetIndex::build(sidecars.size(), recordsOf(sidecars), processorCount);
}

std::vector<RerateCandidate> LibraryModel::rerateCandidates(const std::vector<LoadedSidecar>& in,
                                                            bool includeRefusals) {
  std::vector<RerateCandidate> candidates;
  for (const LoadedSidecar& sidecar : in) {
    const bool refused = sidecar.result->flagged == true;
    const bool review = sidecar.result->reviewFlag == true;
    if (!review && !(includeRefusals && refused)) continue;
    std::optional<fs::path> source = sidecar.sourceVideoURL();
    if (!source) continue;
    std::optional<std::string> reason = sidecar.result->reviewReason;
    if (!reason && !review) reason = "model refused";
    candidates.push_back(
        {.sidecarURL = sidecar.sidecarURL, .sourceURL = std::move(*source), .reason = std::move(reason)});
  }
  std::stable_sort(candidates.begin(), candidates.end(), [](const RerateCandidate& left, const RerateCandidate& right) {
    return left.sourceURL.native() < right.sourceURL.native();
  });
  return candidates;
}

}  // namespace tq

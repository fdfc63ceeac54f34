#pragma once

#include <cstddef>
#include <filesystem>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/RerateCandidate.hpp"
#include "TQDescription/Library/LoadedSidecar.hpp"
#include "TQDescription/Library/PreparedLibrary.hpp"

namespace tq {

/// The library is whatever JSON sidecars lie in a folder: they are read fresh each time, and nothing else is kept.
struct LibraryModel {
  /// Told of a sidecar that was left out, and why, in words for a user that do not name the file again.
  using SkipCallback = std::function<void(const std::filesystem::path& url, const std::string& message)>;

  /// A sidecar with more JSON objects is refused: 64 for each of the 4096 frames that are sampled at most. So whatever
  /// 16 MiB of text say, a record takes a few hundred MB at most.
  static constexpr std::size_t mostObjectsOfASidecar = std::size_t{1} << 18;

  /// Every `.description.json` of the folder, sorted by path; with `recursive` also those of the folders below it, the
  /// hidden ones included. Numbered siblings (`clip.description (2).json`), which an earlier run left, end in another
  /// way and so never show up as a second clip.
  ///
  /// A sidecar of more than `SafeFile::maxMetadataBytes` or `mostObjectsOfASidecar`, one that cannot be read and one
  /// that is no description is left out and reported to `onSkip`, which may be empty, on the calling thread and in the
  /// order of the paths. Throws what `collectSidecarURLs` throws. Works with `processorCount` threads, the caller's
  /// among them.
  static std::vector<LoadedSidecar> loadSidecars(const std::filesystem::path& from, bool recursive,
                                                 const SkipCallback& onSkip, std::size_t processorCount,
                                                 std::stop_token stop);

  /// The paths alone, sorted; whatever bears such a name, be it a folder. Links are not followed into folders, only
  /// `under` itself may be one. Throws `SystemError` when the folder cannot be listed; with `recursive` such a folder
  /// is taken for an empty one instead, and so is every folder below it. Throws `Cancelled` once a stop was requested.
  static std::vector<std::filesystem::path> collectSidecarURLs(const std::filesystem::path& under, bool recursive,
                                                               std::stop_token stop);

  /// What a search box finds: the first `limit` sidecars that match words, typed conditions and facets, best first (see
  /// `SearchEngine`). A search for nothing finds nothing; the caller shows everything then. A hit is known by its
  /// filename, so of clips with the same name in several folders all hits show the first. Who searches again and again
  /// makes a `PreparedLibrary`, which this does for one search.
  static std::vector<LibraryMatch> filter(const std::vector<LoadedSidecar>& sidecars, std::string_view query,
                                          const FacetSelection& facets, std::size_t limit);

  /// The same with the nearness in meaning blended in, `semanticWeight` (0 to 1) of it; what is near enough is found
  /// without any of the words. `semanticIndex` and `embedder` may be null. Where there is no index, embedder, query or
  /// entry, and where the query cannot be embedded, this is the search by words: no failure of the service is shown.
  /// Blocks for as long as the embedder does. Throws `Cancelled` once a stop was requested.
  static std::vector<LibraryMatch> filter(const std::vector<LoadedSidecar>& sidecars, std::string_view query,
                                          const FacetSelection& facets, std::size_t limit, SemanticIndex* semanticIndex,
                                          const TextEmbedder* embedder, double semanticWeight, std::stop_token stop);

  /// What the sidecars can be narrowed by, counted with `processorCount` threads.
  static FacetOptions facetOptions(const std::vector<LoadedSidecar>& sidecars, std::size_t processorCount);

  /// The clips that deserve another description, sorted by the clip's path: those marked for review, and with
  /// `includeRefusals` those that a model refused. A clip may be missing on the disk; one whose name leads out of its
  /// folder is left out.
  static std::vector<RerateCandidate> rerateCandidates(const std::vector<LoadedSidecar>& in, bool includeRefusals);
};

}  // namespace tq

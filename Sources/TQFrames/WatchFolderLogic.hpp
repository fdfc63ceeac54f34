#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// The rules by which files in watched folders are reported and taken up. Keeps nothing and reads no clock.
struct WatchFolderLogic {
  /// The bytes of a file's path: parsed it would take ten times the memory, and folders may hold very many files.
  using URL = std::string;

  /// The state of one file as a folder's listing shows it.
  struct FileEvent {
    URL url;
    Date modified;
    std::int64_t size = 0;  ///< bytes

    bool operator==(const FileEvent&) const = default;
  };

  /// Tells events apart by the URL alone.
  struct ByURL {
    std::size_t operator()(const FileEvent& event) const { return std::hash<URL>()(event.url); }
    bool operator()(const FileEvent& left, const FileEvent& right) const { return left.url == right.url; }
  };

  /// The state in which each file was last reported, one entry for a URL. A file that is gone keeps its entry.
  using Snapshot = std::unordered_set<FileEvent, ByURL, ByURL>;

  struct Reduction {
    std::vector<URL> emit;  ///< what to report, in the order of the listing
    Snapshot next;

    bool operator==(const Reduction&) const = default;
  };

  /// Finds the clips of a listing that are to be reported: candidates that were not modified within the last `debounce`
  /// seconds (0 to a billion) and not reported before with the same date and size. A clip that is still too new is left
  /// for a later call.
  static Reduction reduce(Snapshot previous, const std::vector<FileEvent>& current, Date now, double debounce,
                          const std::vector<std::string>& exclusionGlobs);

  /// What the name of a file in a folder tells already: true for a clip that is not excluded.
  static bool isCandidate(std::string_view name, const std::vector<std::string>& exclusionGlobs);

  /// True for a reported clip that needs a description: it has no "<stem>.description.json" in `sidecarDirectory`, or
  /// beside it without one, or is newer than that file. False when one of the two dates is unknown.
  static bool shouldEnqueue(const std::filesystem::path& sourceURL,
                            const std::optional<std::filesystem::path>& sidecarDirectory);

  /// True when one of the globs, without spaces and tabs at its ends, matches the whole name. Empty ones match nothing.
  static bool isExcluded(std::string_view name, const std::vector<std::string>& globs);

  /// Matches without regard to case: "?" stands for one character (as a reader counts them), "*" for any run of them,
  /// also an empty one, and everything else for itself.
  static bool matchesGlob(std::string_view name, std::string_view pattern);

  /// When the file's content last changed; a link counts as what it points to. Absent when the file system does not
  /// tell.
  static std::optional<Date> modificationDate(const std::filesystem::path& url);
};

}  // namespace tq

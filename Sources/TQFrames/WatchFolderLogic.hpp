#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TQPlatform/Clock.hpp"

namespace tq {

/// The rules by which files in watched folders are reported and taken up. Keeps nothing and reads no clock.
struct WatchFolderLogic {
  /// The state of one file as a folder's listing shows it.
  struct FileEvent {
    std::filesystem::path url;
    Date modified;
    std::int64_t size = 0;  ///< bytes

    bool operator==(const FileEvent&) const = default;
  };

  /// The state in which each file was last reported. A file that is gone keeps its entry.
  using Snapshot = std::map<std::filesystem::path, FileEvent>;

  struct Reduction {
    std::vector<std::filesystem::path> emit;  ///< what to report, in the order of the listing
    Snapshot next;

    bool operator==(const Reduction&) const = default;
  };

  /// Finds the clips of a listing that are to be reported: those not excluded, not modified within the last `debounce`
  /// seconds (0 to a billion) and not reported before with the same date and size. A clip that is still too new is left
  /// for a later call.
  static Reduction reduce(const Snapshot& previous, const std::vector<FileEvent>& current, Date now, double debounce,
                          const std::vector<std::string>& exclusionGlobs);

  /// True for a reported clip that needs a description: it has no "<stem>.description.json" in `sidecarDirectory`, or
  /// beside it without one, or is newer than that file. False when one of the two dates is unknown.
  static bool shouldEnqueue(const std::filesystem::path& sourceURL,
                            const std::optional<std::filesystem::path>& sidecarDirectory);

  /// True when one of the globs, without spaces and tabs at its ends, matches the whole name. Empty ones match nothing.
  static bool isExcluded(std::string_view name, const std::vector<std::string>& globs);

  /// Matches without regard to case: "?" stands for one character (as a reader counts them), "*" for any run of them,
  /// also an empty one, and everything else for itself.
  static bool matchesGlob(std::string_view name, std::string_view pattern);

  /// When the file's content last changed; a link counts as what it points to. Dates past the range of `Date` become
  /// the last one. Absent when the file system does not tell.
  static std::optional<Date> modificationDate(const std::filesystem::path& url);
};

}  // namespace tq

#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "TQCore/Shared.hpp"
#include "TQDescription/FolderIndex/FolderIndex.hpp"

namespace tq {

/// Sums a folder of descriptions up, for programs and for people.
struct IndexBuilder {
  /// The clips sorted by filename, equal names in the order given. Themes are counted as they are spelled, as often as
  /// they are listed; the 10 most frequent are kept, of equal counts those first by name. Every element of
  /// `descriptions` has a value. Bytes of the folder's name that are no UTF-8 become U+FFFD.
  static FolderIndex build(const std::filesystem::path& folder,
                           const std::vector<Shared<DescriptionResult>>& descriptions, Date generatedAt);

  /// The content of `_INDEX.json`, laid out like a sidecar. Throws `JSONError` for a number that is not finite, such as
  /// the sum of durations that no clip has.
  static std::string renderJSON(const FolderIndex& index);

  /// The content of `_INDEX.md`.
  static std::string renderMarkdown(const FolderIndex& index);

  /// "59:59", and from one hour on "1:00:00"; rounded to whole seconds. What no count of seconds can be (infinite, or
  /// beyond 64 bits) is shown as the nearest that can, and not-a-number as none.
  static std::string formatDuration(double seconds);
};

}  // namespace tq

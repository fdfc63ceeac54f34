#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "TQCore/Models/DescriptionResult.hpp"
#include "TQPlatform/Concurrency/Clock.hpp"

namespace tq {

/// One clip of a folder index: what a reader needs to choose among clips. Lists that the description lacks are empty.
struct IndexedClip {
  std::string filename;
  double durationSeconds = 0;
  std::string summary;
  std::optional<std::string> oneLine;
  std::vector<std::string> primarySubjects;
  std::vector<std::string> themes;
  std::vector<std::string> searchKeywords;
  std::vector<std::string> suggestedUseCases;
  std::vector<std::string> dominantPalette;  ///< colours as #RRGGBB
  std::optional<GPS> gps;
  bool flagged = false;
  bool reviewFlag = false;
  std::optional<std::string> reviewReason;
  bool hasTranscript = false;  ///< one with words in it

  bool operator==(const IndexedClip&) const = default;
};
TQ_RECORD(IndexedClip);

/// The summary of a folder of described clips: the content of `_INDEX.json`.
struct FolderIndex {
  struct TopCount {
    std::string name;
    std::int64_t count = 0;

    bool operator==(const TopCount&) const = default;
  };

  std::string schemaVersion = SchemaVersion::current;
  std::string folder;  ///< its path, without a slash at the end
  Date generatedAt;
  std::int64_t totalClips = 0;
  double totalDurationSeconds = 0;
  std::int64_t flaggedCount = 0;
  std::int64_t reviewCount = 0;
  std::vector<TopCount> themesTop;  ///< the most frequent first, up to 10
  std::vector<IndexedClip> clips;   ///< by filename

  bool operator==(const FolderIndex&) const = default;
};
TQ_RECORD(FolderIndex::TopCount);
TQ_RECORD(FolderIndex);

}  // namespace tq

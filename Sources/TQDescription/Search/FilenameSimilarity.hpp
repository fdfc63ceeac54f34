#pragma once

#include <string>

namespace tq {

/// How close a clip's description comes to what was asked for.
struct FilenameSimilarity {
  std::string filename;   ///< `source.filename`
  double similarity = 0;  ///< a cosine, -1 to 1

  bool operator==(const FilenameSimilarity&) const = default;
};

}  // namespace tq

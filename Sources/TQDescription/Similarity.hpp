#pragma once

#include <string>

namespace tq {

/// How near a clip's description is to a query in meaning.
struct Similarity {
  std::string filename;   ///< `source.filename` of the clip
  double similarity = 0;  ///< cosine, -1 to 1; always finite

  bool operator==(const Similarity&) const = default;
};

}  // namespace tq

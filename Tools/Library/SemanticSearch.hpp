#pragma once

#include <cstddef>
#include <stop_token>
#include <vector>

#include "TQDescription/Library/PreparedLibrary.hpp"
#include "Tools/Library/Clips.hpp"

namespace tq::library {

struct SemanticMatches {
  std::vector<LibraryMatch> matches;
  bool isWhole = true;  ///< false when the embedding service failed, so that words alone decided; the user was told
};

/// Embeds the descriptions that have changed since the last time, keeps their vectors for the next, and blends what
/// they mean with what the words find.
SemanticMatches searchByMeaning(const Clips& clips, const Options& options, std::size_t limit,
                                const Environment& environment, const std::stop_token& stop);

}  // namespace tq::library

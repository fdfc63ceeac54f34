#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "TQDescription/Library/LoadedSidecar.hpp"
#include "Tools/Library/Runner.hpp"

namespace tq::library {

/// The descriptions of the folder, and where it is.
struct Clips {
  std::filesystem::path folder;  ///< absolute
  std::vector<LoadedSidecar> sidecars;

  /// A file as the user finds it from the folder.
  std::string shownPath(const std::filesystem::path& file) const;

  /// The clip of a description, or the description itself where it names none beside it.
  std::string shownPath(const LoadedSidecar& sidecar) const;
};

/// Loads what the command is about, and tells of what was left out. Throws the text of a failure.
Clips loadClips(const Options& options, const Environment& environment, const std::stop_token& stop);

/// One clip of a search.
struct Found {
  LoadedSidecar sidecar;
  std::optional<int> percent;  ///< of the best hit; absent where nothing is ranked
};

struct Selection {
  std::vector<Found> found;
  bool isSearch = false;  ///< false when neither query nor facet narrows anything
  bool isWhole = true;    ///< false when the meaning could not be looked at, as it was asked for; the user was told

  std::vector<LoadedSidecar> sidecars() const;
};

/// The clips that the query, its conditions and the facets are about, the best first.
Selection selectClips(const Clips& clips, const Options& options, const Environment& environment,
                      const std::stop_token& stop);

/// A line about something that went wrong.
void complain(const Environment& environment, const std::string& text);

/// A line about how things are.
void note(const Environment& environment, const std::string& text);

}  // namespace tq::library

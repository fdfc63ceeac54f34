#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TQDescription/Export/LibraryExport.hpp"
#include "TQDescription/Search/Facets.hpp"
#include "TQPersistence/Settings.hpp"

namespace tq::library {

enum class Command { search, facets, index, exportTimelines, trim, rerate };

enum class EmbedderKind { ollama, openai };

/// What the command line asks for. What is absent stays as the settings or the window's defaults have it.
struct Options {
  bool help = false;
  bool version = false;
  Command command = Command::search;
  std::filesystem::path folder;
  bool recursive = false;
  std::string query;  ///< empty: all clips
  FacetSelection facets;
  std::optional<std::int64_t> limit;  ///< at least 1; absent: 500 of a search, else none
  bool semantic = false;
  std::optional<EmbedderKind> embedder;
  std::optional<std::string> baseURL;
  std::optional<std::string> model;
  std::map<TextExportFormat, std::filesystem::path> exports;
  std::optional<std::filesystem::path> into;
  bool reencode = false;
  bool includeRefusals = false;

  bool operator==(const Options&) const = default;
};

/// Reads the arguments behind the program's name. Throws `UsageError`, also for an option that the command has no use
/// for.
Options parseOptions(const std::vector<std::string>& arguments);

/// The settings with the command line's wishes about the embedder on top. Another kind of embedder comes with its own
/// standard server, unless the settings name one of the user's own.
AppSettings applyOptions(AppSettings settings, const Options& options);

/// The text of --help.
std::string_view usageText();

}  // namespace tq::library

namespace tq {

template <>
inline constexpr auto rawValues<library::Command> = std::to_array<std::string_view>({"search", "facets", "index",
                                                                                     "export", "trim", "rerate"});

template <>
inline constexpr auto rawValues<library::EmbedderKind> = std::to_array<std::string_view>({"ollama", "openai"});

}  // namespace tq

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "TQCore/Models/OutputConfig.hpp"
#include "TQPersistence/Settings.hpp"

namespace tq::describe {

/// What the command line asks for. Whatever is absent stays as the settings have it.
struct Options {
  bool help = false;
  bool version = false;
  bool again = false;  ///< also what has an up-to-date description
  bool watch = false;  ///< go on with what comes into the folders
  std::optional<std::string> provider;
  std::optional<std::string> model;
  std::optional<std::string> baseURL;
  std::optional<std::filesystem::path> settingsFile;
  std::optional<std::filesystem::path> outputDirectory;
  std::optional<OutputFormat> format;
  std::optional<ConflictPolicy> onConflict;
  std::optional<std::int64_t> jobs;  ///< at least 1
  std::vector<std::filesystem::path> inputs;

  bool operator==(const Options&) const = default;
};

/// Reads the arguments behind the program's name: "--name VALUE" or "--name=VALUE" in any order; after "--" everything
/// is an input. Throws `tools::UsageError`.
Options parseOptions(const std::vector<std::string>& arguments);

/// The settings with the command line's wishes on top. A provider without a model gets that provider's default model,
/// unless the settings already use the provider.
AppSettings applyOptions(AppSettings settings, const Options& options);

/// The text of --help.
std::string_view usageText();

}  // namespace tq::describe

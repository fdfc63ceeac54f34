#include "Tools/Describe/Options.hpp"

#include <array>
#include <string>

#include "TQPlatform/NumberText.hpp"
#include "TQVision/ProviderProfile.hpp"

namespace tq::describe {

namespace {

/// The words that an option accepts, as "a, b or c".
template <class Enum>
std::string choices() {
  std::string text;
  const auto& words = rawValues<Enum>;
  for (std::size_t index = 0; index < words.size(); ++index) {
    if (index > 0) text += index + 1 == words.size() ? " or " : ", ";
    text += words[index];
  }
  return text;
}

template <class Enum>
Enum readChoice(std::string_view option, const std::string& value) {
  if (const auto choice = fromRawValue<Enum>(value)) return *choice;
  throw UsageError(std::string(option) + " takes " + choices<Enum>() + ", not \"" + value + "\".");
}

std::int64_t readJobs(const std::string& value) {
  const auto jobs = parseInteger(value);
  if (!jobs || *jobs < 1) throw UsageError("--jobs takes a number from 1 up, not \"" + value + "\".");
  return *jobs;
}

struct ValueOption {
  std::string_view name;
  void (*apply)(Options& options, const std::string& value);
};

constexpr std::array valueOptions{
    ValueOption{"--provider",
                [](Options& options, const std::string& value) {
                  options.provider = rawValue(readChoice<ProviderProfile>("--provider", value));
                }},
    ValueOption{"--model", [](Options& options, const std::string& value) { options.model = value; }},
    ValueOption{"--base-url", [](Options& options, const std::string& value) { options.baseURL = value; }},
    ValueOption{"--settings", [](Options& options, const std::string& value) { options.settingsFile = value; }},
    ValueOption{"--output-dir", [](Options& options, const std::string& value) { options.outputDirectory = value; }},
    ValueOption{"--format",
                [](Options& options, const std::string& value) {
                  options.format = readChoice<OutputFormat>("--format", value);
                }},
    ValueOption{"--on-conflict",
                [](Options& options, const std::string& value) {
                  options.onConflict = readChoice<ConflictPolicy>("--on-conflict", value);
                }},
    ValueOption{"--jobs", [](Options& options, const std::string& value) { options.jobs = readJobs(value); }},
};

const ValueOption& findOption(std::string_view name) {
  for (const ValueOption& option : valueOptions)
    if (option.name == name) return option;
  throw UsageError("There is no option " + std::string(name) + "; --help lists them.");
}

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  bool onlyInputs = false;
  for (std::size_t index = 0; index < arguments.size(); ++index) {
    const std::string& argument = arguments[index];
    if (onlyInputs || !argument.starts_with('-') || argument == "-") {
      options.inputs.emplace_back(argument);
    } else if (argument == "--") {
      onlyInputs = true;
    } else if (argument == "--help" || argument == "-h") {
      options.help = true;
    } else if (argument == "--version") {
      options.version = true;
    } else {
      const std::size_t equals = argument.find('=');
      const ValueOption& option = findOption(std::string_view(argument).substr(0, equals));
      if (equals == std::string::npos && index + 1 == arguments.size())
        throw UsageError(std::string(option.name) + " needs a value.");
      const std::string value = equals == std::string::npos ? arguments[++index] : argument.substr(equals + 1);
      if (value.empty()) throw UsageError(std::string(option.name) + " needs a value.");
      option.apply(options, value);
    }
  }
  return options;
}

AppSettings applyOptions(AppSettings settings, const Options& options) {
  if (options.provider && *options.provider != settings.providerId) {
    settings.providerId = *options.provider;
    settings.modelId = defaultModelId(providerProfile(settings.providerId));
  }
  if (options.model) settings.modelId = *options.model;
  if (options.baseURL)
    (providerProfile(settings.providerId) == ProviderProfile::openai ? settings.openaiBaseURL
                                                                     : settings.anthropicBaseURL) = *options.baseURL;
  if (options.outputDirectory) settings.output.sidecarDirectory = std::filesystem::absolute(*options.outputDirectory);
  if (options.format) settings.output.format = *options.format;
  if (options.onConflict) settings.output.conflictPolicy = *options.onConflict;
  if (options.jobs) settings.maxConcurrentJobs = *options.jobs;
  return settings;
}

std::string_view usageText() {
  return R"(Usage: tarquel-describe [OPTION...] CLIP|FOLDER...

Describes video files with a vision model and writes <stem>.description.md, .json and .jpg beside each clip.
Folders are searched for mov, mp4, m4v, mkv, webm, avi and mxf files. Options win over the settings.

  --provider NAME        anthropic, openai (any server of that shape) or mock (no network, for trying things out)
  --model NAME           the model to ask
  --base-url URL         the server of the provider
  --output-dir FOLDER    one folder for all outputs instead of beside each clip
  --format FORMAT        markdown, json or both
  --on-conflict POLICY   what to do where an output exists: skip-existing, overwrite or suffix
  --jobs N               how many clips are worked on at once
  --settings FILE        settings.json to start from, instead of the one of the desktop application
  --help, --version

API keys are read from secrets.json in the application's private folder. Ctrl-C cancels; a second one leaves at once.
The exit status is 0 only if every clip was described, 1 if one was not, 2 if the command line is wrong, 130 if cancelled.
)";
}

}  // namespace tq::describe

#include "Tools/Describe/Options.hpp"

#include <algorithm>
#include <array>
#include <string>

#include "TQPlatform/NumberText.hpp"
#include "TQPlatform/WebURL.hpp"
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

/// The engine would take the provider's standard server instead, and that is not what was asked for.
std::string readURL(const std::string& value) {
  const auto url = WebURL::parse(value);
  if (!url || url->host().empty()) throw UsageError("--base-url takes an address such as http://localhost:8000/v1.");
  return value;
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
    ValueOption{"--base-url", [](Options& options, const std::string& value) { options.baseURL = readURL(value); }},
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

struct Switch {
  std::string_view name;
  bool Options::*flag;
};

constexpr std::array switches{
    Switch{"--help", &Options::help},   Switch{"-h", &Options::help},       Switch{"--version", &Options::version},
    Switch{"--again", &Options::again}, Switch{"--watch", &Options::watch},
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
    } else if (const auto known = std::ranges::find(switches, argument, &Switch::name); known != switches.end()) {
      options.*known->flag = true;
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

Describes video files with a vision model and writes <name>.description.md,
.json and .jpg beside each clip. Folders are searched for mov, mp4, m4v, mkv,
webm, avi and mxf files; those with an up-to-date description are left alone,
so a run that was stopped goes on where it was. Options win over the settings
of the application.

  --provider NAME        anthropic, openai (any server of that kind) or mock
                         (no model and no network, for trying things out)
  --model NAME           the model to ask
  --base-url URL         the server of the provider
  --output-dir FOLDER    one folder for all outputs
  --format FORMAT        markdown, json or both
  --on-conflict POLICY   what to do where an output exists: skip-existing,
                         overwrite or suffix (writes a numbered one beside it)
  --jobs N               how many clips are worked on at once
  --again                describe clips in folders whatever they have already
  --watch                go on with clips that come into the folders named (not
                         into folders inside them), until Ctrl-C
  --settings FILE        a settings.json to use instead of the application's
  --help, --version
  --                     everything after it is a clip or a folder

API keys are read from secrets.json in the application's private folder,
$XDG_DATA_HOME/tarquel (usually ~/.local/share/tarquel):
  {"anthropic.api_key": "...", "openai.api_key": "..."}

Ctrl-C cancels; a second one leaves at once.

Exit status: 0 every clip was described, 1 at least one was not, 2 the command
line is wrong, 130 cancelled.
)";
}

}  // namespace tq::describe

#include "Tools/Describe/Options.hpp"

#include <array>
#include <string>

#include "TQVision/ProviderProfile.hpp"
#include "Tools/Shared/CommandLine.hpp"

namespace tq::describe {

namespace {

using Value = tools::ValueOption<Options>;
using Flag = tools::Switch<Options>;

constexpr std::array valueOptions{
    Value{"--provider",
          [](Options& options, const std::string& value) {
            options.provider = rawValue(tools::readChoice<ProviderProfile>("--provider", value));
          }},
    Value{"--model", [](Options& options, const std::string& value) { options.model = value; }},
    Value{"--base-url", [](Options& options,
                           const std::string& value) { options.baseURL = tools::readAddress("--base-url", value); }},
    Value{"--settings", [](Options& options, const std::string& value) { options.settingsFile = value; }},
    Value{"--output-dir", [](Options& options, const std::string& value) { options.outputDirectory = value; }},
    Value{"--format",
          [](Options& options, const std::string& value) {
            options.format = tools::readChoice<OutputFormat>("--format", value);
          }},
    Value{"--on-conflict",
          [](Options& options, const std::string& value) {
            options.onConflict = tools::readChoice<ConflictPolicy>("--on-conflict", value);
          }},
    Value{"--jobs",
          [](Options& options, const std::string& value) { options.jobs = tools::readCount("--jobs", value); }},
};

constexpr std::array switches{
    Flag{"--help", &Options::help},   Flag{"-h", &Options::help},       Flag{"--version", &Options::version},
    Flag{"--again", &Options::again}, Flag{"--watch", &Options::watch},
};

}  // namespace

Options parseOptions(const std::vector<std::string>& arguments) {
  Options options;
  const auto read = tools::readArguments<Options>(arguments, {switches, valueOptions}, options);
  options.inputs.assign(read.operands.begin(), read.operands.end());
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
  {"version": 1,
   "secrets": {"anthropic.api_key": "...", "openai.api_key": "..."}}

Ctrl-C cancels; a second one leaves at once.

Exit status: 0 every clip was described, 1 at least one was not, 2 the command
line is wrong, 130 cancelled.
)";
}

}  // namespace tq::describe
